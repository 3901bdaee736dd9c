#!/usr/bin/env bash
# End to end on the bundled E. coli genome and gene set: a model of order 5, combined with
# itself; upstream regions, a motif-finder output made from them, the RBS sections appended to
# the model, and a combination that keeps them.
#   real_model.sh BINARY EXAMPLES_DIR MAKE_GIBBS_OUTPUT
set -euo pipefail
bin=$(realpath "$1")
examples=$(realpath "$2")
make_gibbs=$(realpath "$3")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
gzip -dc "$examples/ecoli_mg1655.fasta.gz" > genome.fa
gzip -dc "$examples/ecoli_mg1655.genes.gz" > genes.txt

fail() {
  echo "FAIL: $*"
  exit 1
}
# The rows of a section: the lines after its label up to the next empty line or label.
section() {
  awk -v key="$1" '$1 == key { on = 1; next } on && (NF == 0 || $1 ~ /^[A-Z0-9]{3}[A-Z0-9_]$/) { exit } on' "$2"
}

"$bin" --mkmod model.mod --par "$examples/ecoli.par" --seq genome.fa --geneset genes.txt \
  > mkmod.out || fail "--mkmod exit status $?"
[ ! -s mkmod.out ] || fail "--mkmod printed: $(head -3 mkmod.out)"

# ATG starts 3,911 of the 4,313 complete genes (GTG 327, TTG 75); most are long enough to train.
atg=$(awk '$1 == "ATG_" { print $2 }' model.mod)
awk -v p="$atg" 'BEGIN { exit !(p > 0.88 && p < 0.93) }' || fail "ATG_ probability $atg"
for key in COD1 COD2; do
  rows=$(section "$key" model.mod | awk 'NF == 3' | wc -l)
  [ "$rows" -eq 4096 ] || fail "$key has $rows rows of three numbers"
  section "$key" model.mod | awk '{ for (f = 1; f <= 3; f++) s[f] += $f }
    END { for (f = 1; f <= 3; f++) if (s[f] < 0.99 || s[f] > 1.01) exit 1 }' ||
    fail "$key frames do not sum to 1"
done
[ "$(section NONC model.mod | awk 'NF == 1' | wc -l)" -eq 4096 ] || fail "NONC rows"
cmp -s <(section COD1 model.mod) <(section COD2 model.mod) || fail "COD2 differs from COD1"
# GC of the words' last letters: about 0.56 at the third codon position (frame 0 at order 5
# with the start codon skipped: the last letter of the first word is the gene's 9th base), 0.43
# between genes.
gc3=$(section COD1 model.mod | awk '{ if ((NR - 1) % 4 == 1 || (NR - 1) % 4 == 2) s += $1 } END { print s }')
awk -v g="$gc3" 'BEGIN { exit !(g > 0.54 && g < 0.58) }' || fail "third-position GC $gc3"
gcn=$(section NONC model.mod | awk '{ if ((NR - 1) % 4 == 1 || (NR - 1) % 4 == 2) s += $1 } END { print s }')
awk -v g="$gcn" 'BEGIN { exit !(g > 0.41 && g < 0.45) }' || fail "non-coding GC $gcn"

"$bin" --combine combined.mod --first model.mod --second model.mod --first_NON 1 ||
  fail "--combine exit status $?"
cmp -s <(grep -v '^$' model.mod) <(grep -v '^$' combined.mod) ||
  fail "the combined model differs from the model beyond its empty lines"

# Upstream regions of 20 bases, a motif site of 6 bases at 8..13 in every region.
"$bin" --pre_start regions.fa --seq genome.fa --geneset genes.txt --PRE_START_WIDTH 20 \
  --PRE_START_RELATIVE_POS 0 --PRE_START_INTERGENIC 0 --TAA_ 1 --TAG_ 1 --TGA_ 1 ||
  fail "--pre_start exit status $?"
regions=$(grep -c '^>' regions.fa)
[ "$regions" -gt 3000 ] || fail "only $regions upstream regions"
bash "$make_gibbs" motif 6 8 regions.fa > sites.out
"$bin" --gibbs sites.out --seq regions.fa --mod model.mod --log rbs.log > gibbs.out ||
  fail "--gibbs exit status $?"
[ "$(awk '$1 == "RBSS" { print $2 }' model.mod)" = 6 ] || fail "RBSS"
[ "$(awk '$1 == "RBSL" { print $2 }' model.mod)" = 15 ] || fail "RBSL"
[ "$(section RBSM model.mod | wc -l)" -eq 6 ] || fail "RBSM rows"
[ "$(section RBSD model.mod | wc -l)" -eq 15 ] || fail "RBSD rows"

"$bin" --combine with_rbs.mod --first model.mod --second model.mod --first_NON 1 ||
  fail "--combine with RBS exit status $?"
cmp -s <(grep -v '^$' model.mod) <(grep -v '^$' with_rbs.mod) ||
  fail "the combined model lost or changed its RBS sections"
echo "ATG_ $atg, $regions upstream regions: model, RBS sections and combination as expected"
