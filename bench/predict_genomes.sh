#!/usr/bin/env bash
# genefind predict on genomes other than E. coli, next to Prodigal in the same run: the archaea
# and the 64 % GC bacterium that Debian's cct-examples package ships as GenBank files (their
# submitters' annotations, 33-64 % GC, 1.7-9.1 Mb). For each genome the CDS features become the
# gene set (genefind convert), genetrain --mkmod builds a model from it with examples/ecoli.par
# (plain, with the fixed-motif RBS sections, and with those of genefind motif's sites through
# --gibbs), and the script prints, against the annotation,
# 3'-end sensitivity, precision and start agreement of genefind and of Prodigal, then genefind's
# agreement with Prodigal's calls (Prodigal taken as the reference).
#
# The annotations are not curated: most were made with the gene finders of their day, so a start
# "agreement" here partly measures agreement with those programs. Judge accuracy on the curated
# E. coli set (bench/predict_accuracy.sh).
#
#   make bench                              (runs this after bench/predict_accuracy.sh)
#   bash bench/predict_genomes.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
# shellcheck source=bench/lib/cct_genomes.sh
source "$root/bench/lib/cct_genomes.sh"
if ! cct_examples_present; then
  echo "predict_genomes: the cct-examples package is missing (apt-get install cct-examples)"
  exit 0
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

accuracy() { python3 "$root/bench/gene_accuracy.py" "$@"; }

for file in "${CCT_GENOMES[@]}"; do
  name=$(basename "$file" .gbk.gz)
  genome=$work/$name.fa genes=$work/$name.genes
  cct_genome "$build/genefind" "$file" "$name" "$genome" "$genes"
  gc=$(grep -v '>' "$genome" | tr -d '\n' | awk '{ n = length($0); g = gsub(/[GC]/, ""); \
    printf "%.1f %% GC, %.2f Mb", 100 * g / n, n / 1e6 }')
  echo "== $name ($gc, $(wc -l < "$genes") annotated CDS)"
  "$build/genetrain" --mkmod "$work/plain.mod" --par "$root/examples/ecoli.par" \
    --seq "$genome" --geneset "$genes" > /dev/null
  "$build/genetrain" --mkmod "$work/rbs.mod" --par "$root/examples/ecoli.par" \
    --seq "$genome" --geneset "$genes" \
    --pre_start x --fixmotif 1 --PRE_START_WIDTH 20 --width 23 > /dev/null
  "$build/genetrain" --pre_start "$work/upstream.fa" --par "$root/examples/ecoli.par" \
    --seq "$genome" --geneset "$genes" --PRE_START_WIDTH 20 --PRE_START_RELATIVE_POS 0 > /dev/null
  "$build/genefind" motif -o "$work/sites.out" "$work/upstream.fa" 2>&1 | grep consensus
  cp "$work/plain.mod" "$work/motif.mod"
  "$build/genetrain" --gibbs "$work/sites.out" --seq "$work/upstream.fa" --mod "$work/motif.mod" \
    > /dev/null
  for model in plain rbs motif; do
    "$build/genefind" predict -q -m "$work/$model.mod" -o "$work/$model.gff" "$genome"
    accuracy "$genes" "$work/$model.gff" "genefind ($model model)"
  done
  if command -v prodigal > /dev/null; then
    prodigal -q -i "$genome" -f gff -o "$work/prodigal.gff"
    accuracy "$genes" "$work/prodigal.gff" prodigal
    for model in plain rbs motif; do
      accuracy "$work/prodigal.gff" "$work/$model.gff" "genefind ($model model) against prodigal"
    done
  fi
done
