#!/usr/bin/env python3
"""Accuracy of a predicted gene set against a curated one (both six-column gene sets, or a GFF3
of CDS lines for the prediction): 3'-end sensitivity (curated stop ends found), precision
(predicted genes with a curated stop end) and start agreement on the shared stop ends.

    gene_accuracy.py CURATED.genes[.gz] PREDICTED.genes|PREDICTED.gff [NAME]
"""
import gzip
import sys


def read_genes(path):
    opener = gzip.open if path.endswith(".gz") else open
    genes = {}
    with opener(path, "rt") as handle:
        for line in handle:
            if not line.strip() or line.startswith("#"):
                continue
            fields = line.rstrip("\n").split("\t")
            if len(fields) >= 9 and fields[2] == "CDS":
                strand, left, right = fields[6], fields[3], fields[4]
            elif len(fields) >= 6:
                strand, left, right = fields[1], fields[2], fields[3]
            else:
                continue
            left, right = int(left.lstrip("<")), int(right.lstrip(">"))
            stop, start = (right, left) if strand == "+" else (left, right)
            genes[(strand, stop)] = start
    return genes


def main():
    curated, predicted = read_genes(sys.argv[1]), read_genes(sys.argv[2])
    name = sys.argv[3] if len(sys.argv) > 3 else sys.argv[2]
    shared = [key for key in predicted if key in curated]
    same = sum(1 for key in shared if predicted[key] == curated[key])
    print(f"{name}: genes {len(predicted)}, sensitivity {100 * len(shared) / len(curated):.1f} %, "
          f"precision {100 * len(shared) / len(predicted):.1f} %, "
          f"start agreement {100 * same / max(1, len(shared)):.1f} %")


main()
