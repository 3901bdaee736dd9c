#!/usr/bin/env bash
# Runs the real executable on random argument lists and fails when a run dies by a signal, hangs,
# or (in a sanitizer build, GENETRAIN_SANITIZED set) prints a sanitizer report.
#   random_cli.sh BINARY [SEED [RUNS]]
# The arguments are drawn from the command keys and their options with odd values and with the
# names of small input files (the golden cases' inputs, random and mutated files). The same seed
# gives the same runs; every failing run is printed with its arguments so it can be replayed.
set -u
if [ $# -lt 1 ]; then
  echo "usage: $0 BINARY [SEED [RUNS]]" >&2
  exit 2
fi
bin=$(realpath "$1")
seed=${2:-1}
runs=${3:-300}
here=$(cd "$(dirname "$0")" && pwd)
RANDOM=$seed

scratch=$(mktemp -d "${TMPDIR:-/tmp}/genetrain-random.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
pool=$scratch/pool
mkdir -p "$pool"

commands=(--par --clean_join --gc --stat --clean --split --mkmod --parse --intergenic --mkchain
  --compare --pre_start --gibbs --mask --combine --STAT_NON_VS_ALL --ORF_PER_SEQ --orf
  --count_substring_n --count_substring_atcg --clean_fasta --stat_fasta --CLEAN_CODING
  --GENE_SET_STAT)
options=(--seq --log --MIN_CONTIG_SIZE --MAX_N_SUBSTRING --MIN_SEQ_SIZE --GAP_FILLER
  --GC_PRECISION --GC_LABEL --out_clean --out_masked --REPLACE_N_STRING --LEFT_GAP_FILLER
  --RIGHT_GAP_FILLER --SPLIT_SIZE --MIN_SPLIT_SIZE --geneset --ORDM --PHMM --NAME --ATG_ --GTG_
  --TTG_ --CTG_ --TAA_ --TGA_ --TAG_ --MINC --MAXC --MAXN --NDEC --CDEC --CDCD --CD1P --CD2P
  --COD1 --COD2 --NONC --MIN_COD --MIN_NON --EXCLUDE_PARTIAL --START_PRECISION
  --START_PSEUDOCOUNTS --SEPARATE_COD --RANDOM_NONCOD --RANDOM_NONCOD_GC --MKCHAIN_L_MARGING
  --MKCHAIN_R_MARGING --MKCHAIN_PSEUDOCOUNTS --MKCHAIN_PRECISION --cod --non --COD_L_MARGIN
  --COD_R_MARGIN --chain_cod --chain_non --source --target --COMPARE_START --COMPARE_END
  --COMPARE_PRECISION --PRE_START_WIDTH --PRE_START_RELATIVE_POS --PRE_START_INTERGENIC
  --PRE_START_LINES --mod --GIBBS_PRECISION_MAT --GIBBS_PRECISION_DUR --GIBBS_PSEUDOCOUNTS_MAT
  --GIBBS_PSEUDOCOUNTS_DUR --out --first --second --first_NON --MIN_ORF_SIZE --ORF_MARGIN_LEFT
  --ORF_MARGIN_RIGHT --ORF_OUT --shift_zero --max_nnn_substring --clean_fasta_index
  --clean_fasta_label --clean_fasta_out --letters_per_line --NO_LABEL --PRINT_LABEL --RBSM
  --fixmotif --nnn_margin --order --order_non --revcomp_non --soft --width)
odd_values=("" abc -1 0 1 2 3 7 100 1e99 4294967296 -4294967297 2147483648 1.5 0.0001 -0.5 nan
  inf 340 1000 " 5" "5 " 0x10 ATG TAA TGA "ATG GTG" 1 0 "a b" -- --seq . / out out.txt o2)

# Per command the options it reads and the kind of value each wants: F FASTA, G gene set,
# M model, B motif finder output, I interval list, P parameter file, O output name, W text,
# N number, K small order, b flag.
declare -A templates=(
  [--stat]="O --seq:F --GC_PRECISION:N"
  [--gc]="O --seq:F --GC_PRECISION:N --GC_LABEL:W"
  [--clean_join]="O --seq:F --MIN_CONTIG_SIZE:N --GAP_FILLER:W --MAX_N_SUBSTRING:N --MIN_SEQ_SIZE:N --log:O"
  [--clean]="- --seq:F --out_clean:O --out_masked:O --MIN_CONTIG_SIZE:N --GAP_FILLER:W --MIN_SEQ_SIZE:N --REPLACE_N_STRING:b --LEFT_GAP_FILLER:W --RIGHT_GAP_FILLER:W"
  [--mask]="I --seq:F --out:O"
  [--split]="O --seq:F --SPLIT_SIZE:N --MIN_SPLIT_SIZE:N --letters_per_line:N --max_nnn_substring:N --nnn_margin:N --NO_LABEL:b --soft:b"
  [--clean_fasta]="F --clean_fasta_index:O --clean_fasta_out:O --clean_fasta_label:W"
  [--stat_fasta]="- --seq:F"
  [--count_substring_n]="- --seq:F"
  [--count_substring_atcg]="- --seq:F --max_nnn_substring:N"
  [--CLEAN_CODING]="O --seq:F --PRINT_LABEL:b --MKCHAIN_L_MARGING:N --MKCHAIN_R_MARGING:N --MIN_COD:N --TAA_:b --TGA_:b --TAG_:b"
  [--GENE_SET_STAT]="- --geneset:G"
  [--parse]="- --cod:O --non:O --COD_L_MARGIN:N --COD_R_MARGIN:N --seq:F --TAA_:b --TGA_:b --TAG_:b --geneset:G --MIN_COD:N --MIN_NON:N --EXCLUDE_PARTIAL:N --SEPARATE_COD:b"
  [--intergenic]="- --non:O --COD_L_MARGIN:N --COD_R_MARGIN:N --seq:F --shift_zero:N --geneset:G"
  [--STAT_NON_VS_ALL]="- --seq:F --geneset:G"
  [--pre_start]="O --seq:F --geneset:G --PRE_START_WIDTH:N --PRE_START_RELATIVE_POS:N --PRE_START_INTERGENIC:b --PRE_START_LINES:N"
  [--orf]="O --TAA_:b --TGA_:b --TAG_:b --ATG_:b --GTG_:b --TTG_:b --CTG_:b --seq:F --MIN_ORF_SIZE:N --ORF_MARGIN_LEFT:N --ORF_MARGIN_RIGHT:N --ORF_OUT:b"
  [--ORF_PER_SEQ]="- --TAA_:b --TGA_:b --TAG_:b --ATG_:b --GTG_:b --TTG_:b --CTG_:b --seq:F --geneset:G --MIN_ORF_SIZE:N --ORF_OUT:b"
  [--mkchain]="- --chain_cod:O --chain_non:O --order:K --seq:F --geneset:G --MIN_COD:N --MIN_NON:N --EXCLUDE_PARTIAL:N --SEPARATE_COD:b --MKCHAIN_L_MARGING:N --MKCHAIN_R_MARGING:N --MKCHAIN_PSEUDOCOUNTS:N --MKCHAIN_PRECISION:N --order_non:K --revcomp_non:b"
  [--mkmod]="O --par:P --ORDM:K --seq:F --geneset:G --cod:F --non:F --MIN_COD:N --MIN_NON:N --START_PRECISION:N --START_PSEUDOCOUNTS:N --RANDOM_NONCOD:b --RANDOM_NONCOD_GC:N --pre_start:O --PRE_START_WIDTH:N --fixmotif:b --width:N --log:O --MKCHAIN_PRECISION:N"
  [--combine]="O --first:M --second:M --first_NON:b"
  [--gibbs]="B --mod:M --log:O --seq:F --GIBBS_PRECISION_MAT:N --GIBBS_PRECISION_DUR:N --GIBBS_PSEUDOCOUNTS_MAT:N --GIBBS_PSEUDOCOUNTS_DUR:N"
  [--compare]="O --source:G --target:G --COMPARE_PRECISION:N --COMPARE_START:b --COMPARE_END:b"
  [--par]="P"
)

# Sorts the pool into kinds by name and content (a file may belong to none).
classify() {
  local f first
  kind_F=() kind_G=() kind_M=() kind_B=() kind_I=() kind_P=()
  for f in "${files[@]}"; do
    [ -f "$pool/$f" ] || continue
    first=$(head -c 200 "$pool/$f" | tr -d '\0' | awk 'NF { print $1; exit }')
    if grep -aq '^NONC' "$pool/$f"; then kind_M+=("$f")
    elif grep -aqE 'Gibbs|MOTIF|Num Motifs' "$pool/$f"; then kind_B+=("$f")
    elif [[ $f == *.par ]] || [[ $first == --* ]]; then kind_P+=("$f")
    elif [[ $first == \>* ]] || [[ $f =~ \.(fa|fasta|fna|seq)$ ]]; then kind_F+=("$f")
    elif grep -aqE '^[^ ]+[ 	]+[-+][ 	]' "$pool/$f"; then kind_G+=("$f")
    elif grep -aqE '^[0-9]+[ 	]+[0-9]+' "$pool/$f"; then kind_I+=("$f")
    fi
  done
}

# Sets value to a value of the given kind, now and then to an odd one instead.
pick_kind() {
  local -n list=kind_$1 2> /dev/null
  if [ $((RANDOM % 8)) = 0 ]; then
    pick_value
    return
  fi
  case $1 in
    O) value=out$((RANDOM % 4)) ;;
    W) value=${odd_values[$((RANDOM % ${#odd_values[@]}))]} ;;
    N) value=$((RANDOM % 40 - 2)) ;;
    K) value=$((RANDOM % 4)) ;;
    b) value=$((RANDOM % 2)) ;;
    *) if [ ${#list[@]} -gt 0 ]; then value=${list[$((RANDOM % ${#list[@]}))]}; else pick_value; fi ;;
  esac
}

# Builds args for one command from its template: most options present, most values well-formed.
structured_args() {
  local key=$1 shape item
  read -r -a shape <<< "${templates[$key]}"
  args=("$key")
  if [ "${shape[0]}" != - ]; then
    pick_kind "${shape[0]}"
    args+=("$value")
  fi
  for item in "${shape[@]:1}"; do
    [ $((RANDOM % 8)) = 0 ] && continue
    args+=("${item%%:*}")
    pick_kind "${item##*:}"
    args+=("$value")
  done
  if [ $((RANDOM % 4)) = 0 ]; then
    args+=("${options[$((RANDOM % ${#options[@]}))]}")
    pick_value
    args+=("$value")
  fi
}

# Inputs: the small input files of the golden cases, under unique names.
n=0
while IFS= read -r file; do
  n=$((n + 1))
  cp "$file" "$pool/c${n}_$(basename "$file")"
done < <(find "$here/cli" -path '*/in/*' -type f -size -16k | sort)

# Random FASTA files, gene sets and parameter files, all small.
for i in 1 2 3 4 5 6; do
  awk -v seed=$((seed * 31 + i)) 'BEGIN {
    srand(seed); letters = "ACGTACGTACGTNnacgtRYx-*0 ";
    for (r = 0; r < 1 + int(rand() * 4); r++) {
      if (rand() < 0.9) printf ">rec%d %s\n", r, (rand() < 0.5 ? "x" : "");
      len = int(rand() * 900); line = "";
      for (k = 0; k < len; k++) {
        line = line substr(letters, 1 + int(rand() * (rand() < 0.8 ? 4 : 25)), 1);
        if (length(line) >= 60 || rand() < 0.01) { print line; line = "" }
      }
      print line
    } }' > "$pool/r$i.fa"
  awk -v seed=$((seed * 37 + i)) 'BEGIN {
    srand(seed); n = int(rand() * 12);
    for (g = 0; g < n; g++) {
      a = int(rand() * 1200) - 50; b = a + int(rand() * 600) - 20;
      printf "%d %s %d %d %d %d\n", g + 1, (rand() < 0.5 ? "+" : "-"), a, b, b - a + 1,
        int(rand() * 3)
    } }' > "$pool/r$i.genes"
done
{ echo "--stat out.txt"; echo "--seq r1.fa"; echo "--GC_PRECISION 3"; } > "$pool/p1.par"
{ echo "--orf"; echo "--seq r2.fa"; echo "--MIN_ORF_SIZE 30"; echo "--ORF_OUT 1"; } > "$pool/p2.par"
printf '\0\0\0' > "$pool/zeros.bin"
: > "$pool/empty"
printf '>a\r\nACGTN\r\nAC\r\n' > "$pool/crlf.fa"

# Mutated copies: lines dropped, doubled or cut, a letter changed, a NUL byte added.
mapfile -t originals < <(cd "$pool" && ls | sort)
for i in $(seq 1 24); do
  src=${originals[$((RANDOM % ${#originals[@]}))]}
  awk -v seed=$((seed * 41 + i)) 'BEGIN { srand(seed) } {
    r = rand();
    if (r < 0.05) next;
    if (r < 0.10) { print; print; next }
    if (r < 0.15) { print substr($0, 1, int(rand() * length($0))); next }
    if (r < 0.25 && length($0) > 0) {
      p = 1 + int(rand() * length($0));
      $0 = substr($0, 1, p - 1) substr("0-9 AZ>\t+-x", 1 + int(rand() * 11), 1) substr($0, p + 1)
    }
    print }' "$pool/$src" > "$pool/m${i}_$src"
  if [ $((RANDOM % 4)) = 0 ]; then printf 'A\0C' >> "$pool/m${i}_$src"; fi
done
mkdir -p "$pool/dir"
cp "$here/../examples/ecoli.par" "$pool/ecoli.par"
mapfile -t files < <(cd "$pool" && ls | sort)
classify

pick_value() {
  case $((RANDOM % 3)) in
    0) value=${files[$((RANDOM % ${#files[@]}))]} ;;
    1) value=${odd_values[$((RANDOM % ${#odd_values[@]}))]} ;;
    *) value=$((RANDOM % 200)) ;;
  esac
}

failures=0
sanitizer_pattern='AddressSanitizer|LeakSanitizer|UndefinedBehaviorSanitizer|runtime error:'
for run in $(seq 1 "$runs"); do
  key=${commands[$((RANDOM % ${#commands[@]}))]}
  if [ $((RANDOM % 4)) != 0 ]; then
    structured_args "$key"
  else
    # Fully random: any options with any values.
    args=("$key")
    if [ $((RANDOM % 5)) != 0 ]; then
      pick_value
      args+=("$value")
    fi
    for _ in $(seq 1 $((RANDOM % 9))); do
      args+=("${options[$((RANDOM % ${#options[@]}))]}")
      if [ $((RANDOM % 8)) != 0 ]; then
        pick_value
        args+=("$value")
      fi
    done
  fi
  work=$scratch/run
  rm -rf "$work"
  mkdir -p "$work"
  # Only the named inputs are copied (parameter files may name more, so those come along).
  for a in "${args[@]}"; do
    if [ -n "$a" ] && [ -e "$pool/$a" ] && [ "$a" != . ] && [ "$a" != / ]; then
      cp -r "$pool/$a" "$work/"
      case $a in p*.par) cp "$pool"/r*.fa "$work/" ;; esac
    fi
  done
  (cd "$work" && exec timeout -k 2 10 "$bin" "${args[@]}") < /dev/null > /dev/null \
    2> "$scratch/stderr"
  status=$?
  problem=""
  if [ "$status" = 124 ] || [ "$status" = 137 ]; then
    problem="no end within 10 seconds"
  elif [ "$status" -ge 128 ]; then
    problem="killed by signal $((status - 128))"
  elif [ -n "${GENETRAIN_SANITIZED:-}" ] && grep -Eq "$sanitizer_pattern" "$scratch/stderr"; then
    problem="sanitizer report (status $status)"
  fi
  if [ -n "$problem" ]; then
    failures=$((failures + 1))
    printf 'run %d: %s; arguments:' "$run" "$problem"
    printf " '%s'" "${args[@]}"
    printf '\n'
    head -c 3000 "$scratch/stderr"
  fi
done
echo "random command lines: $runs runs (seed $seed), $failures failed"
[ "$failures" = 0 ]
