#!/usr/bin/env bash
# genefind motif next to elph (the Debian motif finder) on the regions 20 bases upstream of the
# curated E. coli genes of examples/ (genetrain --pre_start), with the same motif width: the
# consensus of each, the share of regions whose sites are the same or overlap, wall and CPU
# seconds and their ratio, and the cost on the regions repeated four times (linearity). Then
# the report of genefind motif on the archaea Methanobacterium thermoautotrophicum, whose genes
# have little Shine-Dalgarno signal, and Thermococcus kodakaraensis, when their GenBank files
# are installed (Debian cct).
#
#   make bench                              (runs this after the other benchmarks)
#   bash bench/motif_bench.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
width=6
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" > ecoli.fa
"$build/genetrain" --pre_start up.fa --par "$root/examples/ecoli.par" --seq ecoli.fa \
  --geneset "$root/examples/ecoli_mg1655_curated.genes.gz" --PRE_START_WIDTH 20
for copy in 1 2 3 4; do cat up.fa; done | awk '/^>/ { print ">" ++n; next } { print }' > up4.fa
regions=$(grep -c '^>' up.fa)

# Wall and CPU seconds of one command, into $wall and $cpu.
timed() {
  /usr/bin/time -f "%e %U %S" -o time.txt "$@"
  read -r wall user system < time.txt
  cpu=$(echo "$user + $system" | bc)
}

timed "$build/genefind" motif -w "$width" -o ours.out up.fa 2> ours.txt
ourWall=$wall ourCpu=$cpu
timed "$build/genefind" motif -w "$width" -o ours4.out up4.fa 2> /dev/null
ourWall4=$wall ourCpu4=$cpu
echo "genefind motif on $regions regions of 20 bases, width $width:"
sed 's/^/  /' ours.txt
echo "  wall ${ourWall} s, cpu ${ourCpu} s; 4x regions: wall ${ourWall4} s, cpu ${ourCpu4} s"

if ! command -v elph > /dev/null; then
  echo "elph is not installed (apt-get install elph): no comparison"
else
  timed elph up.fa LEN=$width > elph.out 2> /dev/null
  elphWall=$wall elphCpu=$cpu
  timed elph up4.fa LEN=$width > elph4.out 2> /dev/null
  elphWall4=$wall elphCpu4=$cpu
  # elph's consensus: the likeliest letter of each column of its motif matrix.
  elphConsensus=$(awk '/^Motif probability model/ { on = 1; next }
    on && /^[acgt] / { for (i = 2; i <= NF; i++) if ($i > best[i]) { best[i] = $i; l[i] = toupper($1) } }
    on && /^Info/ { for (i = 2; i <= NF; i++) s = s l[i]; print s; exit }' elph.out)
  # Starts of both, region by region: the same, or overlapping (less than a width apart); and
# the offset most regions share, since two finders may frame one motif a letter apart.
  awk -v w="$width" 'FNR == 1 { file++ }
    file == 1 && /Seq.no/ { on = 1; next }
    file == 1 && on && NF >= 4 { elph[$1] = $2 }
    file == 2 && /^ *[0-9]+- / { split($0, t, /[- ]+/); n = 0
      for (k = 1; k in t; k++) if (t[k] != "") tok[++n] = t[k]
      ours[tok[1]] = tok[3]; count++ }
    END { for (r in ours) { d = ours[r] - elph[r]; byShift[d]++; if (d < 0) d = -d
            same += d == 0; overlap += d < w }
          for (d in byShift) if (byShift[d] > byShift[top] || top == "") top = d
          printf "  same start %.1f%%, overlapping %.1f%% of %d regions; the commonest offset, %+d, holds %.1f%%\n",
            100 * same / count, 100 * overlap / count, count, top, 100 * byShift[top] / count }' \
    elph.out ours.out > agree.txt
  echo "elph on the same regions: consensus $elphConsensus"
  cat agree.txt
  echo "  wall ${elphWall} s, cpu ${elphCpu} s; 4x regions: wall ${elphWall4} s, cpu ${elphCpu4} s"
  printf "ratio genefind/elph: wall %.3f, cpu %.3f; 4x regions: wall %.3f, cpu %.3f\n" \
    "$(echo "$ourWall / $elphWall" | bc -l)" "$(echo "$ourCpu / $elphCpu" | bc -l)" \
    "$(echo "$ourWall4 / $elphWall4" | bc -l)" "$(echo "$ourCpu4 / $elphCpu4" | bc -l)"
fi
if [ "$(echo "$ourCpu > 0" | bc)" = 1 ]; then
  printf "genefind motif cpu 4x regions / 1x: %.2f (4 when linear)\n" \
    "$(echo "$ourCpu4 / $ourCpu" | bc -l)"
fi

cct=/usr/share/doc/cct/examples/sample_projects/sample_project_2
for weak in "$cct/reference_genome/Methanobacterium_thermoautotrophicum.gbk.gz" \
  "$cct/comparison_genomes/Thermococcus_kodakaraensis.gbk.gz"; do
  [ -e "$weak" ] || continue
  "$build/genefind" convert -q -o weak.genes "$weak"
  gzip -dc "$weak" | awk '/^ORIGIN/ { on = 1; print ">genome"; next } /^\/\// { on = 0 }
    on { gsub(/[^A-Za-z]/, ""); print toupper($0) }' > weak.fa
  "$build/genetrain" --pre_start weak.up --par "$root/examples/ecoli.par" --seq weak.fa \
    --geneset weak.genes --PRE_START_WIDTH 20
  echo "genefind motif on $(basename "$weak" .gbk.gz) ($(grep -c '^>' weak.up) regions):"
  "$build/genefind" motif -w "$width" -o /dev/null weak.up 2>&1 | sed 's/^/  /'
done
