#!/usr/bin/env bash
# Seeds the corpus of each fuzz target from the golden command-line cases.
#   usage: bash fuzz/seed.sh CASES_FOLDER CORPUS_FOLDER
# Each case's `args` tell what its input files are (the file after --geneset is a gene set, and
# so on); every seed is written into CORPUS_FOLDER/<target>/ under the SHA-1 of its bytes, never
# into the cases. Files over 64 KiB are left out (the targets run with -max_len=65536).
set -euo pipefail
export LC_ALL=C

cases=$1
corpus=$2
max_seed=65536
staging=$(mktemp)
trap 'rm -f "$staging"' EXIT

# Moves the staged seed into the target's folder under the hash of its content.
put() {
  local target=$1 sum
  mkdir -p "$corpus/$target"
  sum=$(sha1sum "$staging")
  mv "$staging" "$corpus/$target/${sum%% *}"
}

# True for a readable file that fits a seed.
fits() {
  [ -f "$1" ] && [ -r "$1" ] && [ "$(stat -c %s "$1")" -le "$max_seed" ]
}

# Prints the arguments joined by the separator byte given as a printf escape (\0, \t).
join_args() {
  local separator=$1 first=1 arg
  shift
  for arg in "$@"; do
    [ "$first" = 1 ] || printf "$separator"
    printf '%s' "$arg"
    first=0
  done
}

seed_case() {
  local case=$1 inputs=$1/in args=() i
  [ -f "$case/args" ] && mapfile -t args < "$case/args"
  { printf '\0'; join_args '\0' "${args[@]}"; } > "$staging" && put param_argv
  { printf '\0'; join_args '\t' "${args[@]}"; } > "$staging" && put param_text

  # The file named after each option, when the case bundles it.
  declare -A file_of=()
  for ((i = 0; i + 1 < ${#args[@]}; i++)); do
    local option=${args[i]} name=${args[i + 1]}
    if [ -n "$name" ] && [[ $name != */* ]] && fits "$inputs/$name"; then
      file_of[$option]=$inputs/$name
    fi
  done
  local par=${file_of[--par]:-} genes=${file_of[--geneset]:-} gibbs=${file_of[--gibbs]:-}
  local mask=${file_of[--mask]:-} seq=${file_of[--seq]:-}
  if [ -n "$par" ]; then
    cp "$par" "$staging" && put param_file
    { printf '\1'; cat "$par"; } > "$staging" && put param_text
    { cat "$par"; printf '\0--par\0p'; } > "$staging" && put param_argv
  fi
  if [ -n "$genes" ]; then
    # Byte 0 picks the grammar, bytes 1-8 the two limits (zero: none).
    { printf '\0\0\0\0\0\0\0\0\0'; cat "$genes"; } > "$staging" && put geneset
    { printf '\1\0\0\0\0\0\0\0\0'; cat "$genes"; } > "$staging" && put geneset
  fi
  if [ -n "$gibbs" ]; then
    cp "$gibbs" "$staging" && put gibbs
  fi
  if [ -n "$mask" ] && [ -n "$seq" ]; then
    { cat "$seq"; printf '\0'; cat "$mask"; } > "$staging" && put mask
  fi

  [ -d "$inputs" ] || return 0
  local file
  for file in "$inputs"/*; do
    fits "$file" || continue
    if [ "$(tr -d ' \t\n\r\v\f' < "$file" | head -c 1)" = ">" ]; then
      cp "$file" "$staging" && put fasta_file
      cp "$file" "$staging" && put fasta_scanner
      # Byte 0 picks a block of 8 bytes.
      { printf '\7'; cat "$file"; } > "$staging" && put fasta_blocks
    fi
    # Compressed files (gzip, bzip2, xz, zstd), by their magic bytes.
    if head -c 4 "$file" | od -An -tx1 | tr -d ' \n' | grep -q -E '^(1f8b|425a68|fd377a58|28b52ffd)'; then
      { printf '\7'; cat "$file"; } > "$staging" && put compressed_input
      { printf '\7'; cat "$file"; } > "$staging" && put fasta_blocks
    fi
    if grep -q -a -e PHMM -e NONC "$file"; then
      cp "$file" "$staging" && put model_file
    fi
  done
}

for case in "$cases"/*/; do
  seed_case "${case%/}"
done
