# The genomes of Debian's cct-examples package that the genefind benchmarks use besides E. coli:
# four archaea and a 64 % GC bacterium, as GenBank files with their submitters' annotations.
# Sourced by bench/predict_genomes.sh and bench/train_bench.sh.
# shellcheck shell=bash
# shellcheck disable=SC2034  # used by the scripts that source this file

CCT_EXAMPLES=/usr/share/doc/cct/examples/sample_projects
CCT_GENOMES=(
  sample_project_2/comparison_genomes/Methanococcus_maripaludis.gbk.gz
  sample_project_2/comparison_genomes/Methanosarcina_acetivorans.gbk.gz
  sample_project_2/comparison_genomes/Thermococcus_kodakaraensis.gbk.gz
  sample_project_2/reference_genome/Methanobacterium_thermoautotrophicum.gbk.gz
  sample_project_3/reference_genome/NC_004463.gbk.gz
)

# Installs the package when missing and this runs as root; false when it is still missing.
cct_examples_present() {
  if [ ! -d "$CCT_EXAMPLES" ] && [ "$(id -u)" = 0 ] && command -v apt-get > /dev/null; then
    apt-get install -y -qq cct-examples > /dev/null 2>&1 || true
  fi
  [ -d "$CCT_EXAMPLES" ]
}

# Writes the genome (FASTA, from the GenBank ORIGIN section) and its CDS as a gene set
# (genefind convert) of one GenBank file of the list: cct_genome GENEFIND FILE NAME FASTA GENES.
cct_genome() {
  gzip -dc "$CCT_EXAMPLES/$2" | awk -v id="$3" 'BEGIN { print ">" id }
    /^ORIGIN/ { inside = 1; next } /^\/\// { inside = 0 }
    inside { gsub(/[0-9 ]/, ""); print toupper($0) }' > "$4"
  "$1" convert -q -o "$5" "$CCT_EXAMPLES/$2"
}
