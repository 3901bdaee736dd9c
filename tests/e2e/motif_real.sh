#!/usr/bin/env bash
# End to end on the bundled E. coli genome and curated gene set: upstream regions from
# genetrain --pre_start, the ribosome binding sites that genefind motif finds in them, and the
# RBS sections genetrain --gibbs appends from its output to a model.
#   motif_real.sh GENEFIND GENETRAIN EXAMPLES_DIR
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
genefind=$(realpath "$1")
genetrain=$(realpath "$2")
examples=$(realpath "$3")
# shellcheck source=tests/e2e/common.sh
source "$here/common.sh"
enter_scratch
gzip -dc "$examples/ecoli_mg1655.fasta.gz" > genome.fa
gzip -dc "$examples/ecoli_mg1655_curated.genes.gz" > genes.txt

section() {
  awk -v key="$1" '$1 == key { on = 1; next } on && (NF == 0 || $1 ~ /^[A-Z0-9]{3}[A-Z0-9_]$/) { exit } on' "$2"
}

"$genetrain" --mkmod model.mod --par "$examples/ecoli.par" --seq genome.fa --geneset genes.txt \
  > mkmod.out || fail "--mkmod exit status $?"
"$genetrain" --pre_start regions.fa --par "$examples/ecoli.par" --seq genome.fa \
  --geneset genes.txt --PRE_START_WIDTH 20 || fail "--pre_start exit status $?"
regions=$(grep -c '^>' regions.fa)
[ "$regions" -gt 2000 ] || fail "only $regions upstream regions"

"$genefind" motif -o sites.out regions.fa 2> report.txt || fail "motif exit status $?"
"$genefind" motif -q -o again.out regions.fa || fail "second motif exit status $?"
cmp -s sites.out again.out || fail "two runs with the default seed differ"
"$genefind" motif --seed 99 -o other.out regions.fa 2> other.txt || fail "--seed 99 exit status"
"$genefind" motif --seed 2 -o /dev/null regions.fa 2> seed2.txt || fail "--seed 2 exit status"
"$genefind" motif --seed 3 -o /dev/null regions.fa 2> seed3.txt || fail "--seed 3 exit status"

# One line per region, numbered in input order, and the site, flanks and both positions are
# the region's own letters: checked against the FASTA file, not against the program's tables.
awk 'NR == FNR { if ($0 ~ /^>/) n++; else seq[n] = seq[n] $0; next }
     /^ *[0-9]+- / {
       m = split($0, t, /[- ]+/); i = 0
       for (k = 1; k <= m; k++) if (t[k] != "") tok[++i] = t[k]
       if (tok[1] != ++line) { print "line " line " numbered " tok[1]; bad = 1 }
       start = tok[3]; hasLeft = i == 7 || start != 1
       site = hasLeft ? tok[5] : tok[4]
       end = tok[i]
       if (substr(seq[line], start, end - start + 1) != site || length(site) != 6) {
         print "region " line ": site " site " at " start ".." end; bad = 1
       }
       if (hasLeft && toupper(tok[4]) != substr(seq[line], start - length(tok[4]), length(tok[4]))) {
         print "region " line ": left flank " tok[4]; bad = 1
       }
     }
     END { if (line != n) { print line " site lines for " n " regions"; bad = 1 }; exit bad }' \
  regions.fa sites.out > check.txt || fail "site lines: $(head -3 check.txt)"

"$genetrain" --gibbs sites.out --seq regions.fa --mod model.mod > gibbs.out ||
  fail "--gibbs exit status $?"
[ ! -s gibbs.out ] || fail "--gibbs printed: $(head -3 gibbs.out)"
for key in RBSS RBSM RBSL RBSD; do
  [ "$(grep -c "^$key" model.mod)" -eq 1 ] || fail "$key not once in the model"
done
[ "$(awk '$1 == "RBSS" { print $2 }' model.mod)" = 6 ] || fail "RBSS"
[ "$(awk '$1 == "RBSL" { print $2 }' model.mod)" = 15 ] || fail "RBSL"
[ "$(section RBSM model.mod | wc -l)" -eq 6 ] || fail "RBSM rows"
[ "$(section RBSD model.mod | wc -l)" -eq 15 ] || fail "RBSD rows"

# The Shine-Dalgarno motif, framed on GGAG or GAGG, whatever the seed, 5 to 10 bases before the
# start codon, with several bits of information and well above what shuffled letters give.
for file in report.txt other.txt seed2.txt seed3.txt; do
  consensus=$(awk '$1 == "consensus" { print $2 }' "$file")
  spacer=$(awk '$1 == "spacer" && $2 == "most" { print $4 }' "$file")
  bits=$(sed -n 's/.*(total \([0-9.]*\) bits).*/\1/p' "$file")
  case $consensus in
    *GGAG* | *GAGG*) ;;
    *) fail "consensus $consensus in $file" ;;
  esac
  [ "$spacer" -ge 5 ] && [ "$spacer" -le 10 ] || fail "most frequent spacer $spacer in $file"
  awk -v b="$bits" 'BEGIN { exit !(b > 3) }' || fail "$bits bits in $file"
  chance=$(sed -n 's/.*by chance *\([0-9.]*\) bits.*/\1/p' "$file")
  awk -v b="$bits" -v c="$chance" 'BEGIN { exit !(b > c + 2) }' || fail "$bits bits, $chance by chance, in $file"
  share=$(sed -n 's/.*share of regions with a site \([0-9.]*\);.*/\1/p' "$file")
  awk -v s="$share" 'BEGIN { exit !(s >= 0.4 && s <= 0.8) }' || fail "share with a site $share in $file"
done
echo "$regions regions: consensus $consensus, spacer $spacer, $bits bits, share with a site" \
  "$share; --gibbs took the sites"
