#!/usr/bin/env bash
# genefind train and run on the bundled E. coli genome:
# - train -g on the curated genes gives the chains and start values of genetrain --mkmod with
#   examples/ecoli.par on the same genes (the same estimators, the same settings);
# - run with no annotation reaches the accuracy floors against the curated genes, keeps a
#   complete model that genetrain --combine reads back, gives the same model twice, and calls
#   the genes that predict calls with the kept model;
# - --log holds one line per round, and nothing goes to standard error instead.
#   run_real.sh GENEFIND GENETRAIN EXAMPLES_DIR BENCH_DIR
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
genefind=$(realpath "$1")
genetrain=$(realpath "$2")
examples=$(realpath "$3")
bench=$(realpath "$4")
# shellcheck source=tests/e2e/common.sh
source "$here/common.sh"
enter_scratch
genome=$examples/ecoli_mg1655.fasta.gz
curated=$examples/ecoli_mg1655_curated.genes.gz

# One file per section of a model, named after its key (COD1, RBSS, ...), in folder $2.
split_model() {
  mkdir -p "$2"
  awk -v dir="$2" '/^[A-Z][A-Z0-9_][A-Z0-9_][A-Z0-9_]( |$)/ { key = $1 } { print > (dir "/" key) }' "$1"
}

# Supervised: the genome is given plain, since genetrain --mkmod is the reference here and both
# read the same bytes.
gzip -dc "$genome" > genome.fa
"$genefind" train -q -g "$curated" --order 5 --no-motif -o supervised.mod genome.fa
"$genetrain" --mkmod reference.mod --par "$examples/ecoli.par" --seq genome.fa --geneset "$curated" \
  > /dev/null
split_model supervised.mod sup
split_model reference.mod ref
for key in ORDM COD1 COD2 NONC ATG_ GTG_ TTG_ CTG_ TAA_ TAG_ TGA_; do
  [ -s "ref/$key" ] || fail "genetrain --mkmod wrote no $key section"
  cmp -s "ref/$key" "sup/$key" || fail "train -g and genetrain --mkmod differ in $key"
done
[ ! -e sup/RBSS ] || fail "--no-motif still wrote RBS sections"
# run -g calls the genes with the model it trained, as predict does with that model.
"$genefind" run -q -g "$curated" --order 5 --no-motif -o supervised_run.gff genome.fa
"$genefind" predict -q -m supervised.mod -o supervised_predict.gff genome.fa
cmp -s supervised_run.gff supervised_predict.gff ||
  fail "run -g and predict with the model of train -g call different genes"

# Unsupervised, from genome to genes.
"$genefind" run -q --model-out run.mod -o run.gff "$genome"
report=$(python3 "$bench/gene_accuracy.py" "$curated" run.gff "genefind run")
echo "$report"
# Floors a little below today's figures (97.3, 96.0, 80.2 %).
accuracy_floors "$report" 96.8 95.5 79.5

split_model run.mod model
for key in PHMM NAME ORDM ATG_ GTG_ TTG_ CTG_ TAA_ TAG_ TGA_ MINC MAXC MAXN NDEC CDEC CDCD \
  CD1P CD2P COD1 COD2 NONC RBSS RBSM RBSL RBSD; do
  [ -s "model/$key" ] || fail "the model lacks its $key section"
done
[ "$(ls model | wc -l)" -eq 25 ] || fail "the model has sections beyond the 25: $(ls model)"
grep -qx 'ORDM 4' run.mod || fail "a 4.6 Mb genome is not trained with order 4"
grep -qx 'TGA_ 1' run.mod || fail "E. coli is not read with code 11"

"$genetrain" --combine combined.mod --first run.mod --second run.mod --first_NON 1 ||
  fail "genetrain --combine rejects the trained model"
cmp -s <(grep -v '^$' run.mod) <(grep -v '^$' combined.mod) ||
  fail "the trained model does not read back unchanged through genetrain --combine"

# run is train, then predict with that model.
"$genefind" predict -q -m run.mod -o predicted.gff "$genome"
cmp -s run.gff predicted.gff || fail "run and predict with the kept model call different genes"

# Stability: the sampler is seeded, so a second run trains the same model; its log tells the
# rounds, one line each, numbered from 1.
mkdir again
"$genefind" train --log train.log -o again/run.mod "$genome" 2> train.err
cmp -s run.mod again/run.mod || fail "a second training gives another model"
[ ! -s train.err ] || fail "with --log the rounds still go to standard error: $(head -2 train.err)"
rounds=$(grep -c '^round ' train.log || true)
[ "$rounds" -ge 2 ] || fail "the log holds $rounds round lines"
[ "$rounds" -le 10 ] || fail "the log holds $rounds rounds, beyond the default cap of 10"
numbers=$(sed -n 's/^round \([0-9]*\) .*/\1/p' train.log | tr '\n' ' ')
[ "$numbers" = "$(seq -s ' ' 1 "$rounds") " ] || fail "round lines out of order: $numbers"
# The cap holds: two rounds at most give two lines.
"$genefind" train --log capped.log --rounds 2 --no-motif -o capped.mod "$genome"
[ "$(grep -c '^round ' capped.log)" -eq 2 ] || fail "--rounds 2 logs $(grep -c '^round ' capped.log) rounds"

# The minimum of 20,000 bases admits a genome of exactly that many, and a draft whose records
# hold that many together (the refusals below it are golden cases in tests/cli/).
grep -v '^>' genome.fa | tr -d '\n' > letters.txt
head -c 20000 letters.txt > first.txt
{ echo ">first"; fold -w 60 first.txt; } > small.fa
{ echo ">half1"; head -c 10000 first.txt | fold -w 60; echo ">half2"; tail -c 10000 first.txt |
  fold -w 60; } > draft.fa
for small in small draft; do
  "$genefind" train -q -o "$small.mod" "$small.fa" || fail "train refuses $small.fa of 20,000 bases"
  grep -qx 'ORDM 3' "$small.mod" || fail "a 20,000-base genome is not trained with order 3"
done

# shellcheck source=tests/e2e/gff3_valid.sh
source "$here/gff3_valid.sh"
gff3_valid run.gff run
echo "run_real: ok"
