#!/usr/bin/env bash
# Accuracy and cost of genefind predict on the E. coli genome of examples/, next to Prodigal in
# the same run: builds the model from the curated gene set (without RBS sections, with those of a
# fixed window, and with those of the motif genefind motif finds), predicts with build/genefind,
# and prints 3'-end sensitivity, precision and start agreement against the curated set, CPU time,
# peak memory and the CPU ratio to Prodigal (which also trains); then the wall time of -t 1 and
# -t 2 on the 156-contig draft repeated ten times.
#
#   make bench                              (runs this after bench/run.sh)
#   bash bench/predict_accuracy.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" > "$work/ecoli.fa"
curated=$root/examples/ecoli_mg1655_curated.genes.gz
"$build/genetrain" --mkmod "$work/plain.mod" --par "$root/examples/ecoli.par" \
  --seq "$work/ecoli.fa" --geneset "$curated" > /dev/null
"$build/genetrain" --mkmod "$work/rbs.mod" --par "$root/examples/ecoli.par" \
  --seq "$work/ecoli.fa" --geneset "$curated" \
  --pre_start x --fixmotif 1 --PRE_START_WIDTH 20 --width 23 > /dev/null
# The RBS sections of the sampled motif: upstream regions, genefind motif, --gibbs.
"$build/genetrain" --pre_start "$work/upstream.fa" --par "$root/examples/ecoli.par" \
  --seq "$work/ecoli.fa" --geneset "$curated" --PRE_START_WIDTH 20 --PRE_START_RELATIVE_POS 0 \
  > /dev/null
"$build/genefind" motif -q -o "$work/sites.out" "$work/upstream.fa"
cp "$work/plain.mod" "$work/motif.mod"
"$build/genetrain" --gibbs "$work/sites.out" --seq "$work/upstream.fa" --mod "$work/motif.mod" \
  > /dev/null

# CPU seconds (user + system) and peak resident kB of one command, into "$work/cost".
cost() {
  /usr/bin/time -f "%U %S %M" -o "$work/cost" "$@"
  read -r user system peak < "$work/cost"
  cpu=$(printf "%.2f" "$(echo "$user + $system" | bc)")
  echo "$cpu $peak" > "$work/cost"
}

declare -A cpuOf
for model in plain rbs motif; do
  name="genefind ($model model)"
  cost "$build/genefind" predict -q -m "$work/$model.mod" -o "$work/$model.gff" "$work/ecoli.fa"
  read -r cpuOf[$model] peak < "$work/cost"
  echo "$name: cpu_seconds ${cpuOf[$model]} peak_kb $peak"
  python3 "$root/bench/gene_accuracy.py" "$curated" "$work/$model.gff" "$name"
done
if command -v prodigal > /dev/null; then
  cost prodigal -i "$work/ecoli.fa" -f gff -o "$work/prodigal.gff" -q
  read -r prodigalCpu peak < "$work/cost"
  echo "prodigal: cpu_seconds $prodigalCpu peak_kb $peak"
  python3 "$root/bench/gene_accuracy.py" "$curated" "$work/prodigal.gff" prodigal
  for model in plain rbs motif; do
    printf 'cpu ratio genefind (%s model) / prodigal: %.3f (target <= 0.25)\n' "$model" \
      "$(echo "${cpuOf[$model]} / $prodigalCpu" | bc -l)"
  done
else
  echo "prodigal is missing: no side-by-side figures"
fi

# Two threads against one on many records: the draft's contigs ten times over (about 46 Mb).
for _ in 1 2 3 4 5 6 7 8 9 10; do gzip -dc "$root/examples/ecoli_mg1655_contigs.fasta.gz"; done \
  > "$work/contigs10.fa"
declare -A wallOf
for threads in 1 2; do
  /usr/bin/time -f "%e" -o "$work/wall" "$build/genefind" predict -q -m "$work/rbs.mod" \
    -t "$threads" -o "$work/t$threads.gff" "$work/contigs10.fa"
  wallOf[$threads]=$(cat "$work/wall")
done
cmp -s "$work/t1.gff" "$work/t2.gff" || echo "WARNING: -t 1 and -t 2 outputs differ"
printf 'threads on %s records: -t 1 %s s, -t 2 %s s, ratio %.3f (target <= 0.6)\n' \
  "$(grep -c '^>' "$work/contigs10.fa")" "${wallOf[1]}" "${wallOf[2]}" \
  "$(echo "${wallOf[2]} / ${wallOf[1]}" | bc -l)"
