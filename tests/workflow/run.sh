#!/usr/bin/env bash
# Test of the batch training workflow (workflow/Snakefile), `make test-workflow`:
#   run.sh BINARY
# Makes two small genomes from the bundled E. coli genome (two slices of 700 kb with the genes
# that lie wholly inside them, renumbered; one as plain files, one gzip-compressed), a third slice
# of 300 kb without gene set and a gene set without FASTA, runs the workflow on them with
# --cores 2, and checks the models, the predicted genes (their stop codons against the curated
# annotation) and the summary table. Then, in a second folder, checks that a FASTA of two records (the first slice cut
# inside a gene) and an empty one are refused with a message naming the file, that with
# join_contigs the two records give the first slice's model and, on each record, its genes, a
# record of N between two halves of the second slice is kept, a draft of two records without gene
# set is trained on both, and the low_training_share flag on both sides of one half. Then runs the first folder once more through Snakemake's cluster
# executor, with a stand-in for the batch system's submit command, and checks that the results
# are the same.
# Needs Snakemake 7 (Debian package snakemake), installed here when missing and run as root.
# PROFILES="slurm" (or "") limits the cluster runs; KEEP_WORKFLOW_TEST=1 keeps the scratch folder,
# which is also kept after a failure.
set -euo pipefail
repo=$(cd "$(dirname "$0")/../.." && pwd)
bin=$(realpath "${1:-$repo/build/genetrain}")
[ -x "$bin" ] || { echo "FAIL: no executable $bin" >&2; exit 1; }

if ! command -v snakemake > /dev/null; then
  if [ "$(id -u)" -eq 0 ] && command -v apt-get > /dev/null; then
    echo "installing snakemake"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends snakemake > /dev/null
  else
    echo "test-workflow needs Snakemake 7: sudo apt-get install snakemake" >&2
    exit 1
  fi
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/genetrain-workflow.XXXXXX")
keep=${KEEP_WORKFLOW_TEST:-0}
cleanup() { if [ "$keep" = 1 ]; then echo "files kept in $work" >&2; else rm -rf "$work"; fi; }
trap cleanup EXIT
fail() {
  echo "FAIL: $*" >&2
  keep=1
  exit 1
}
cd "$work"

# Two slices of the genome, 1-based first base and length, with their genes moved along.
mkdir genomes
gzip -dc "$repo/examples/ecoli_mg1655.fasta.gz" | tail -n +2 | tr -d '\n\r' > whole.txt
slice() { # name first length
  {
    echo ">$1 E. coli K-12 MG1655 bases $2 to $(($2 + $3 - 1))"
    cut -c "$2-$(($2 + $3 - 1))" whole.txt | fold -w 80
  } > "genomes/$1.fasta"
  gzip -dc "$repo/examples/ecoli_mg1655.genes.gz" | awk -v name="$1" -v off="$(($2 - 1))" \
    -v len="$3" 'BEGIN { OFS = "\t" }
    { l = $3; r = $4; lp = ""; rp = ""
      if (l ~ /^</) { lp = "<"; l = substr(l, 2) }
      if (r ~ /^>/) { rp = ">"; r = substr(r, 2) }
      if (l - off >= 1 && r - off <= len) print name "_" ++n, $2, lp (l - off), rp (r - off), $5, $6 }' \
    > "genomes/$1.genes"
}
slice slice_a 1 700000
slice slice_b 2000001 700000
slice lonely 3000001 300000
mv genomes/lonely.genes genomes/orphan.genes
gzip genomes/slice_b.fasta genomes/slice_b.genes
rm whole.txt

# The stop codons of the curated genes of each slice, as strand and position of the gene's last
# base: the truth the predicted genes are measured against.
while IFS=: read -r genome first length; do
  gzip -dc "$repo/examples/ecoli_mg1655_curated.genes.gz" | awk -v off="$((first - 1))" -v len="$length" \
    '$3 ~ /^[0-9]+$/ && $4 ~ /^[0-9]+$/ && $3 - off >= 1 && $4 - off <= len {
      print ($2 == "+" ? "+" ($4 - off) : "-" ($3 - off)) }' | sort -u > "$genome.curated"
done <<< $'slice_a:1:700000\nslice_b:2000001:700000\nlonely:3000001:300000'
stops() { awk -F'\t' '$3 == "CDS" { print ($7 == "+" ? "+" $5 : "-" $4) }' "$1" | sort -u; }

cat > config.yaml << EOF
genomes: $work/genomes
par: $repo/examples/ecoli.par
genetrain: $bin
genefind: $(dirname "$bin")/genefind
results: $work/local
EOF

start=$(date +%s)
timeout -k 10 600 snakemake -s "$repo/workflow/Snakefile" --directory "$work" \
  --configfile config.yaml --cores 2 > local.log 2>&1 || { tail -30 local.log >&2; fail "the workflow failed (local.log)"; }
grep -q "orphan.genes has no partner" local.log || fail "no message about orphan.genes"
grep -q "lonely.fasta has no gene set; trained without annotation" local.log ||
  fail "no message about lonely.fasta"
[ ! -e local/orphan ] || fail "a gene set without FASTA was taken"

# Models: every section in its order (the RBS sections too, from genefind motif, or found by
# genefind train), the genome's name, chains of order 5 from the parameter file, and of order 4,
# genefind train's choice for 300 kb, without gene set.
sections="PHMM NAME ORDM ATG_ GTG_ TTG_ CTG_ TAA_ TAG_ TGA_ MINC MAXC MAXN NDEC CDEC CDCD CD1P CD2P COD1 COD2 NONC RBSS RBSM RBSL RBSD"
for genome in slice_a:5 slice_b:5 lonely:4; do
  order=${genome#*:} genome=${genome%:*}
  model=local/models/$genome.mod
  [ -s "$model" ] || fail "no model $model"
  found=$(awk '$1 ~ /^[A-Z][A-Z0-9][A-Z0-9][A-Z0-9_]$/ { printf "%s%s", sep, $1; sep = " " }' "$model")
  [ "$found" = "$sections" ] || fail "$model sections: $found"
  [ "$(awk '$1 == "NAME" { print $2 }' "$model")" = "$genome" ] || fail "$model NAME"
  [ "$(awk '$1 == "ORDM" { print $2 }' "$model")" = "$order" ] || fail "$model ORDM is not $order"
  rows=$(awk '$1 == "COD1" { on = 1; next } on && NF != 3 { exit } on { n++ } END { print n + 0 }' "$model")
  [ "$rows" -eq $((4 ** (order + 1))) ] || fail "$model COD1 has $rows rows of three numbers"
done
for genome in slice_a slice_b; do
  [ -s "local/$genome/upstream.fa" ] || fail "no upstream regions of $genome"
  [ ! -e "local/$genome/train.log" ] || fail "$genome, which has a gene set, went through genefind train"
done
[ -s local/lonely/train.log ] || fail "no training log of lonely"
[ ! -e local/lonely/cod.txt ] && [ ! -e local/lonely/upstream.fa ] ||
  fail "lonely, which has no gene set, went through the supervised steps"

# Predictions of every genome: most stop codons of the curated genes found, and few that are not
# among them, with or without the gene set in training.
for genome in slice_a slice_b lonely; do
  gff=local/$genome/genes.gff
  [ -s "$gff" ] || fail "no predicted genes of $genome"
  stops "$gff" > "$genome.predicted"
  read -r curated predicted shared <<< "$(wc -l < "$genome.curated") $(wc -l < "$genome.predicted") \
    $(comm -12 "$genome.curated" "$genome.predicted" | wc -l)"
  [ $((100 * shared)) -ge $((95 * curated)) ] ||
    fail "$genome: $shared of $curated curated stop codons predicted"
  [ $((100 * shared)) -ge $((90 * predicted)) ] ||
    fail "$genome: $shared of $predicted predicted stop codons curated"
  echo "  $genome: $shared of $curated curated genes' stop codons among $predicted predicted genes"
done

# The RBS sections come from genefind motif and --gibbs, with no warning. A rerun of that step
# starts again from the model without them, so they are never appended twice: the same bytes.
for genome in slice_a slice_b; do
  grep -q '^  consensus  *[ACGT]\{6\}$' "local/$genome/motif_report.txt" ||
    fail "no motif consensus for $genome"
  cp "local/models/$genome.mod" "$genome.first.mod"
done
timeout -k 10 600 snakemake -s "$repo/workflow/Snakefile" --directory "$work" \
  --configfile config.yaml --cores 2 --forcerun rbs > rerun.log 2>&1 ||
  { tail -30 rerun.log >&2; fail "the rerun of the rbs step failed (rerun.log)"; }
for genome in slice_a slice_b; do
  cmp -s "$genome.first.mod" "local/models/$genome.mod" || fail "a rerun changed $genome's model"
done

# Summary: a header and one row per genome, in name order.
summary=local/summary.tsv
[ -s "$summary" ] || fail "no $summary"
header=$(head -1 "$summary")
[ "$header" = "$(printf 'genome\tbases\tgc\tgenes\tgenes_used\tatg\tgtg\tttg\tctg\tlow_training_share\tgenes_predicted\ttraining_rounds')" ] ||
  fail "summary header: $header"
[ "$(wc -l < "$summary")" -eq 4 ] || fail "summary has $(wc -l < "$summary") lines"
[ "$(cut -f1 "$summary" | tail -n +2 | tr '\n' ' ')" = "lonely slice_a slice_b " ] ||
  fail "summary genomes: $(cut -f1 "$summary" | tr '\n' ' ')"
while IFS=$'\t' read -r genome bases gc genes used atg gtg ttg ctg low predicted rounds extra; do
  [ -z "$extra" ] || fail "$genome: more than 12 columns"
  file=genomes/$genome.fasta
  [ -e "$file" ] || file=$file.gz
  if [ "$genome" = lonely ]; then expected_bases=300000; else expected_bases=700000; fi
  [ "$bases" -eq "$expected_bases" ] || fail "$genome: $bases bases"
  expected_gc=$(gzip -dcf "$file" > plain.fa && "$bin" --gc "" --seq plain.fa --GC_PRECISION 2 --GC_LABEL "")
  [ "$gc" = "$expected_gc" ] || fail "$genome: GC $gc, --gc says $expected_gc"
  [ "$predicted" -eq "$(wc -l < "$genome.predicted")" ] ||
    fail "$genome: $predicted genes predicted, genes.gff has $(wc -l < "$genome.predicted") stop codons"
  if [ "$genome" = lonely ]; then
    # Without gene set: the genes of genefind train's last round and those that trained its
    # chains, and the number of its rounds: the initial one and at least one more.
    log=local/lonely/train.log
    [ "$rounds" -eq "$(grep -c '^round [0-9]* (' "$log")" ] || fail "lonely: $rounds rounds, $log says otherwise"
    [ "$rounds" -ge 2 ] || fail "lonely: $rounds rounds of training"
    [ "$(grep '^round ' "$log" | tail -n 1 | cut -d' ' -f4,6)" = "$genes $used" ] ||
      fail "lonely: $genes genes and $used used, not those of the last round in $log"
    # The gene set training settles on is the one its model predicts, give or take 2 %.
    [ $((50 * (genes - predicted))) -le "$genes" ] && [ $((50 * (predicted - genes))) -le "$genes" ] ||
      fail "lonely: $genes genes in the last round of training, $predicted predicted"
    # Found without annotation, the starts are less sure than those of the curated genes.
    starts_ok='a > 0.6 && g > 0 && t > 0'
  else
    [ "$rounds" = 0 ] || fail "$genome: $rounds rounds of training with a gene set"
    expected_genes=$(gzip -dcf "genomes/$genome.genes"* | wc -l)
    [ "$genes" -eq "$expected_genes" ] || fail "$genome: $genes genes, the set has $expected_genes"
    starts_ok='a > 0.8 && g > t'
  fi
  if [ "$used" -le $((genes / 2)) ] || [ "$used" -gt "$genes" ]; then
    fail "$genome: $used of $genes genes used"
  fi
  awk -v a="$atg" -v g="$gtg" -v t="$ttg" -v c="$ctg" \
    "BEGIN { s = a + g + t + c; exit !(s > 0.9975 && s < 1.0025 && $starts_ok && c == 0) }" ||
    fail "$genome: start codon fractions $atg $gtg $ttg $ctg"
  [ "$low" = no ] || fail "$genome: low_training_share $low with $used of $genes genes used"
  echo "  $genome: $bases bases, GC $gc, $used of $genes genes used, ATG $atg GTG $gtg TTG $ttg," \
    "$predicted predicted, $rounds rounds"
done < <(tail -n +2 "$summary")
local_time=$(($(date +%s) - start))

# A second folder. joined: slice_a as two records, cut in the middle of a gene of 600 bases or
# more, with slice_a's gene set, whose positions count along the records read in order.
# gapped: slice_b as three records, the middle one 12 N, cut between genes, with slice_b's genes
# after the cut moved by 12 (dropping the N record would shift them back and change their bases).
# half_used and under_half: slice_a with its genes and partial copies of them, which training
# turns away, so that exactly half of the genes, or one gene fewer than half, are used.
# empty: a FASTA without sequence. draft: lonely as two records, without gene set. tiny: 2 kb of
# slice_a without gene set, too little for genefind train.
start=$(date +%s)
mkdir more
row_a=$(awk -F'\t' '$1 == "slice_a"' "$summary")
genes_a=$(cut -f4 <<< "$row_a")
used_a=$(cut -f5 <<< "$row_a")
cut_at=$(awk '$3 ~ /^[0-9]+$/ && $4 ~ /^[0-9]+$/ && $3 > 300000 && $4 - $3 >= 600 {
  print int(($3 + $4) / 2); exit }' genomes/slice_a.genes)
tail -n +2 genomes/slice_a.fasta | tr -d '\n' > slice_a.txt
{
  echo ">part_1 bases 1 to $cut_at of slice_a"
  head -c "$cut_at" slice_a.txt | fold -w 60
  echo
  echo ">part_2 bases $((cut_at + 1)) to 700000 of slice_a"
  tail -c +$((cut_at + 1)) slice_a.txt | fold -w 70
  echo
} | gzip > more/joined.fasta.gz
rm slice_a.txt
cp genomes/slice_a.genes more/joined.genes
gap_at=$(gzip -dc genomes/slice_b.genes.gz | tr -d '<>' | sort -k3,3n |
  awk '!at && $3 > 300000 && $3 > reach + 1 { at = reach } $4 > reach { reach = $4 } END { print at }')
[ "$gap_at" -gt 0 ] || fail "no room between the genes of slice_b"
gzip -dc genomes/slice_b.fasta.gz | tail -n +2 | tr -d '\n' > slice_b.txt
{
  echo ">part_1"
  head -c "$gap_at" slice_b.txt | fold -w 80
  printf '\n>gap\nNNNNNNNNNNNN\n>part_2\n'
  tail -c +$((gap_at + 1)) slice_b.txt | fold -w 80
} > more/gapped.fasta
rm slice_b.txt
gzip -dc genomes/slice_b.genes.gz | awk -v at="$gap_at" 'BEGIN { OFS = "\t" }
  { l = $3; r = $4; lp = ""; rp = ""
    if (l ~ /^</) { lp = "<"; l = substr(l, 2) }
    if (r ~ /^>/) { rp = ">"; r = substr(r, 2) }
    if (l > at) { l += 12; r += 12 }
    $3 = lp l; $4 = rp r; print }' > more/gapped.genes
grep -v '^>' genomes/lonely.fasta | tr -d '\n' > lonely.txt
{
  echo ">draft_1"
  head -c 150000 lonely.txt | fold -w 80
  printf '\n>draft_2\n'
  tail -c +150001 lonely.txt | fold -w 80
} > more/draft.fasta
rm lonely.txt
: > more/empty.fasta
{ head -n 1 genomes/slice_a.fasta; sed -n 2,26p genomes/slice_a.fasta; } > more/tiny.fasta
cp genomes/slice_a.genes more/empty.genes
partial_copies() { # count: the first count genes of slice_a, open at the left end
  head -n "$1" genomes/slice_a.genes | awk 'BEGIN { OFS = "\t" }
    { $1 = "partial_" NR; if ($3 !~ /^</) $3 = "<" $3; print }'
}
for genome in half_used under_half; do cp genomes/slice_a.fasta "more/$genome.fasta"; done
{ cat genomes/slice_a.genes; partial_copies $((2 * used_a - genes_a)); } > more/half_used.genes
{ cat genomes/slice_a.genes; partial_copies $((2 * used_a - genes_a + 1)); } > more/under_half.genes
[ "$(wc -l < more/under_half.genes)" -eq $((2 * used_a + 1)) ] || fail "under_half.genes has $(wc -l < more/under_half.genes) genes"

if timeout -k 10 600 snakemake -s "$repo/workflow/Snakefile" --directory "$work" --configfile config.yaml \
  --config genomes="$work/more" results="$work/more-out" --cores 2 --keep-going > refused.log 2>&1; then
  fail "the workflow took a genome of two records and an empty one (refused.log)"
fi
grep -qF "$work/more/joined.fasta.gz holds 2 records" refused.log || { tail -30 refused.log >&2; fail "no message naming joined.fasta.gz"; }
grep -F "$work/more/joined.fasta.gz holds 2 records" refused.log | grep -q "Split it" || fail "the message does not say to split the file"
grep -F "$work/more/joined.fasta.gz holds 2 records" refused.log | grep -q "join_contigs: true" || fail "the message does not name join_contigs"
grep -qF "$work/more/joined.fasta.gz holds 2 records" more-out/logs/joined.unpack.log || fail "the message is not in joined.unpack.log"
grep -qF "$work/more/empty.fasta holds no sequence" refused.log || fail "no message naming empty.fasta"
grep -q "holds 2000 bases; genefind train needs at least 20000" more-out/logs/tiny.train.log ||
  fail "tiny.train.log does not say why tiny was refused"
[ ! -e more-out/models/tiny.mod ] || fail "a model of tiny was made"
[ ! -e more-out/models/joined.mod ] || fail "a model of joined was made without join_contigs"
[ ! -e more-out/summary.tsv ] || fail "a summary was made although genomes were refused"
ls more-out/joined/unpack.* > /dev/null 2>&1 && fail "unpack left its scratch files"
for genome in half_used under_half draft; do
  [ -s "more-out/models/$genome.mod" ] || fail "no model of $genome (--keep-going)"
done
# Without gene set, a genome of several records is trained on them as they are, also without
# join_contigs.
grep -q "kept 2 records, 300000 bases" more-out/logs/draft.unpack.log || fail "draft.unpack.log does not tell its records"

rm more/empty.* more/tiny.fasta
timeout -k 10 600 snakemake -s "$repo/workflow/Snakefile" --directory "$work" --configfile config.yaml \
  --config genomes="$work/more" results="$work/more-out" join_contigs=true --cores 2 > joined.log 2>&1 ||
  { tail -30 joined.log >&2; fail "the workflow failed with join_contigs=true (joined.log)"; }
grep -q "joined 2 records, 700000 bases" more-out/logs/joined.unpack.log || fail "joined.unpack.log does not tell the join"
# One sequence, the same bases, the same genes: the same model but for its NAME.
cmp -s <(awk '$1 != "NAME"' local/models/slice_a.mod) <(awk '$1 != "NAME"' more-out/models/joined.mod) ||
  fail "the model of the joined records differs from slice_a's"
[ "$(awk '$1 == "NAME" { print $2 }' more-out/models/joined.mod)" = joined ] || fail "joined.mod NAME"
cmp -s local/slice_a/cod.txt more-out/joined/cod.txt || fail "the training genes of joined differ from slice_a's"
# Its genes are predicted on the records as given, each under its name and counted from its own
# first base. With the same model, the genes away from the cut are slice_a's, moved by the cut.
away() { # gff record shift: the genes of the record at least 3 kb from either end of the cut
  awk -F'\t' -v rec="$2" -v shift="$3" -v cut="$cut_at" '$3 == "CDS" && $1 == rec {
    l = $4 + shift; r = $5 + shift
    if (r < cut - 3000 || l > cut + 3000) print $7, l, r }' "$1"
}
[ "$(away more-out/joined/genes.gff part_1 0; away more-out/joined/genes.gff part_2 "$cut_at")" = \
  "$(away local/slice_a/genes.gff slice_a 0)" ] || fail "the genes of joined's records differ from slice_a's"
[ "$(away local/slice_a/genes.gff slice_a 0 | wc -l)" -gt 600 ] || fail "too few genes of slice_a to compare"
grep -q "joined 3 records, 700012 bases" more-out/logs/gapped.unpack.log || fail "gapped.unpack.log does not tell the join"
cmp -s local/slice_b/cod.txt more-out/gapped/cod.txt || fail "the training genes of gapped differ from slice_b's"
summary=more-out/summary.tsv
[ "$(head -1 "$summary")" = "$header" ] || fail "$summary header: $(head -1 "$summary")"
[ "$(cut -f1 "$summary" | tail -n +2 | tr '\n' ' ')" = "draft gapped half_used joined under_half " ] ||
  fail "$summary genomes: $(cut -f1 "$summary" | tr '\n' ' ')"
# All but the genes predicted, which the cut may add to or take from.
[ "$(awk -F'\t' '$1 == "joined"' "$summary" | cut -f2-10,12)" = "$(cut -f2-10,12 <<< "$row_a")" ] ||
  fail "joined's summary row differs from slice_a's"
row_b=$(awk -F'\t' '$1 == "slice_b"' local/summary.tsv)
[ "$(awk -F'\t' '$1 == "gapped"' "$summary" | cut -f2,4,5)" = "$(printf '700012\t%s' "$(cut -f4,5 <<< "$row_b")")" ] ||
  fail "gapped's summary row: $(awk -F'\t' '$1 == "gapped"' "$summary")"
while IFS=$'\t' read -r genome bases gc genes used atg gtg ttg ctg low predicted rounds; do
  if [ "$genome" = draft ]; then
    [ "$bases" -eq 300000 ] && [ "$rounds" -ge 2 ] && [ "$predicted" -gt 200 ] ||
      fail "draft's summary row: $bases bases, $rounds rounds, $predicted genes predicted"
    [ "$(awk -F'\t' '$3 == "CDS" { print $1 }' more-out/draft/genes.gff | sort -u | tr '\n' ' ')" = "draft_1 draft_2 " ] ||
      fail "draft's genes are not on its two records"
    continue
  fi
  case $genome in
    half_used) want_genes=$((2 * used_a)) want_low=no ;;
    under_half) want_genes=$((2 * used_a + 1)) want_low=yes ;;
    *) continue ;;
  esac
  [ "$genes" -eq "$want_genes" ] || fail "$genome: $genes genes, the set has $want_genes"
  [ "$used" -eq "$used_a" ] || fail "$genome: $used genes used, slice_a's $used_a"
  [ "$low" = "$want_low" ] || fail "$genome: low_training_share $low with $used of $genes genes used"
  echo "  $genome: $used of $genes genes used, low_training_share $low"
done < <(tail -n +2 "$summary")
echo "  joined: 2 records cut at base $cut_at refused, then joined to slice_a's model;" \
  "gapped: 12 N between bases $gap_at and $((gap_at + 1)) of slice_b, the same training genes"
more_time=$(($(date +%s) - start))
times=""

# The same on a SLURM cluster, through the two profiles of workflow/profiles: stand-ins for
# sbatch, sacct, srun and the rest (tests/workflow/fake-slurm) run every batch job in the
# background on this machine. The profiles are used as they stand (CI=true only makes
# Snakemake's generic cluster executor look at its jobs every second instead of every ten).
export PATH=$repo/tests/workflow/fake-slurm:$PATH FAKE_SLURM_STATE=$work/slurm-state
export USER=${USER:-$(id -un)}
for profile in ${PROFILES:-slurm sbatch}; do
  start=$(date +%s)
  CI=true timeout -k 10 600 snakemake -s "$repo/workflow/Snakefile" --directory "$work" --configfile config.yaml \
    --config results="$work/$profile" --profile "$repo/workflow/profiles/$profile" \
    --latency-wait 5 > "$profile.log" 2>&1 ||
    { tail -30 "$profile.log" >&2; fail "the workflow failed with the $profile profile ($profile.log)"; }
  [ "$(find "$FAKE_SLURM_STATE" -name '[0-9]*' | wc -l)" -ge 10 ] || fail "$profile: no batch job was submitted"
  grep -L COMPLETED "$FAKE_SLURM_STATE"/[0-9]* | grep -q . && fail "$profile: a batch job failed"
  rm -rf "$FAKE_SLURM_STATE"
  cmp -s local/summary.tsv "$profile/summary.tsv" || fail "$profile: the summaries differ"
  for genome in slice_a slice_b lonely; do
    cmp -s "local/models/$genome.mod" "$profile/models/$genome.mod" ||
      fail "$profile: the models of $genome differ"
    cmp -s "local/$genome/genes.gff" "$profile/$genome/genes.gff" ||
      fail "$profile: the predicted genes of $genome differ"
  done
  times="$times, $profile profile $(($(date +%s) - start)) s"
done
echo "workflow: 3 models, their genes and the summary (local ${local_time} s, contigs and low_training_share ${more_time} s$times): as expected"
