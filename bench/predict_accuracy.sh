#!/usr/bin/env bash
# Accuracy and cost of the gene finder on the E. coli genome of examples/, next to Prodigal:
# builds the model from the curated gene set (without and with the fixed-motif RBS sections),
# predicts, and prints 3'-end sensitivity, precision, start agreement, CPU time and peak memory.
#
#   bash bench/predict_accuracy.sh [BUILD_DIR]     (needs build/tests/predict_bench; prodigal)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" > "$work/ecoli.fa"
gzip -dc "$root/examples/ecoli_mg1655_curated.genes.gz" > "$work/curated.genes"
"$build/genetrain" --mkmod "$work/plain.mod" --par "$root/examples/ecoli.par" \
  --seq "$work/ecoli.fa" --geneset "$work/curated.genes" > /dev/null
"$build/genetrain" --mkmod "$work/rbs.mod" --par "$root/examples/ecoli.par" \
  --seq "$work/ecoli.fa" --geneset "$work/curated.genes" \
  --pre_start x --fixmotif 1 --PRE_START_WIDTH 20 --width 23 > /dev/null
for model in plain rbs; do
  "$build/tests/predict_bench" "$work/$model.mod" "$work/ecoli.fa" "$work/$model.genes" 2>&1 |
    sed "s/^/genefind ($model model): /"
  python3 "$root/bench/gene_accuracy.py" "$work/curated.genes" "$work/$model.genes" \
    "genefind ($model model)"
done
if command -v prodigal > /dev/null; then
  /usr/bin/time -f "prodigal: cpu_seconds %U+%S peak_kb %M" \
    prodigal -i "$work/ecoli.fa" -f gff -o "$work/prodigal.gff" -q
  python3 "$root/bench/gene_accuracy.py" "$work/curated.genes" "$work/prodigal.gff" prodigal
fi
