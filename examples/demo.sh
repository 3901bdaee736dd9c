#!/usr/bin/env bash
# First the main job: genefind run finds the genes of the bundled E. coli K-12 MG1655 genome
# with no annotation given (a model trained on the genome alone, its RBS motif, the gene calls),
# and the calls are measured against the curated annotation (examples/ecoli_mg1655_curated).
# Then genetrain trains a model from the genome and its gene set, end to end, and the demo says
# in a few lines what it made and where:
#   sequence statistics (--stat), coding and non-coding training sequences (--parse), Markov
#   chains (--mkchain), the model (--mkmod with examples/ecoli.par), upstream regions of the
#   genes (--pre_start), a model with ribosome binding site sections from a fixed motif window
#   (--mkmod --fixmotif), the ribosome binding sites that genefind motif finds in the upstream
#   regions and the model with RBS sections made from them (--gibbs), and the agreement of the
#   gene set with itself (--compare). genefind is taken from beside genetrain; without it the
#   motif steps are left out.
#
#   demo.sh [BINARY [OUTPUT_FOLDER]]
#
# Without BINARY the script takes the installed program next to it (PREFIX/bin/genetrain for
# PREFIX/share/genetrain/examples/demo.sh), else in a source tree build/genetrain, else
# genetrain on the PATH. OUTPUT_FOLDER defaults to genetrain-demo in the current folder, as the
# installed examples folder is usually not writable. `make demo` builds the tool and runs this
# script with build/genetrain and build/demo. Every file it writes goes to OUTPUT_FOLDER, which is
# emptied of the demo's own files first; the tools' messages go to OUTPUT_FOLDER/log.txt.
set -euo pipefail

examples=$(cd "$(dirname "$0")" && pwd)
if [ $# -ge 1 ]; then
  bin=$1
  # A bare name is looked up on the PATH, as the shell would.
  case $bin in */*) ;; *) bin=$(command -v "$bin" || echo "$bin") ;; esac
elif [[ $examples == */share/genetrain/examples && -x $examples/../../../bin/genetrain ]]; then
  bin=$examples/../../../bin/genetrain
elif [ -x "$examples/../build/genetrain" ] && [ -e "$examples/../CMakeLists.txt" ]; then
  bin=$examples/../build/genetrain
elif command -v genetrain > /dev/null; then
  bin=$(command -v genetrain)
else
  echo "demo: no genetrain next to $examples, in a build folder or on the PATH;" \
    "give the program as first argument" >&2
  exit 1
fi
if [ ! -f "$bin" ] || [ ! -x "$bin" ]; then
  echo "demo: no executable $bin (run make first)" >&2
  exit 1
fi
bin=$(realpath "$bin")
out=${2:-genetrain-demo}
mkdir -p "$out"
out=$(realpath "$out")
cd "$out"
rm -f genome.fa genes.txt stat.txt cod.txt non.txt chain_cod.txt chain_non.txt ecoli.mod \
  upstream.fa ecoli_rbs.mod motif.log sites.out motif_report.txt ecoli_gibbs.mod compare.txt \
  log.txt genefind.mod genefind.gff train.log
par=$examples/ecoli.par

# The main job: from the bare genome to its genes, then their accuracy against the curated set
# (3'-end sensitivity, precision and start agreement, as bench/gene_accuracy.py measures them).
genefind=$(dirname "$bin")/genefind
if [ -x "$genefind" ]; then
  start=$(date +%s.%N)
  echo "\$ genefind run --model-out genefind.mod --log train.log -o genefind.gff genome" >> log.txt
  if ! "$genefind" run -q --model-out genefind.mod --log train.log -o genefind.gff \
    "$examples/ecoli_mg1655.fasta.gz" 2>> log.txt; then
    echo "demo: genefind run failed; the end of $out/log.txt:" >&2
    tail -5 log.txt >&2
    exit 1
  fi
  end=$(date +%s.%N)
  cat train.log >> log.txt
  accuracy=$(gzip -dc "$examples/ecoli_mg1655_curated.genes.gz" | awk -F'\t' '
    FNR == NR { l = $3; r = $4; sub(/^</, "", l); sub(/>$/, "", r); sub(/^>/, "", r)
      k = ($2 == "+") ? $2 SUBSEP r : $2 SUBSEP l
      if (!(k in start)) curated++  # genes that share a stop end count once, as in bench/
      start[k] = ($2 == "+") ? l : r; next }
    $3 == "CDS" { predicted++; k = ($7 == "+") ? $7 SUBSEP $5 : $7 SUBSEP $4
      if (k in start) { shared++; s = ($7 == "+") ? $4 : $5; if (s == start[k]) same++ } }
    END { printf "%d genes; against the %d curated genes: %.1f %% of their stops found, %.1f %% " \
      "of the genes right, %.1f %% of the shared starts", predicted, curated, \
      100 * shared / curated, 100 * shared / predicted, 100 * same / shared }' - genefind.gff)
  rounds=$(grep -c '^round ' train.log || true)
  motif=$(awk '$1 == "motif" { print $2 ", spacer " $NF }' train.log)
  code=$(sed -n 's/^genetic code \([0-9]*\):.*/\1/p' train.log)
  elapsed=$(awk -v s="$start" -v e="$end" 'BEGIN { printf "%.1f", e - s }')
  echo "Found the genes of E. coli K-12 MG1655 with no annotation given in $elapsed s (genefind run):"
  echo "  genefind.mod     the model it trained on the genome alone: $rounds rounds, genetic code" \
    "$code, RBS motif $motif (train.log)"
  echo "  genefind.gff     $accuracy"
fi
start=$(date +%s.%N)

# Inputs: genetrain reads the gzip-compressed files itself; for a build that does not (a probe
# tells) they are unpacked here first. unpack=1 always unpacks, unpack=0 never does.
unpack=auto
if [ "$unpack" = auto ]; then
  printf '>probe\nACGT\n' | gzip > probe.fa.gz
  size=$("$bin" --stat "" --seq probe.fa.gz 2> /dev/null | awk '$1 == "SEQUENCE_SIZE" { print $2 }')
  if [ "$size" = 4 ]; then unpack=0; else unpack=1; fi
  rm -f probe.fa.gz
fi
if [ "$unpack" = 1 ]; then
  gzip -dc "$examples/ecoli_mg1655.fasta.gz" > genome.fa
  gzip -dc "$examples/ecoli_mg1655.genes.gz" > genes.txt
  seq=genome.fa genes=genes.txt
else
  seq=$examples/ecoli_mg1655.fasta.gz genes=$examples/ecoli_mg1655.genes.gz
fi

# Runs one command; its messages go to log.txt, a failure stops the demo with them.
run() {
  echo "\$ genetrain $*" >> log.txt
  if ! "$bin" "$@" >> log.txt 2>&1; then
    echo "demo: genetrain $1 failed; the end of $out/log.txt:" >&2
    tail -5 log.txt >&2
    exit 1
  fi
}
# The value of a model section that stands on its label's line.
value() { awk -v key="$1" '$1 == key { print $2; exit }' "$2"; }

run --stat stat.txt --seq "$seq"
run --parse --par "$par" --seq "$seq" --geneset "$genes" --cod cod.txt --non non.txt
run --mkchain --par "$par" --seq "$seq" --geneset "$genes" --order 5 \
  --chain_cod chain_cod.txt --chain_non chain_non.txt
run --mkmod ecoli.mod --par "$par" --seq "$seq" --geneset "$genes"
run --pre_start upstream.fa --par "$par" --seq "$seq" --geneset "$genes" \
  --PRE_START_WIDTH 20 --PRE_START_RELATIVE_POS 0
# A fixed motif window: the 20 bases before the start codon and the start codon itself. With
# --fixmotif the --pre_start key only switches the motif on; its file is not written again.
run --mkmod ecoli_rbs.mod --par "$par" --seq "$seq" --geneset "$genes" \
  --pre_start upstream.fa --fixmotif 1 --PRE_START_WIDTH 20 --width 23 --log motif.log
# The ribosome binding sites found by the Gibbs site sampler, one per upstream region, become the
# RBS sections appended to a copy of the model.
if [ -x "$genefind" ]; then
  echo "\$ genefind motif -o sites.out upstream.fa" >> log.txt
  if ! "$genefind" motif -o sites.out upstream.fa 2> motif_report.txt; then
    echo "demo: genefind motif failed:" >&2
    cat motif_report.txt >&2
    exit 1
  fi
  cat motif_report.txt >> log.txt
  cp ecoli.mod ecoli_gibbs.mod
  run --gibbs sites.out --seq upstream.fa --mod ecoli_gibbs.mod
fi
run --compare compare.txt --source "$genes" --target "$genes"

end=$(date +%s.%N)
genes_in=$(gzip -dcf "$genes" | grep -c . || true)
coding=$(grep -vc '^>' cod.txt || true)
noncoding=$(grep -c . non.txt || true)
regions=$(grep -c '^>' upstream.fa || true)
elapsed=$(awk -v s="$start" -v e="$end" 'BEGIN { printf "%.1f", e - s }')
echo "Trained on E. coli K-12 MG1655 in $elapsed s; the files are in $out:"
echo "  stat.txt         $(value SEQUENCE_SIZE stat.txt) bases, GC $(value GC stat.txt)%"
echo "  cod.txt non.txt  $coding of $genes_in genes as coding training sequences," \
  "$noncoding non-coding stretches"
echo "  chain_*.txt      Markov chains of order 5 (coding: $(grep -c ' ' chain_cod.txt) rows of" \
  "three frames)"
echo "  ecoli.mod        the model: start codons ATG $(value ATG_ ecoli.mod)," \
  "GTG $(value GTG_ ecoli.mod), TTG $(value TTG_ ecoli.mod)"
echo "  upstream.fa      $regions upstream regions of 20 bases, input for a motif finder"
echo "  ecoli_rbs.mod    the model with RBS sections of a fixed 23-base window (motif.log)"
if [ -s sites.out ]; then
  consensus=$(awk '$1 == "consensus" { print $2 }' motif_report.txt)
  spacer=$(awk '$1 == "spacer" && $2 == "most" { print $4 }' motif_report.txt)
  bits=$(sed -n 's/.*(total \([0-9.]*\) bits).*/\1/p' motif_report.txt)
  chance=$(awk '$1 == "by" && $2 == "chance" { print $3 }' motif_report.txt)
  echo "  sites.out        the RBS motif genefind motif found: $consensus, $bits bits" \
    "($chance by chance), most often $spacer bases before the start (motif_report.txt)"
  echo "  ecoli_gibbs.mod  the model with RBS sections made from those sites (--gibbs)"
fi
echo "  compare.txt      the gene set against itself: $(tr '\t' ' ' < compare.txt)" \
  "(both ends, stop end)"
echo "The commands and their messages: log.txt"
