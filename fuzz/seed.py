"""Seeds the corpus of each fuzz target from the golden command-line cases.

usage: seed.py CASES_FOLDER CORPUS_FOLDER

Each case's `args` tell what its input files are (the file after --geneset is a gene set, and
so on); every seed is written into CORPUS_FOLDER/<target>/, never into the cases.
"""
import hashlib
import os
import sys

MAX_SEED = 65536
MODEL_OPTIONS = {"--mod", "--mod1", "--mod2", "--model"}


def read(path):
    try:
        with open(path, "rb") as handle:
            data = handle.read(MAX_SEED + 1)
    except OSError:
        return None
    return data if len(data) <= MAX_SEED else None


def put(corpus, target, data):
    folder = os.path.join(corpus, target)
    os.makedirs(folder, exist_ok=True)
    name = hashlib.sha1(data).hexdigest()
    with open(os.path.join(folder, name), "wb") as handle:
        handle.write(data)


def seed_case(case, corpus):
    args_path = os.path.join(case, "args")
    raw = read(args_path)
    args = raw.decode("latin-1").split("\n") if raw else []
    if args and args[-1] == "":
        args.pop()
    encoded = [a.encode("latin-1") for a in args]
    put(corpus, "param_argv", b"\0" + b"\0".join(encoded))
    put(corpus, "param_text", b"\0" + b"\t".join(encoded))
    values = dict(zip(args, args[1:]))
    inputs = os.path.join(case, "in")

    def file_of(option):
        name = values.get(option)
        if not name or "/" in name:
            return None
        return read(os.path.join(inputs, name))

    for data in filter(None, [file_of("--par")]):
        put(corpus, "param_file", data)
        put(corpus, "param_text", b"\1" + data)
        put(corpus, "param_argv", data + b"\0--par\0p")
    gene_set = file_of("--geneset")
    if gene_set is not None:
        head = b"\0" * 9
        put(corpus, "geneset", head + gene_set)
        put(corpus, "geneset", b"\1" + head[1:] + gene_set)
    gibbs = file_of("--gibbs")
    if gibbs is not None:
        put(corpus, "gibbs", gibbs)
    mask, seq = file_of("--mask"), file_of("--seq")
    if mask is not None and seq is not None:
        put(corpus, "mask", seq + b"\0" + mask)
    if not os.path.isdir(inputs):
        return
    for name in sorted(os.listdir(inputs)):
        data = read(os.path.join(inputs, name))
        if data is None:
            continue
        if data.lstrip()[:1] == b">":
            put(corpus, "fasta_file", data)
            put(corpus, "fasta_scanner", data)
        if b"PHMM" in data or b"NONC" in data:
            put(corpus, "model_file", data)


def main():
    cases, corpus = sys.argv[1], sys.argv[2]
    for name in sorted(os.listdir(cases)):
        case = os.path.join(cases, name)
        if os.path.isdir(case):
            seed_case(case, corpus)


if __name__ == "__main__":
    main()
