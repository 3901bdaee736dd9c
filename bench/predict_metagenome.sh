#!/usr/bin/env bash
# genefind predict on metagenome-like contig sets of 100 MB and 1 GB (bench/lib/metagenome.sh):
# wall time, bases per second and peak memory with -t 1 and -t 2, and whether the two outputs
# are the same bytes. The model is the one genefind train makes from the E. coli genome the
# contigs are cut from. Prodigal's metagenome mode is timed in the same run on a 10 MB set, for
# reference: it chooses among its own preset models, so the work is not the same, and it takes
# about 4 s of CPU per MB (400 s for the 100 MB set).
#
#   make bench                                (runs this after the other scripts)
#   bash bench/predict_metagenome.sh [BUILD_DIR]
#   BENCH_METAGENOME_SIZES="100" BENCH_PRODIGAL_META=0 bash bench/predict_metagenome.sh
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
data=${BENCH_DATA:-$root/bench/data}
sizes=${BENCH_METAGENOME_SIZES-100 1000}
with_prodigal=${BENCH_PRODIGAL_META:-1}
# shellcheck source=bench/lib/metagenome.sh
source "$root/bench/lib/metagenome.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# shellcheck source=bench/lib/measure_once.sh
source "$root/bench/lib/measure_once.sh"

gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" > "$work/ecoli.fa"
"$build/genefind" train -q -o "$work/ecoli.mod" "$work/ecoli.fa"
echo "== genefind predict on metagenome-like contig sets (model: genefind train on E. coli)"
for size in $sizes; do
  input=$(metagenome_input "$root" "$data" "$size")
  bases=$(grep -v '>' "$input" | tr -d '\n' | wc -c)
  records=$(grep -c '>' "$input")
  declare -A wall_of=()
  for threads in 1 2; do
    measure_once "$build/genefind" predict -q -t "$threads" -m "$work/ecoli.mod" \
      -o "$work/t$threads.gff" "$input"
    wall_of[$threads]=$wall
    printf '%s MB (%s records), -t %s: wall %s s, cpu %s s, %.1f Mb/s, peak %d MB\n' \
      "$size" "$records" "$threads" "$wall" "$cpu" "$(echo "$bases / $wall / 1000000" | bc -l)" \
      "$((peak / 1024))"
  done
  if cmp -s "$work/t1.gff" "$work/t2.gff"; then same="the same bytes"; else same="DIFFERENT outputs"; fi
  printf '%s MB: -t 2 / -t 1 wall %.2f; %s\n' "$size" \
    "$(echo "${wall_of[2]} / ${wall_of[1]}" | bc -l)" "$same"
done
if [ "$with_prodigal" = 1 ] && command -v prodigal > /dev/null; then
  input=$(metagenome_input "$root" "$data" 10)
  measure_once "$build/genefind" predict -q -m "$work/ecoli.mod" -o "$work/t1.gff" "$input"
  printf 'genefind predict, 10 MB: wall %s s, cpu %s s, peak %d MB\n' "$wall" "$cpu" \
    "$((peak / 1024))"
  genefind_cpu=$cpu
  measure_once prodigal -q -p meta -i "$input" -f gff -o "$work/prodigal.gff"
  printf 'prodigal -p meta, 10 MB: wall %s s, cpu %s s, peak %d MB; genefind / prodigal cpu %.3f\n' \
    "$wall" "$cpu" "$((peak / 1024))" "$(echo "$genefind_cpu / $cpu" | bc -l)"
fi
