#!/usr/bin/env bash
# genefind predict on the bundled E. coli genome, with a model that genetrain builds from the
# curated gene set: the accuracy floors against that set, genometools' GFF3 validator, and the
# same bytes for one thread and four (and through standard input) on the 156-contig draft.
#   predict_real.sh GENEFIND GENETRAIN EXAMPLES_DIR BENCH_DIR
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
genefind=$(realpath "$1")
genetrain=$(realpath "$2")
examples=$(realpath "$3")
bench=$(realpath "$4")
# shellcheck source=tests/e2e/common.sh
source "$here/common.sh"
enter_scratch

# The core's readers take the gzip files as they are.
"$genetrain" --mkmod ecoli.mod --par "$examples/ecoli.par" --seq "$examples/ecoli_mg1655.fasta.gz" \
  --geneset "$examples/ecoli_mg1655_curated.genes.gz" > /dev/null

"$genefind" predict -q -m ecoli.mod -o ecoli.gff --proteins ecoli.faa \
  "$examples/ecoli_mg1655.fasta.gz"
report=$(python3 "$bench/gene_accuracy.py" "$examples/ecoli_mg1655_curated.genes.gz" ecoli.gff genefind)
echo "$report"
# Floors a little below the figures of today's finder (96.9, 96.9, 79.1 %).
accuracy_floors "$report" 96.5 96.5 78.5
# The best gene set holds every chosen gene, so none has less than even odds against another
# start of its stop (a longer start that scores more alone but pushes out a neighbour is not
# a better set).
low=$(awk -F'\t' '$3 == "CDS" { match($9, /conf=[0-9.]+/); c = substr($9, RSTART + 5, RLENGTH - 5)
  if (c + 0 < 50) print $4 ".." $5 " " $7 " conf " c }' ecoli.gff)
[ -z "$low" ] || fail "chosen genes below even confidence: $(echo "$low" | head -3)"
# A gene runs from its start to the first stop of its frame: no translation holds a stop.
if grep -v '^>' ecoli.faa | tr -d '\n' | grep -q '\*'; then fail "a protein holds a stop (*)"; fi

# shellcheck source=tests/e2e/gff3_valid.sh
source "$here/gff3_valid.sh"
gff3_valid ecoli.gff predict

# Records predicted side by side come out in input order, byte for byte as with one thread.
contigs=$examples/ecoli_mg1655_contigs.fasta.gz
[ "$(gzip -dc "$contigs" | grep -c '^>')" -gt 100 ] || fail "the draft has too few records"
"$genefind" predict -q -m ecoli.mod -t 1 -o one.gff --proteins one.faa --nucleotides one.fna \
  "$contigs"
"$genefind" predict -q -m ecoli.mod -t 4 -o four.gff --proteins four.faa --nucleotides four.fna \
  "$contigs"
gzip -dc "$contigs" | "$genefind" predict -q -m ecoli.mod --threads 3 - > piped.gff
for kind in gff faa fna; do
  cmp one.$kind four.$kind || fail "-t 1 and -t 4 differ in the $kind output"
done
cmp one.gff piped.gff || fail "standard input with 3 threads differs from the file with 1"
[ "$(grep -c '^##sequence-region' one.gff)" -eq "$(gzip -dc "$contigs" | grep -c '^>')" ] ||
  fail "not every record has its sequence-region line"
echo "predict_real: ok"
