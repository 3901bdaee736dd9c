#!/usr/bin/env bash
# genefind run (training on the bare genome, then the gene calls) next to Prodigal's
# single-genome mode, in one run:
#   1. E. coli (examples/): accuracy against the curated set, wall and CPU time, peak memory and
#      the wall ratio to Prodigal; the supervised model (train -g with the curated genes) for
#      comparison; and the stability (two trainings give the same model file).
#   2. The archaea and the 64 % GC bacterium of Debian's cct-examples (as in predict_genomes.sh):
#      accuracy of each against the submitters' annotation, and genefind against Prodigal's calls.
#   3. The cost against genome size: slices of 1 to 9.1 Mb of the 9.1 Mb genome.
#
#   make bench                          (runs this after the other scripts)
#   bash bench/train_bench.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
genefind=$build/genefind
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
accuracy() { python3 "$root/bench/gene_accuracy.py" "$@"; }
have_prodigal=0
command -v prodigal > /dev/null && have_prodigal=1

# shellcheck source=bench/lib/measure_once.sh
source "$root/bench/lib/measure_once.sh"

echo "== E. coli K-12 MG1655, no annotation given"
gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" > "$work/ecoli.fa"
curated=$root/examples/ecoli_mg1655_curated.genes.gz
measure_once "$genefind" run -q --model-out "$work/run.mod" -o "$work/run.gff" "$work/ecoli.fa"
run_wall=$wall
echo "genefind run: wall $wall s, cpu $cpu s, peak $((peak / 1024)) MB"
accuracy "$curated" "$work/run.gff" "genefind run"
"$genefind" train -q -o "$work/again.mod" "$work/ecoli.fa"
# The model's NAME is the output file's name; everything else must be the same bytes.
if cmp -s <(grep -v '^NAME ' "$work/run.mod") <(grep -v '^NAME ' "$work/again.mod"); then
  echo "stability: two trainings give the same model file (but for its NAME)"
else
  echo "stability: WARNING, two trainings give different model files"
fi
"$genefind" train -q -g "$curated" -o "$work/supervised.mod" "$work/ecoli.fa"
"$genefind" predict -q -m "$work/supervised.mod" -o "$work/supervised.gff" "$work/ecoli.fa"
accuracy "$curated" "$work/supervised.gff" "genefind, model trained on the curated genes (-g)"
if [ "$have_prodigal" = 1 ]; then
  measure_once prodigal -q -i "$work/ecoli.fa" -f gff -o "$work/prodigal.gff"
  echo "prodigal: wall $wall s, cpu $cpu s, peak $((peak / 1024)) MB"
  accuracy "$curated" "$work/prodigal.gff" prodigal
  printf 'wall ratio genefind run / prodigal: %.3f (target <= 0.5)\n' \
    "$(echo "$run_wall / $wall" | bc -l)"
fi

# shellcheck source=bench/lib/cct_genomes.sh
source "$root/bench/lib/cct_genomes.sh"
if ! cct_examples_present; then
  echo "the cct-examples package is missing (apt-get install cct-examples): no other genomes"
  exit 0
fi
for file in "${CCT_GENOMES[@]}"; do
  name=$(basename "$file" .gbk.gz)
  genome=$work/$name.fa genes=$work/$name.genes
  cct_genome "$genefind" "$file" "$name" "$genome" "$genes"
  echo "== $name, no annotation given"
  measure_once "$genefind" run -q -o "$work/run.gff" "$genome"
  echo "genefind run: wall $wall s, peak $((peak / 1024)) MB"
  accuracy "$genes" "$work/run.gff" "genefind run"
  if [ "$have_prodigal" = 1 ]; then
    measure_once prodigal -q -i "$genome" -f gff -o "$work/prodigal.gff"
    echo "prodigal: wall $wall s, peak $((peak / 1024)) MB"
    accuracy "$genes" "$work/prodigal.gff" prodigal
    accuracy "$work/prodigal.gff" "$work/run.gff" "genefind run against prodigal"
  fi
done

# Genomes without an annotation in Debian packages (ragout-examples, kleborate-examples): only
# the agreement with Prodigal's calls can be measured. Complete genomes and drafts of hundreds of
# contigs, 33 to 57 % GC.
if [ "$have_prodigal" = 1 ]; then
  if [ "$(id -u)" = 0 ] && command -v apt-get > /dev/null; then
    apt-get install -y -qq ragout-examples kleborate-examples > /dev/null 2>&1 || true
  fi
  ragout=/usr/share/doc/ragout/examples
  kleborate=/usr/share/doc/kleborate/examples/data
  for input in "$ragout/H.Pylori/references/G27.fasta.gz" "$ragout/S.Aureus/references/N315.fasta.gz" \
    "$ragout/V.Cholerae/references/O395.fasta.gz" "$ragout/S.Aureus/usa300_contigs.fasta.gz" \
    "$ragout/V.Cholerae/h1_contigs.fasta.gz" "$kleborate/MGH78578.fna.xz"; do
    [ -e "$input" ] || continue
    name=$(basename "$input")
    name=${name%%.*}
    # xz is not among the compressions the programs read yet: unpacked here.
    case $input in
      *.xz) xz -dc "$input" > "$work/agree.fa" ;;
      *) gzip -dc "$input" > "$work/agree.fa" ;;
    esac
    records=$(grep -c '^>' "$work/agree.fa")
    measure_once "$genefind" run -q -o "$work/agree.gff" "$work/agree.fa"
    genefind_wall=$wall
    measure_once prodigal -q -i "$work/agree.fa" -f gff -o "$work/agree.prodigal.gff"
    printf '%s (%s records): wall %s s against %s s (%.2f); ' "$name" "$records" \
      "$genefind_wall" "$wall" "$(echo "$genefind_wall / $wall" | bc -l)"
    accuracy "$work/agree.prodigal.gff" "$work/agree.gff" "genefind run against prodigal"
  done
fi

echo "== cost against genome size (slices of NC_004463)"
big=$work/NC_004463.fa
grep -v '^>' "$big" | tr -d '\n' > "$work/big.txt"
for mb in 1 2 4 7 9.1; do
  bases=$(awk -v m="$mb" 'BEGIN { printf "%d", m * 1000000 }')
  { echo ">slice"; head -c "$bases" "$work/big.txt" | fold -w 80; } > "$work/slice.fa"
  measure_once "$genefind" run -q -o "$work/slice.gff" "$work/slice.fa"
  line="$mb Mb: genefind run wall $wall s, peak $((peak / 1024)) MB"
  if [ "$have_prodigal" = 1 ]; then
    genefind_wall=$wall
    measure_once prodigal -q -i "$work/slice.fa" -f gff -o "$work/slice.prodigal.gff"
    line="$line; prodigal wall $wall s, peak $((peak / 1024)) MB; ratio $(printf '%.2f' \
      "$(echo "$genefind_wall / $wall" | bc -l)")"
  fi
  echo "$line"
done
