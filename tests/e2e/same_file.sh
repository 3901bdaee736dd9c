#!/usr/bin/env bash
# Every command that reads a file and writes one, run twice: once with the output named as the
# input, once with an output of its own. Both runs must end alike (status, messages) and leave
# the same bytes, so the input was read whole before the output took its place.
#   same_file.sh BINARY FIXTURES_DIR SCRATCH_DIR
set -u
export LC_ALL=C
bin=$(realpath "$1")
fixtures=$(cd "$2" && pwd)
scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
failed=0
cases=0

# A FASTA of three records and 12 MB: block-wise readers see it in several blocks.
big=$scratch/big.fa
{
  for record in 1 2 3; do
    printf '>record %s of three\n' "$record"
    yes ACGTTGCAACGGTACCATGCAGTTGACCATGGTACAACGTGCATGCAATTGCCGGTAAC | head -n 66000
  done
} > "$big"

# same NAME INPUT MODE ARGS...: the argument @OUT@ stands for the output. In the first run it is
# INPUT itself; in the second a file of its own, which for MODE append starts as a copy of INPUT.
same() {
  local name=$1 input=$2 mode=$3
  shift 3
  local one=$scratch/$name/one two=$scratch/$name/two arg
  mkdir -p "$one" "$two"
  cp -a "$fixtures/." "$one/"
  cp -a "$fixtures/." "$two/"
  cp "$big" "$one/"
  cp "$big" "$two/"
  [ "$mode" = append ] && cp "$two/$input" "$two/own.out"
  local first=() second=()
  for arg in "$@"; do
    if [ "$arg" = @OUT@ ]; then
      first+=("$input")
      second+=(own.out)
    else
      first+=("$arg")
      second+=("$arg")
    fi
  done
  (cd "$one" && "$bin" "${first[@]}") > "$one.stdout" 2> "$one.stderr"
  local status_one=$?
  (cd "$two" && "$bin" "${second[@]}") > "$two.stdout" 2> "$two.stderr"
  local status_two=$?
  cases=$((cases + 1))
  if [ "$status_one" != "$status_two" ] || ! cmp -s "$one.stdout" "$two.stdout" ||
    ! cmp -s "$one.stderr" "$two.stderr"; then
    echo "$name: the runs end differently (status $status_one and $status_two)"
    diff "$one.stderr" "$two.stderr" | head -5
    failed=1
  elif ! cmp -s "$one/$input" "$two/own.out"; then
    echo "$name: $input written over itself differs from the output written aside"
    failed=1
  elif [ "$status_one" != 0 ]; then
    echo "$name: failed (status $status_one): $(head -c 300 "$one.stderr")"
    failed=1
  fi
  # No temporary file may be left behind.
  if [ -n "$(find "$one" "$two" -name '.*.tmp')" ]; then
    echo "$name: temporary files left: $(find "$one" "$two" -name '.*.tmp')"
    failed=1
  fi
}

same stat multi.fa replace --stat @OUT@ --seq multi.fa
same gc multi.fa replace --gc @OUT@ --seq multi.fa
same clean_join multi.fa replace --clean_join @OUT@ --seq multi.fa
same clean_join_log multi.fa append --clean_join x.txt --seq multi.fa --log @OUT@
same clean_out_clean multi.fa replace --clean --seq multi.fa --out_clean @OUT@ --out_masked m.txt
same clean_out_masked multi.fa replace --clean --seq multi.fa --out_clean c.txt --out_masked @OUT@
same mask_over_fasta in.fa replace --mask mask.txt --seq in.fa --out @OUT@
same mask_over_intervals mask.txt replace --mask mask.txt --seq in.fa --out @OUT@
same clean_fasta_big big.fa replace --clean_fasta big.fa --clean_fasta_index i.txt \
  --clean_fasta_out @OUT@ --clean_fasta_label L
same clean_fasta_index big.fa replace --clean_fasta big.fa --clean_fasta_index @OUT@ \
  --clean_fasta_out o.fa --clean_fasta_label L
same clean_coding cod.fa replace --CLEAN_CODING @OUT@ --seq cod.fa --PRINT_LABEL 1 \
  --MKCHAIN_L_MARGING 3 --MKCHAIN_R_MARGING 3 --MIN_COD 3 --TAA_ 1
same parse_cod_over_genome s.fa replace --parse --seq s.fa --geneset g.txt --cod @OUT@ --non n.txt
same parse_non_over_genes g.txt replace --parse --seq s.fa --geneset g.txt --cod c.txt --non @OUT@
same intergenic p.fa replace --intergenic --seq p.fa --geneset pairs.txt --non @OUT@
same pre_start s.fa replace --pre_start @OUT@ --seq s.fa --geneset g.txt --PRE_START_WIDTH 4
same orf s.fa replace --orf @OUT@ --seq s.fa --ATG_ 1 --TAA_ 1 --MIN_ORF_SIZE 3
same mkchain genome.fa replace --mkchain --chain_cod @OUT@ --chain_non n.txt --order 1 \
  --seq genome.fa --geneset genes.txt
same mkmod_over_settings model.par replace --mkmod @OUT@ --par model.par --seq genome.fa \
  --geneset genes.txt
same mkmod_over_training cod.txt replace --mkmod @OUT@ --par model.par --cod cod.txt --non non.txt
same combine c.mod replace --combine @OUT@ --first c.mod --second c.mod
same gibbs_log_over_input gibbs.txt append --gibbs gibbs.txt --seq pre.fa --mod m.mod --log @OUT@
same compare g.txt replace --compare @OUT@ --source g.txt --target g.txt

# --split names its files after its value: the first piece written over the input.
split_dir=$scratch/split
mkdir -p "$split_dir/one" "$split_dir/two"
cp "$fixtures/multi.fa" "$split_dir/one/part_1"
cp "$fixtures/multi.fa" "$split_dir/two/input.fa"
(cd "$split_dir/one" && "$bin" --split part --seq part_1 --SPLIT_SIZE 5)
(cd "$split_dir/two" && "$bin" --split part --seq input.fa --SPLIT_SIZE 5)
rm "$split_dir/two/input.fa"
cases=$((cases + 1))
if ! diff -r "$split_dir/one" "$split_dir/two" > /dev/null; then
  echo "split: the pieces differ when the first one is written over the input"
  failed=1
fi

echo "same_file: $cases command lines"
exit $failed
