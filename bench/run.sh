#!/usr/bin/env bash
# Times genetrain's sequence commands next to the tool a user would pick instead, on generated
# metagenome-like FASTA files, then its gene commands on the E. coli genome of examples/ (and on
# that genome repeated, for the cost per base), then its model commands on that genome, and
# rewrites the results sections of docs/performance.md.
#
#   make bench             (builds build/genetrain in Release first)
#   bash bench/run.sh      (uses the binary as it stands)
#
# Settings, all optional, from the environment:
#   BENCH_SIZES  input sizes in MB (10^6 bytes), default "100 1000"; "10 100 1000 4000" for all;
#                empty for none
#   BENCH_RUNS   timed runs of each command, default 3; the median is reported
#   BENCH_GENES  1 (default) times the gene commands, 0 leaves them out
#   BENCH_GENE_RUNS    timed runs of each gene command on E. coli, default 11 (they take ms)
#   BENCH_MODEL  1 (default) times the model commands (runs: BENCH_GENE_RUNS, default 5 here;
#                the large orders: BENCH_RUNS), 0 leaves them out
#   BENCH_GENE_COPIES  copies of the genome joined into one sequence for the cost per base,
#                      default 22 (about 100 MB); empty for none
#   BENCH_DATA   scratch folder for generated inputs and outputs, default bench/data
#   GENETRAIN    the binary to time, default build/genetrain
#   BENCH_DOC    the document to update, default docs/performance.md; empty = print only
# shellcheck disable=SC2016  # the backquotes in printf formats are Markdown
set -euo pipefail
export LC_ALL=C

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
sizes=${BENCH_SIZES-100 1000}
runs=${BENCH_RUNS:-3}
with_genes=${BENCH_GENES:-1}
gene_runs=${BENCH_GENE_RUNS:-11}
with_model=${BENCH_MODEL:-1}
model_runs=${BENCH_GENE_RUNS:-5}
gene_copies=${BENCH_GENE_COPIES-22}
data=${BENCH_DATA:-$root/bench/data}
bin=${GENETRAIN:-$root/build/genetrain}
doc=${BENCH_DOC-$root/docs/performance.md}
# Bump when metagen.cpp changes what it writes, so that stale inputs are not reused.
generator_version=1
# "Within file size plus a few MB" for the counting commands' peak memory.
rss_slack_mb=8
min_throughput=500

scratch=$data/scratch
# Median wall time per "<input>.<command id>", for the cost-per-base ratios.
declare -A walls=()
# What the gene commands find on E. coli, for the cross-checks on the repeated genome.
ecoli_counts=()
mkdir -p "$data/bin" "$scratch"
started=$(date +%s)

say() { printf '%s\n' "$*" >&2; }

install_from_debian() {
  local package=$1
  if [ "$(id -u)" -ne 0 ]; then
    say "note: $package is missing; install it with: sudo apt-get install -y $package"
    return 1
  fi
  say "installing $package from Debian"
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$package" >/dev/null ||
    { apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$package" >/dev/null; }
}

check_tools() {
  if [ ! -x "$bin" ]; then
    say "error: $bin is missing; run 'make build' (or 'make bench') first"
    exit 1
  fi
  [ -x /usr/bin/time ] || install_from_debian time || { say "error: /usr/bin/time is needed"; exit 1; }
  have_seqkit=1
  command -v seqkit >/dev/null || install_from_debian seqkit || have_seqkit=0
  command -v seqkit >/dev/null || have_seqkit=0
  if [ "$with_model" = 1 ]; then
    command -v prodigal > /dev/null || install_from_debian prodigal || true
  fi
  [ "$with_genes" = 1 ] || return 0
  command -v getorf >/dev/null || install_from_debian emboss || true
  # Glimmer's programs live outside PATH, behind a wrapper script.
  long_orfs=$(command -v long-orfs || echo /usr/lib/tigr-glimmer/long-orfs)
  [ -x "$long_orfs" ] || install_from_debian tigr-glimmer || true
}

# The generator is rebuilt when its source is newer than the binary.
build_generator() {
  generator=$data/bin/metagen
  if [ ! -x "$generator" ] || [ "$root/bench/metagen.cpp" -nt "$generator" ]; then
    say "compiling bench/metagen.cpp"
    g++ -std=c++20 -O2 -Wall -Wextra -o "$generator" "$root/bench/metagen.cpp"
  fi
  floor=$data/bin/kmer_floor
  if [ "$with_model" = 1 ] && { [ ! -x "$floor" ] || [ "$root/bench/kmer_floor.c" -nt "$floor" ]; }; then
    say "compiling bench/kmer_floor.c"
    gcc -O2 -Wall -Wextra -o "$floor" "$root/bench/kmer_floor.c"
  fi
}

# Prints the name of the input of the given size in MB, generating it when absent.
input_file() {
  local size=$1
  local file=$data/metagenome_v${generator_version}_${size}MB.fa
  if [ ! -s "$file" ]; then
    say "generating $file"
    gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" "$root/examples/ecoli_mg1655_contigs.fasta.gz" |
      "$generator" "$((size * 1000000))" > "$file.part"
    mv "$file.part" "$file"
  fi
  printf '%s\n' "$file"
}

# Sets CMD (the argument list), OUT (where standard output goes) and SHOWN (the command as the
# table shows it) for a command id on input $1.
command_for() {
  local id=$1 in=$2 o=$scratch/out
  OUT=/dev/null
  case $id in
    cat) CMD=(cat "$in") SHOWN='cat F > /dev/null' ;;
    stat) CMD=("$bin" --stat "$o/stat.txt" --seq "$in") SHOWN='genetrain --stat out.txt --seq F' ;;
    gc) CMD=("$bin" --gc "" --seq "$in") SHOWN='genetrain --gc "" --seq F' ;;
    stat_fasta) CMD=("$bin" --stat_fasta "" --seq "$in") SHOWN='genetrain --stat_fasta "" --seq F' ;;
    count_substring_n)
      CMD=("$bin" --count_substring_n "" --seq "$in")
      SHOWN='genetrain --count_substring_n "" --seq F' ;;
    clean_join)
      CMD=("$bin" --clean_join "$o/joined.txt" --seq "$in" --GAP_FILLER NNNNNNNNNN --MAX_N_SUBSTRING 100)
      SHOWN='genetrain --clean_join out --seq F --GAP_FILLER NNNNNNNNNN --MAX_N_SUBSTRING 100' ;;
    clean)
      CMD=("$bin" --clean "" --seq "$in" --out_clean "$o/clean.txt" --out_masked "$o/masked.txt" --GAP_FILLER NNNNNNNNNN)
      SHOWN='genetrain --clean "" --seq F --out_clean a --out_masked b --GAP_FILLER NNNNNNNNNN' ;;
    split) CMD=("$bin" --split "$o/part" --seq "$in") SHOWN='genetrain --split base --seq F' ;;
    seqkit_stats) CMD=(seqkit stats -a -j 1 "$in") SHOWN='seqkit stats -a -j 1 F' ;;
    seqkit_fx2tab) CMD=(seqkit fx2tab -n -l -g -B N "$in") SHOWN='seqkit fx2tab -n -l -g -B N F' ;;
    seqkit_seq_s)
      CMD=(seqkit seq -s -w 0 "$in") OUT=$o/seq.txt SHOWN='seqkit seq -s -w 0 F > out' ;;
    seqkit_seq) CMD=(seqkit seq -w 0 "$in") OUT=$o/seq.fa SHOWN='seqkit seq -w 0 F > out' ;;
    seqkit_split2) CMD=(seqkit split2 -s 1 -O "$o/split2" "$in") SHOWN='seqkit split2 -s 1 -O dir F' ;;
    *) gene_command_for "$id" "$in" "$o" ;;
  esac
}

# The gene commands of command_for, on genome $2 and the gene set $genes.
gene_command_for() {
  local id=$1 in=$2 o=$3
  local stops=(--TAA_ 1 --TGA_ 1 --TAG_ 1) starts=(--ATG_ 1 --GTG_ 1 --TTG_ 1)
  case $id in
    orf)
      CMD=("$bin" --orf "$o/orf.txt" --seq "$in" "${starts[@]}" "${stops[@]}" --MIN_ORF_SIZE 84)
      SHOWN='genetrain --orf out --seq G --ATG_ 1 --GTG_ 1 --TTG_ 1 --TAA_ 1 --TGA_ 1 --TAG_ 1 --MIN_ORF_SIZE 84' ;;
    getorf)
      CMD=(getorf -sequence "$in" -outseq "$o/getorf.fa" -find 1 -minsize 90)
      SHOWN='getorf -sequence G -outseq out -find 1 -minsize 90' ;;
    long_orfs)
      CMD=("$long_orfs" -n -t 1.15 "$in" "$o/long-orfs.txt") SHOWN='long-orfs -n -t 1.15 G out' ;;
    parse)
      CMD=("$bin" --parse --seq "$in" --geneset "$genes" --cod "$o/cod.txt" --non "$o/non.txt" "${stops[@]}")
      SHOWN='genetrain --parse --seq G --geneset S --cod c --non n --TAA_ 1 --TGA_ 1 --TAG_ 1' ;;
    pre_start)
      CMD=("$bin" --pre_start "$o/pre.txt" --seq "$in" --geneset "$genes" --PRE_START_WIDTH 20
        --PRE_START_RELATIVE_POS 3 "${stops[@]}")
      SHOWN='genetrain --pre_start p --seq G --geneset S --PRE_START_WIDTH 20 --PRE_START_RELATIVE_POS 3 --TAA_ 1 --TGA_ 1 --TAG_ 1' ;;
    stat_non)
      CMD=("$bin" --STAT_NON_VS_ALL --seq "$in" --geneset "$genes")
      SHOWN='genetrain --STAT_NON_VS_ALL --seq G --geneset S' ;;
    orf_per_seq)
      CMD=("$bin" --ORF_PER_SEQ --seq "$in" --geneset "$genes" "${starts[@]}" "${stops[@]}" --MIN_ORF_SIZE 84)
      SHOWN='genetrain --ORF_PER_SEQ --seq G --geneset S --ATG_ 1 --GTG_ 1 --TTG_ 1 --TAA_ 1 --TGA_ 1 --TAG_ 1 --MIN_ORF_SIZE 84' ;;
    *) model_command_for "$id" "$in" "$o" ;;
  esac
}

# The model commands of command_for, on genome $2 and the gene set $genes; the floor reads the
# coding training file $cod_file.
model_command_for() {
  local id=$1 in=$2 o=$3 order
  local stops=(--TAA_ 1 --TGA_ 1 --TAG_ 1)
  case $id in
    mkmod)
      CMD=("$bin" --mkmod "$o/model.mod" --par "$root/examples/ecoli.par" --seq "$in" --geneset "$genes")
      SHOWN='genetrain --mkmod m --par examples/ecoli.par --seq G --geneset S' ;;
    mkchain*)
      order=${id#mkchain}
      CMD=("$bin" --mkchain --chain_cod "$o/cod.chain" --chain_non "$o/non.chain" --order "$order"
        --seq "$in" --geneset "$genes" "${stops[@]}")
      SHOWN="genetrain --mkchain --chain_cod c --chain_non n --order $order --seq G --geneset S --TAA_ 1 --TGA_ 1 --TAG_ 1" ;;
    prodigal_train)
      CMD=(prodigal -p single -i "$in" -t "$o/train.trn") OUT=$o/prodigal.txt
      SHOWN='prodigal -p single -i G -t train.trn' ;;
    kmer_floor) CMD=("$floor" "$cod_file") SHOWN='kmer_floor c (c = coding file of --parse)' ;;
    *) say "unknown command id $id"; exit 1 ;;
  esac
}

# Runs a command once untimed (warming up) and prints "ok", "not yet available" (the build does
# not provide it yet), "missing" (the peer is not installed) or "failed (status N)".
probe() {
  local id=$1 in=$2 status=0
  command_for "$id" "$in"
  if ! command -v "${CMD[0]}" > /dev/null; then echo missing; return; fi
  rm -rf "$scratch/out" && mkdir -p "$scratch/out"
  "${CMD[@]}" > "$OUT" 2> "$scratch/stderr.txt" || status=$?
  if grep -q 'command not yet available' "$scratch/stderr.txt"; then
    echo not yet available
  elif [ "$status" -ne 0 ]; then
    echo "failed (status $status)"
  else
    echo ok
  fi
}

# One timed run; appends "wall cpu rss_kb" to $scratch/times.<key>.
measure() {
  local key=$1 id=$2 in=$3 timing=$scratch/time.txt
  command_for "$id" "$in"
  rm -rf "$scratch/out" && mkdir -p "$scratch/out"
  local begin=$EPOCHREALTIME end
  /usr/bin/time -f '%U %S %M' -o "$timing" "${CMD[@]}" > "$OUT" 2> /dev/null || true
  end=$EPOCHREALTIME
  # Wall time from the shell's microsecond clock: /usr/bin/time shows only hundredths.
  tail -n 1 "$timing" | awk -v begin="$begin" -v end="$end" \
    '{ printf "%.3f %.2f %d\n", end - begin, $1 + $2, $3 }' >> "$scratch/times.$key"
}

# Median of one column of a times file.
median() {
  cut -d ' ' -f "$2" "$1" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# Sets WALL, CPU and RSS_MB from the runs recorded under a key.
summarise() {
  local file=$scratch/times.$1
  WALL=$(median "$file" 1)
  CPU=$(median "$file" 2)
  RSS_MB=$(awk -v kb="$(median "$file" 3)" 'BEGIN { printf "%.1f", kb * 1024 / 1e6 }')
}

calc() { awk "BEGIN { $1 }"; }

# Times a genetrain command next to its peer, alternating, and prints the two table rows.
run_pair() {
  local size=$1 in=$2 ours=$3 peer=$4 mb=$5
  local ours_state peer_state ours_row peer_row r ours_rss=""
  ours_state=$(probe "$ours" "$in")
  peer_state=$(probe "$peer" "$in")
  say "  $ours ($ours_state) vs $peer ($peer_state)"
  rm -f "$scratch/times.$size.$ours.$peer.a" "$scratch/times.$size.$ours.$peer.b"
  for ((r = 1; r <= runs; r++)); do
    [ "$ours_state" = ok ] && measure "$size.$ours.$peer.a" "$ours" "$in"
    [ "$peer_state" = ok ] && measure "$size.$ours.$peer.b" "$peer" "$in"
  done
  local ours_wall=""
  command_for "$ours" "$in"
  if [ "$ours_state" = ok ]; then
    summarise "$size.$ours.$peer.a"
    ours_wall=$WALL
    walls[$size.$ours]=$WALL
    ours_row="| $WALL | $CPU | $RSS_MB | $(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
    ours_rss=$RSS_MB
  else
    ours_row="| $ours_state | | | "
  fi
  local ours_shown=$SHOWN
  command_for "$peer" "$in"
  local ratio="" verdict="" digits=2
  # The model commands take about 1 % of their peer's time: a third digit shows it.
  [ "$size" = model ] && digits=3
  if [ "$peer_state" = ok ]; then
    summarise "$size.$ours.$peer.b"
    walls[$size.$peer]=$WALL
    peer_row="| $WALL | $CPU | $RSS_MB | $(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
    [ -n "$ours_wall" ] && ratio=$(calc "printf \"%.${digits}f\", $ours_wall / ($WALL > 0 ? $WALL : 0.01)")
  else
    peer_row="| $peer_state | | | "
  fi
  [ -n "$ours_wall" ] && verdict=$(verdict "$ours" "$ours_wall" "$ratio" "$ours_rss" "$mb" "$peer")
  printf '| `%s` %s | %s | %s |\n' "$ours_shown" "$ours_row" "$ratio" "$verdict"
  printf '| `%s` %s | | |\n' "$SHOWN" "$peer_row"
}

# The targets of docs/performance.md, judged on one result.
verdict() {
  local id=$1 wall=$2 ratio=$3 rss=$4 mb=$5 peer=${6:-} speed="" memory=""
  case $id in
    stat | gc) [ -n "$ratio" ] && speed=$(calc "print ($ratio < 1) ? \"faster: yes\" : \"faster: no\"") ;;
    stat_fasta | count_substring_n)
      [ -n "$ratio" ] && speed=$(calc "print ($ratio <= 2) ? \"within 2x: yes\" : \"within 2x: no\"") ;;
    clean_join | clean | split)
      speed=$(calc "print ($mb / ($wall > 0 ? $wall : 0.01) >= $min_throughput) ? \"500 MB/s: yes\" : \"500 MB/s: no\"") ;;
    orf)
      [ "$peer" = getorf ] || return 0
      [ -n "$ratio" ] && speed=$(calc "print ($ratio <= 0.33) ? \"3x faster: yes\" : \"3x faster: no\"")
      [ -n "$ratio" ] && speed+=$(calc "print ($ratio <= 0.1) ? \" (later 10x: yes)\" : \" (later 10x: no)\"") ;;
    parse | pre_start) speed=$(calc "print ($wall < 0.05) ? \"under 50 ms: yes\" : \"under 50 ms: no\"") ;;
    mkmod | mkchain5)
      if [ "$peer" = kmer_floor ]; then
        [ -n "$ratio" ] && speed=$(calc "print ($ratio <= 2) ? \"within 2x of floor: yes\" : \"within 2x of floor: no\"")
      else
        speed=$(calc "print ($wall < 0.1) ? \"under 100 ms: yes\" : \"under 100 ms: no\"")
        [ -n "$ratio" ] && speed+=$(calc "print ($ratio <= 0.1) ? \"; 0.1x: yes\" : \"; 0.1x: no\"")
        [ -n "$ratio" ] && speed+=$(calc "print ($ratio <= 0.03) ? \" (later 0.03x: yes)\" : \" (later 0.03x: no)\"")
      fi ;;
  esac
  case $id in
    stat | gc | stat_fasta | count_substring_n)
      memory=$(calc "print ($rss <= $mb + $rss_slack_mb) ? \"; memory: yes\" : \"; memory: no\"") ;;
  esac
  printf '%s%s' "$speed" "$memory"
}

run_size() {
  local size=$1 in mb records
  in=$(input_file "$size")
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  records=$(grep -c '>' "$in")
  say "input $in: $mb MB, $records records"
  cat "$in" > /dev/null
  echo
  echo "### $size MB input: $mb MB, $records records"
  echo
  echo '| command (F = input) | wall s | CPU s | peak RSS MB | MB/s | wall ratio | target |'
  echo '|---|---|---|---|---|---|---|'
  rm -f "$scratch/times.$size.cat"
  for ((r = 1; r <= runs; r++)); do measure "$size.cat" cat "$in"; done
  summarise "$size.cat"
  command_for cat "$in"
  printf '| `%s` | %s | %s | %s | %s | | floor |\n' "$SHOWN" "$WALL" "$CPU" "$RSS_MB" \
    "$(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
  local pairs=(
    "stat seqkit_stats" "gc seqkit_stats"
    "stat_fasta seqkit_fx2tab" "count_substring_n seqkit_fx2tab"
    "clean_join seqkit_seq_s" "clean seqkit_seq_s" "split seqkit_seq")
  [ "$size" = 100 ] && pairs+=("split seqkit_split2")
  local pair
  for pair in "${pairs[@]}"; do
    # shellcheck disable=SC2086
    run_pair "$size" "$in" $pair "$mb"
  done
  echo
  check_size "$in" "$records"
}

# Cross-checks on each input, outside the timing: the --stat counts against seqkit's (which also
# catches counters that wrap beyond 2^31 letters; awk prints them with %.0f, as mawk's %d stops
# at 2^31 - 1) and one --split file per record.
check_size() {
  local in=$1 records=$2 o=$scratch/out expected actual files
  rm -rf "$o" && mkdir -p "$o"
  if "$bin" --stat "$o/stat.txt" --seq "$in" 2> /dev/null && [ "$have_seqkit" = 1 ]; then
    expected=$(seqkit fx2tab -n -l -C A -C C -C G -C T "$in" |
      awk -F'\t' '{ n += $2; a += $3; c += $4; g += $5; t += $6 }
        END { printf "%.0f %.0f %.0f %.0f %.0f %.0f %.0f", n, a + c + g + t, a, c, g, t, n - a - c - g - t }')
    actual=$(awk 'NR >= 2 && NR <= 8 { printf "%s%s", sep, $2; sep = " " }' "$o/stat.txt")
    if [ "$expected" = "$actual" ]; then
      echo "- \`--stat\` counts equal seqkit's: $actual (size, ACGT, A, C, G, T, N)."
    else
      echo "- **\`--stat\` counts differ from seqkit's**: $actual against $expected."
    fi
  fi
  rm -rf "$o" && mkdir -p "$o"
  if "$bin" --split "$o/part" --seq "$in" 2> /dev/null; then
    files=$(find "$o" -name 'part_*' | wc -l)
    if [ "$files" = "$records" ]; then
      echo "- \`--split\` wrote one file per record ($files)."
    else
      echo "- **\`--split\` wrote $files files for $records records.**"
    fi
  fi
  rm -rf "$o"
}

# Gene commands: on the E. coli MG1655 chromosome with its gene set, next to EMBOSS getorf (and
# Glimmer's long-orfs, for information), then on the chromosome repeated $gene_copies times in
# one sequence, where each command should take about that many times as long.

# Sets GENOME and genes to the chromosome repeated $1 times and its gene set, each copy's genes
# moved by the copy's start; written once into $data/genes/.
gene_inputs() {
  local copies=$1 dir=$data/genes length
  local one=$dir/ecoli_x1.fa
  GENOME=$dir/ecoli_x$copies.fa
  genes=$dir/ecoli_x$copies.genes
  mkdir -p "$dir"
  if [ ! -s "$one" ] || [ ! -s "$dir/ecoli_x1.genes" ]; then
    gzip -dc "$root/examples/ecoli_mg1655.genes.gz" > "$dir/ecoli_x1.genes"
    gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" > "$one.part" && mv "$one.part" "$one"
  fi
  [ "$copies" = 1 ] && return 0
  [ -s "$GENOME" ] && [ -s "$genes" ] && return 0
  say "writing $GENOME and its gene set"
  length=$(awk '!/^>/ { n += length($0) } END { printf "%.0f", n }' "$one")
  {
    printf '>ecoli_mg1655_x%d\n' "$copies"
    for ((k = 0; k < copies; k++)); do tail -n +2 "$one"; done
  } > "$GENOME.part"
  # Six columns again, with the '<' and '>' marks of open ends kept; ids get the copy number.
  awk -v copies="$copies" -v len="$length" '
    function moved(v, by, mark) {
      mark = substr(v, 1, 1)
      if (mark == "<" || mark == ">") return mark (substr(v, 2) + by)
      return v + by
    }
    { line[NR] = $0 }
    END {
      OFS = "\t"
      for (k = 0; k < copies; k++)
        for (i = 1; i <= NR; i++) {
          $0 = line[i]
          $1 = (k + 1) "_" $1; $3 = moved($3, k * len); $4 = moved($4, k * len)
          print
        }
    }' "$dir/ecoli_x1.genes" > "$genes"
  mv "$GENOME.part" "$GENOME"
}

# Times commands without a peer, round-robin, and prints a row each. With a base input name
# ($4), the ratio column holds the wall time over that of the same command on the base input.
run_alone() {
  local size=$1 in=$2 mb=$3 base=$4 limit=$5 id r ratio verdict
  shift 5
  local -A state=()
  for id in "$@"; do
    state[$id]=$(probe "$id" "$in")
    say "  $id (${state[$id]})"
    rm -f "$scratch/times.$size.$id"
  done
  for ((r = 1; r <= runs; r++)); do
    for id in "$@"; do [ "${state[$id]}" = ok ] && measure "$size.$id" "$id" "$in"; done
  done
  for id in "$@"; do
    command_for "$id" "$in"
    if [ "${state[$id]}" != ok ]; then
      printf '| `%s` | %s | | | | | |\n' "$SHOWN" "${state[$id]}"
      continue
    fi
    summarise "$size.$id"
    walls[$size.$id]=$WALL
    ratio="" verdict=""
    if [ -n "$base" ] && [ -n "${walls[$base.$id]:-}" ]; then
      ratio=$(calc "printf \"%.1f\", $WALL / (${walls[$base.$id]} > 0 ? ${walls[$base.$id]} : 0.001)")
      [ "${CMD[0]}" = "$bin" ] &&
        verdict=$(calc "print ($ratio <= $limit) ? \"at most ${limit}x: yes\" : \"at most ${limit}x: no\"")
    elif [ -z "$base" ]; then
      verdict=$(verdict "$id" "$WALL" "" "$RSS_MB" "$mb")
    fi
    printf '| `%s` | %s | %s | %s | %s | %s | %s |\n' "$SHOWN" "$WALL" "$CPU" "$RSS_MB" \
      "$(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.001)")" "$ratio" "$verdict"
  done
}

gene_table_head() {
  local mb=$1 count=$2 title=$3 ratio=$4
  echo
  echo "### $title: $mb MB, $count genes"
  echo
  echo "| command (G = genome, S = gene set) | wall s | CPU s | peak RSS MB | MB/s | $ratio | target |"
  echo '|---|---|---|---|---|---|---|'
}

run_genes() {
  local runs=$gene_runs in mb count
  gene_inputs 1
  in=$GENOME
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  count=$(wc -l < "$genes")
  say "gene commands on $in: $mb MB, $count genes"
  gene_table_head "$mb" "$count" "Gene commands on E. coli MG1655" "wall ratio"
  run_pair ecoli "$in" orf getorf "$mb"
  run_pair ecoli "$in" orf long_orfs "$mb"
  run_alone ecoli "$in" "$mb" "" "" parse pre_start stat_non orf_per_seq
  echo
  check_genes_ecoli "$in"
  [ -n "$gene_copies" ] || return 0
  runs=${BENCH_RUNS:-3}
  local copies=$gene_copies limit
  limit=$(calc "printf \"%g\", $copies * 25 / 22")
  gene_inputs "$copies"
  in=$GENOME
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  count=$(wc -l < "$genes")
  say "gene commands on $in: $mb MB, $count genes"
  cat "$in" > /dev/null
  gene_table_head "$mb" "$count" "Gene commands on E. coli x $copies, one sequence" "x E. coli wall"
  run_alone "x$copies" "$in" "$mb" ecoli "$limit" orf getorf parse pre_start stat_non orf_per_seq
  echo
  check_genes_copies "$in" "$copies"
}

# Sets GENE_COUNTS to what the gene commands find on genome $1: coding lines of --parse, regions
# of --pre_start, codons counted by --orf, ORFs listed, and the --STAT_NON_VS_ALL line.
gene_counts() {
  local in=$1 o=$scratch/out cod pre codons orfs stat
  rm -rf "$o" && mkdir -p "$o"
  command_for parse "$in"
  "${CMD[@]}" 2> /dev/null || true
  cod=$(grep -vc '^>' "$o/cod.txt" 2> /dev/null || true)
  command_for pre_start "$in"
  "${CMD[@]}" 2> /dev/null || true
  pre=$(grep -c '^>' "$o/pre.txt" 2> /dev/null || true)
  command_for orf "$in"
  codons=$("${CMD[@]}" 2> /dev/null | awk '{ printf "%s%s", sep, $3; sep = "/" }' || true)
  orfs=$(grep -c . "$o/orf.txt" 2> /dev/null || true)
  command_for stat_non "$in"
  stat=$("${CMD[@]}" 2> /dev/null || true)
  GENE_COUNTS=("${cod:-0}" "${pre:-0}" "${codons:-0/0}" "${orfs:-0}" "$stat")
  rm -rf "$o"
}

# Cross-checks on E. coli, outside the timing: the --STAT_NON_VS_ALL line of docs/commands.md,
# and the ORFs of --orf with ATG starts against getorf's (table 0 starts only at ATG; its
# lengths count the start codon, which --MIN_ORF_SIZE does not).
check_genes_ecoli() {
  local in=$1 o=$scratch/out expected='0.124308  50.8 43.1064'
  gene_counts "$in"
  ecoli_counts=("${GENE_COUNTS[@]}")
  if [ "${GENE_COUNTS[4]}" = "$expected" ]; then
    echo "- \`--STAT_NON_VS_ALL\` prints \`$expected\`, as documented."
  else
    echo "- **\`--STAT_NON_VS_ALL\` prints \`${GENE_COUNTS[4]}\`, not \`$expected\`.**"
  fi
  command -v getorf > /dev/null || return 0
  mkdir -p "$o"
  "$bin" --orf "$o/atg.txt" --seq "$in" --ATG_ 1 --TAA_ 1 --TGA_ 1 --TAG_ 1 --MIN_ORF_SIZE 87 > /dev/null 2>&1 || true
  getorf -sequence "$in" -outseq "$o/getorf.fa" -find 1 -minsize 90 2> /dev/null || true
  # getorf shows [first - last] of the ORF without its stop codon, [last - first] on the reverse strand.
  awk '/^>/ { a = $2; b = $4; sub(/\[/, "", a); sub(/\]/, "", b)
      if ($5 == "(REVERSE") print b, a - 3, 2; else print a + 3, b, 1 }' "$o/getorf.fa" | sort > "$o/theirs"
  awk 'NF { print $1, $2, $4 }' "$o/atg.txt" | sort > "$o/ours"
  local ours theirs
  ours=$(wc -l < "$o/ours") theirs=$(wc -l < "$o/theirs")
  if [ "$ours" -gt 0 ] && cmp -s "$o/ours" "$o/theirs"; then
    echo "- \`--orf\` with \`--ATG_ 1\` only and \`--MIN_ORF_SIZE 87\` lists the same $ours ORFs as \`getorf -find 1 -minsize 90\`."
  else
    echo "- **\`--orf\` with ATG starts lists $ours ORFs, getorf $theirs; $(comm -3 "$o/ours" "$o/theirs" | wc -l) differ.**"
  fi
  rm -rf "$o"
}

# Cross-checks on the repeated genome: every copy gives the same coding lines, pre-start regions,
# codons (bar those across the joins) and shares.
check_genes_copies() {
  local in=$1 copies=$2
  [ "${#ecoli_counts[@]}" = 5 ] || return 0
  gene_counts "$in"
  local c=("${GENE_COUNTS[@]}") e=("${ecoli_counts[@]}") starts
  if [ "${c[0]}" = $((copies * e[0])) ] && [ "${c[1]}" = $((copies * e[1])) ]; then
    echo "- \`--parse\` wrote $copies x ${e[0]} coding lines, \`--pre_start\` $copies x ${e[1]} regions."
  else
    echo "- **\`--parse\` wrote ${c[0]} coding lines, \`--pre_start\` ${c[1]} regions: not $copies x ${e[0]} and $copies x ${e[1]}.**"
  fi
  starts=$((copies * ${e[2]%/*}))
  if [ "${c[2]%/*}" = "$starts" ] && [ "${c[4]}" = "${e[4]}" ]; then
    echo "- \`--orf\` counted $copies x the starts of E. coli ($starts) and $((${c[2]#*/} - copies * ${e[2]#*/})) more stops (across the joins), listed ${c[3]} ORFs ($copies x ${e[3]} = $((copies * e[3]))); \`--STAT_NON_VS_ALL\` prints the same line."
  else
    echo "- **\`--orf\` counted ${c[2]} starts/stops (E. coli ${e[2]}); \`--STAT_NON_VS_ALL\` prints \`${c[4]}\` (E. coli \`${e[4]}\`).**"
  fi
}

# Model commands on E. coli: --mkmod and --mkchain next to Prodigal's training, --mkchain next
# to the k-mer counting floor, and the memory of the large orders.
run_model() {
  local runs=$model_runs in mb count
  gene_inputs 1
  in=$GENOME
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  count=$(wc -l < "$genes")
  cod_file=$data/genes/ecoli_x1.cod.txt
  "$bin" --parse --seq "$in" --geneset "$genes" --cod "$cod_file" --non "$data/genes/ecoli_x1.non.txt" \
    --TAA_ 1 --TGA_ 1 --TAG_ 1 2> /dev/null || rm -f "$cod_file"
  say "model commands on $in: $mb MB, $count genes"
  gene_table_head "$mb" "$count" "Model commands on E. coli MG1655" "wall ratio"
  run_pair model "$in" mkmod prodigal_train "$mb"
  run_pair model "$in" mkchain5 prodigal_train "$mb"
  run_pair model "$in" mkchain5 kmer_floor "$mb"
  runs=${BENCH_RUNS:-3}
  run_alone model "$in" "$mb" "" "" mkchain10 mkchain11
  echo
  model_notes
}

# What the floor reads, and what order 12 would need.
model_notes() {
  local floor_wall=${walls[model.kmer_floor]:-} cod_mb genes_in
  if [ -n "$floor_wall" ] && [ -s "$cod_file" ]; then
    cod_mb=$(calc "printf \"%.1f\", $(stat -c %s "$cod_file") / 1e6")
    genes_in=$(grep -vc '^>' "$cod_file")
    echo "- The floor reads the $cod_mb MB coding file of \`--parse\` ($genes_in genes, one per line) and counts the 6-letter words of the three codon positions in $floor_wall s ($(calc "printf \"%.0f\", $cod_mb / ($floor_wall > 0 ? $floor_wall : 0.001)") MB/s); it does not read the genome or the gene set, cut the genes, count the non-coding words, turn counts into probabilities or print the chains."
  fi
  echo "- \`--order 12\`, not run: seven tables (two coding chains of three frames, one non-coding) of 4^13 doubles, $(calc "printf \"%.2f\", 7 * 4^13 * 8 / 1e9") GB, plus the printed text; the target \"order 12 within 2 GB\" is not met."
}

machine_lines() {
  local cpu memory
  cpu=$(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo)
  memory=$(awk '/^MemTotal/ { printf "%.0f GB", $2 / 1e6 }' /proc/meminfo)
  echo "- Run of $(date -u '+%Y-%m-%d %H:%M UTC'), genetrain $(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo '(no git)') plus any local changes."
  echo "- Machine: $cpu, $(nproc) CPUs, $memory RAM, Linux $(uname -r)."
  echo "- Tools: $( [ "$have_seqkit" = 1 ] && seqkit version | head -n 1 || echo 'seqkit missing'), $(g++ --version | head -n 1)."
  if [ "$with_genes" = 1 ]; then
    echo "- Gene peers: EMBOSS getorf $(dpkg-query -W -f '${Version}' emboss 2> /dev/null || echo missing), Glimmer long-orfs $(dpkg-query -W -f '${Version}' tigr-glimmer 2> /dev/null || echo missing) (Debian packages \`emboss\`, \`tigr-glimmer\`)."
  fi
  echo "- $runs runs of each command, alternating with its peer; medians shown.$(
    [ "$with_genes" = 1 ] && echo " Gene commands on E. coli: $gene_runs runs each.")"
  echo "- Load average (1, 5, 15 min) at the start: $(cut -d ' ' -f 1-3 /proc/loadavg)."
}

# Replaces the text between the two markers named $2 in the document by the new results.
update_doc() {
  local results=$1 name=$2
  if [ -z "$doc" ]; then cat "$results"; return; fi
  if [ ! -e "$doc" ] || ! grep -q "^<!-- $name:begin -->\$" "$doc"; then
    say "note: $doc has no $name markers; appending them"
    printf '\n<!-- %s:begin -->\n<!-- %s:end -->\n' "$name" "$name" >> "$doc"
  fi
  awk -v results="$results" -v begin="<!-- $name:begin -->" -v end="<!-- $name:end -->" '
    $0 == begin { print; while ((getline line < results) > 0) print line; skip = 1; next }
    $0 == end { skip = 0 }
    !skip { print }' "$doc" > "$doc.new"
  mv "$doc.new" "$doc"
  say "updated $doc"
}

main() {
  check_tools
  build_generator
  local results=$scratch/results.md size
  # A run of the model commands alone leaves the other results in place, and the other way round.
  if [ -n "${sizes// /}" ] || [ "$with_genes" = 1 ]; then
    {
      machine_lines
      for size in $sizes; do run_size "$size"; done
      if [ "$with_genes" = 1 ]; then run_genes; fi
      echo
      echo "Whole run: $(($(date +%s) - started)) s including input generation."
    } > "$results"
    rm -rf "$scratch/out"
    update_doc "$results" bench-results
  fi
  [ "$with_model" = 1 ] || return 0
  local model_started
  model_started=$(date +%s)
  {
    model_lines
    run_model
    echo
    echo "Model commands: $(($(date +%s) - model_started)) s."
  } > "$results"
  rm -rf "$scratch/out"
  update_doc "$results" bench-model
}

model_lines() {
  echo "- Run of $(date -u '+%Y-%m-%d %H:%M UTC'), genetrain $(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo '(no git)') plus any local changes."
  echo "- Machine: $(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo), $(nproc) CPUs; $(gcc --version | head -n 1); Prodigal $(dpkg-query -W -f '${Version}' prodigal 2> /dev/null || echo missing) (Debian package \`prodigal\`)."
  echo "- $model_runs runs of each command, alternating with its peer, medians shown; orders 10 and 11: ${BENCH_RUNS:-3} runs."
  echo "- Load average (1, 5, 15 min) at the start: $(cut -d ' ' -f 1-3 /proc/loadavg)."
}

main "$@"
