#!/usr/bin/env bash
# genefind convert on real annotations of E. coli K-12 MG1655:
# - NCBI's GenBank file (Debian's cct-examples, if installed) gives the curated gene set, the
#   complete, non-pseudo, non-joined CDS, byte for byte;
# - Prodigal's GFF3 of the chromosome (if prodigal is installed) gives the bundled gene set made
#   from Prodigal's calls, partial gene included, byte for byte;
# - genetrain reads what convert writes, gene set -> GFF3 -> gene set is the identity, and the
#   GFF3 passes genometools' validator (if installed).
#   convert_real.sh GENEFIND GENETRAIN EXAMPLES_DIR
set -euo pipefail
genefind=$(realpath "$1")
genetrain=$(realpath "$2")
examples=$(realpath "$3")
genbank=/usr/share/doc/cct/examples/sample_projects/sample_project_3/comparison_genomes/NC_000913.gbk.gz
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() {
  echo "FAIL: $*"
  exit 1
}
gzip -dc "$examples/ecoli_mg1655_curated.genes.gz" > curated.genes
gzip -dc "$examples/ecoli_mg1655.fasta.gz" > genome.fa

if [ -e "$genbank" ]; then
  "$genefind" convert "$genbank" -o genbank.genes 2> note.txt || fail "convert of the GenBank file"
  cmp genbank.genes curated.genes || fail "the GenBank CDS differ from the curated gene set"
  grep -qxF 'record NC_000913: 4241 CDS; left out: 12 pseudogenes, 1 joined location' note.txt ||
    fail "note: $(cat note.txt)"
  # The same CDS through GFF3, selected by the record's VERSION.
  "$genefind" convert -q -f gff "$genbank" | "$genefind" convert -q -r NC_000913 - |
    cmp - curated.genes || fail "GenBank -> GFF3 -> gene set differs"
else
  echo "skipped the GenBank file: apt-get install cct-examples"
fi

if command -v prodigal > /dev/null; then
  prodigal -i genome.fa -f gff -o prodigal.gff -q
  "$genefind" convert -q prodigal.gff -o prodigal.genes || fail "convert of Prodigal's GFF3"
  gzip -dc "$examples/ecoli_mg1655.genes.gz" | cmp - prodigal.genes ||
    fail "Prodigal's GFF3 does not give the bundled gene set"
else
  echo "skipped Prodigal's GFF3: apt-get install prodigal"
fi

"$genefind" convert -q -f gff curated.genes -o curated.gff
"$genefind" convert -q curated.gff | cmp - curated.genes || fail "round trip through GFF3"
if command -v gt > /dev/null; then
  gt gff3validator curated.gff > /dev/null 2>&1 || fail "gt gff3validator rejects the GFF3 written"
else
  echo "skipped the GFF3 validation: apt-get install genometools"
fi
"$genetrain" --GENE_SET_STAT 1 --geneset curated.genes | tail -1 | grep -qx '2307 675 543 83 607 20 ' ||
  fail "--GENE_SET_STAT of the curated set"
"$genetrain" --parse --par "$examples/ecoli.par" --seq genome.fa --geneset curated.genes \
  --cod cod.txt --non non.txt > parse.out 2>&1 || fail "--parse: $(head -3 parse.out)"
[ -s cod.txt ] && [ -s non.txt ] || fail "--parse wrote no training sequences"
echo "convert_real: all checks passed"
