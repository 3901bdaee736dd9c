# The metagenome-like inputs of the benchmarks: contigs cut from the two real E. coli sequences of
# examples/ by bench/metagen.cpp, kept in bench/data/ between runs. Sourced by bench/run.sh (for
# its own rows and those of bench/lib/compressed.sh) and by bench/predict_metagenome.sh.
# shellcheck shell=bash

# Bump when metagen.cpp changes what it writes, so that stale inputs are not reused.
METAGENOME_VERSION=1

# Compiles the generator into DATA/bin when it is missing or older than its source:
# metagenome_generator ROOT DATA. Prints the generator's path.
metagenome_generator() {
  local root=$1 data=$2 generator=$2/bin/metagen
  mkdir -p "$data/bin"
  if [ ! -x "$generator" ] || [ "$root/bench/metagen.cpp" -nt "$generator" ]; then
    echo "compiling bench/metagen.cpp" >&2
    g++ -std=c++20 -O2 -Wall -Wextra -o "$generator" "$root/bench/metagen.cpp"
  fi
  printf '%s\n' "$generator"
}

# Prints the path of the input of SIZE MB, generating it when absent:
# metagenome_input ROOT DATA SIZE.
metagenome_input() {
  local root=$1 data=$2 size=$3 generator file
  file=$data/metagenome_v${METAGENOME_VERSION}_${size}MB.fa
  if [ ! -s "$file" ]; then
    generator=$(metagenome_generator "$root" "$data")
    echo "generating $file" >&2
    gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" "$root/examples/ecoli_mg1655_contigs.fasta.gz" |
      "$generator" "$((size * 1000000))" > "$file.part"
    mv "$file.part" "$file"
  fi
  printf '%s\n' "$file"
}
