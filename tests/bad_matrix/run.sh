#!/usr/bin/env bash
# Runs one command of the bad-input matrix (commands.sh) and compares the transcript of every
# variant, status, standard output, standard error and the files it wrote, with
# expected/NAME.txt.
#   run.sh BINARY NAME SCRATCH_DIR [--update]
# --update rewrites the expected transcript instead (read the diff before committing it).
# Whatever the transcript says, a run that dies by a signal or takes over 10 s fails the test.
set -u
export LC_ALL=C
bin=$(realpath "$1")
name=$2
scratch=$3
update=${4:-}
here=$(cd "$(dirname "$0")" && pwd)
expected=$here/expected/$name.txt

entry() {
  if [ "$1" = "$name" ]; then
    read -r -a base_args <<< "$2"
    read -r -a file_options <<< "$3"
    read -r -a number_options <<< "$4"
    read -r -a output_options <<< "${5:-}"
    found=1
  fi
}
found=0
# shellcheck source=commands.sh
source "$here/commands.sh"
[ "$found" = 1 ] || { echo "no matrix entry $name"; exit 1; }

rm -rf "$scratch"
mkdir -p "$scratch"
transcript=$scratch/transcript
: > "$transcript"
failed=0

# Index of the value of an option in args, or nothing when the option is absent.
value_index() {
  local option=$1 i
  for ((i = 0; i + 1 < ${#args[@]}; i++)); do
    [ "${args[i]}" = "$option" ] && { echo $((i + 1)); return; }
  done
}

# Writes the variant KIND of the fixture GOOD into the file BAD (missing: writes nothing).
make_variant() {
  local kind=$1 good=$2 bad=$3 byte
  case $kind in
    missing) ;;
    empty) : > "$bad" ;;
    directory) mkdir "$bad" ;;
    binary) for byte in {0..255} {255..0}; do printf "\\$(printf %o "$byte")"; done > "$bad" ;;
    nul) { head -c 8 "$good"; printf '\0\0'; tail -c +9 "$good"; } > "$bad" ;;
    crlf) sed 's/$/\r/' "$good" > "$bad" ;;
  esac
}

# Lists the files of the work folder with their checksums.
list_files() {
  (cd "$1" && find . -type f -print0 | sort -z | xargs -0 -r md5sum)
}

# Shows a written file: its size, and its bytes (control bytes made visible) when small.
show_file() {
  local path=$1 label=$2 size
  size=$(stat -c %s "$path")
  echo "--- wrote $label, $size bytes"
  if [ "$size" -le 2048 ]; then
    cat -v "$path"
    [ -z "$(tail -c 1 "$path")" ] || echo "[no end of line]"
  else
    md5sum < "$path"
  fi
}

# Runs the program with args in a fresh copy of the fixtures and appends its transcript.
run_variant() {
  local label=$1 work=$scratch/work
  # The caller has set up the work folder; record what was there before.
  list_files "$work" > "$scratch/before"
  (cd "$work" && exec timeout -s KILL 10 "$bin" "${args[@]}") < /dev/null \
    > "$scratch/stdout" 2> "$scratch/stderr"
  local status=$?
  if [ "$status" -ge 124 ]; then
    echo "$name/$label: died or hung (status $status): ${args[*]}"
    head -n 20 "$scratch/stderr"
    failed=1
  fi
  {
    echo "=== $label: ${args[*]}"
    echo "status $status"
    echo "--- stdout"
    cat "$scratch/stdout"
    echo "--- stderr"
    cat "$scratch/stderr"
    list_files "$work" | grep -vxFf "$scratch/before" | while read -r _ file; do
      show_file "$work/$file" "$file"
    done
  } >> "$transcript"
}

fresh_work() {
  rm -rf "$scratch/work"
  cp -a "$here/fixtures" "$scratch/work"
}

# The working command line first, so the transcript shows what the variants change.
args=("${base_args[@]}")
fresh_work
run_variant base

for option in "${file_options[@]}"; do
  for kind in missing empty directory binary nul crlf; do
    args=("${base_args[@]}")
    index=$(value_index "$option")
    good=${args[index]}
    args[index]=bad_input
    fresh_work
    make_variant "$kind" "$scratch/work/$good" "$scratch/work/bad_input"
    run_variant "$option $kind"
  done
done

for option in "${number_options[@]}"; do
  for value in abc -1 1e99 4294967296 ""; do
    args=("${base_args[@]}")
    index=$(value_index "$option")
    if [ -n "$index" ]; then
      args[index]=$value
    else
      args+=("$option" "$value")
    fi
    fresh_work
    run_variant "$option '$value'"
  done
done

# The file an output option names first: --split names the base of numbered files.
first_output() {
  if [ "$1" = --split ]; then echo "${2}_1"; else echo "$2"; fi
}

for option in "${output_options[@]}"; do
  for kind in no_folder read_only directory dev_full; do
    # --split names files after its value: /dev/full would make /dev/full_1 and so on.
    [ "$option" = --split ] && [ "$kind" = dev_full ] && continue
    args=("${base_args[@]}")
    index=$(value_index "$option")
    fresh_work
    case $kind in
      no_folder) args[index]=no_folder/${args[index]} ;;
      read_only)
        target=$scratch/work/$(first_output "$option" "${args[index]}")
        echo "an earlier output" > "$target"
        chmod 444 "$target"
        ;;
      directory)
        target=$scratch/work/$(first_output "$option" "${args[index]}")
        rm -f "$target"
        mkdir "$target"
        ;;
      dev_full) args[index]=/dev/full ;;
    esac
    run_variant "$option $kind"
    # A read-only output must be left as it was, contents and permissions.
    if [ "$kind" = read_only ] && { [ "$(cat "$target")" != "an earlier output" ] ||
      [ "$(stat -c %a "$target")" != 444 ]; }; then
      echo "$name/$option read_only: the read-only file was changed"
      failed=1
    fi
  done
done

if [ "$update" = --update ]; then
  mkdir -p "$here/expected"
  cp "$transcript" "$expected"
  exit "$failed"
fi
if ! cmp -s "$expected" "$transcript"; then
  echo "$name: transcript differs (expected, actual):"
  diff -u --text "$expected" "$transcript" | head -n 80
  failed=1
fi
exit "$failed"
