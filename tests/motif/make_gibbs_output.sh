#!/usr/bin/env bash
# Writes a motif-finder style output for a FASTA file of upstream regions (as --pre_start
# writes them), with the motif site of every region at one fixed position, so that a test can
# run --pre_start, this script and --gibbs one after the other.
#
#   make_gibbs_output.sh LAYOUT WIDTH START regions.fa > sites.out
#
#   LAYOUT  motif      sites listed under a "MOTIF A" line, ended by a "(" line
#           nummotifs  a "Gibbs" line first, sites after "Num Motifs:", each marked F
#                      (forward strand), ended by a line of stars
#   WIDTH   motif width
#   START   1-based start of the site in every region
#
# Each site line holds: region number, site number 1, START, up to ten bases of left flank in
# lower case, the site in capitals, up to ten bases of right flank in lower case, the end
# position START + WIDTH - 1 (and, for nummotifs, a probability, F and the region's label).
# A flank that would be empty (a site at the start or at the end of its region) is left out,
# as the motif finder does. Nothing is checked: a site that runs past its region is written
# short, and --gibbs then reports the odd width.
#
# Only bash and awk are needed.
set -eu
if [ $# -ne 4 ]; then
  echo "usage: $0 motif|nummotifs WIDTH START regions.fa" >&2
  exit 2
fi
layout=$1
case $layout in
  motif | nummotifs) ;;
  *)
    echo "$0: unknown layout $layout (motif or nummotifs)" >&2
    exit 2
    ;;
esac

awk -v layout="$layout" -v width="$2" -v start="$3" -v file="$4" '
function flush() {
  if (!have) return
  n++
  label[n] = name
  region[n] = seq
  seq = ""
}
/^>/ { flush(); have = 1; name = substr($0, 2); next }
{ have = 1; gsub(/[^A-Za-z]/, ""); seq = seq $0 }
END {
  flush()
  if (layout == "motif") {
    print ""
    print "                              MOTIF A"
    print ""
  } else {
    print "Gibbs motif sampler"
    print "Data file: " file
    print ""
    print "Num Motifs: " n
  }
  for (i = 1; i <= n; i++) {
    left = start > 11 ? substr(region[i], start - 10, 10) : substr(region[i], 1, start - 1)
    site = substr(region[i], start, width)
    right = substr(region[i], start + width, 10)
    line = sprintf("%4d%s  1 %6d %10s %s %-10s %6d", i, layout == "motif" ? "-" : ",", start,
                   tolower(left), toupper(site), tolower(right), start + width - 1)
    if (layout == "nummotifs") line = line sprintf("   1.00 F %s", label[i])
    print line
  }
  if (layout == "motif") {
    print ""
    print "          (motif model follows)"
  } else {
    stars = ""
    for (k = 0; k < width; k++) stars = stars "*"
    printf "%30s\n", stars
  }
}' "$4"
