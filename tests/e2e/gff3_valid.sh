# gff3_valid FILE WHAT: genometools' GFF3 validator on FILE (installed first when missing and
# this runs as root; skipped with a note without it); on a rejection the validator's words and
# "FAIL: gt gff3validator rejects the GFF3 of WHAT", and the script stops with status 1.
# Sourced by the end-to-end scripts of genefind.
# shellcheck shell=bash
gff3_valid() {
  if ! command -v gt > /dev/null && [ "$(id -u)" -eq 0 ] && command -v apt-get > /dev/null; then
    echo "installing genometools"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends genometools \
      > /dev/null
  fi
  if ! command -v gt > /dev/null; then
    echo "gt (genometools) is missing: GFF3 validation skipped"
    return 0
  fi
  if ! gt gff3validator "$1" > "$1.validator.txt" 2>&1; then
    cat "$1.validator.txt" >&2
    echo "FAIL: gt gff3validator rejects the GFF3 of $2" >&2
    exit 1
  fi
}
