#!/usr/bin/env bash
# Runs one golden command-line case and compares every byte it produced.
#   run_case.sh BINARY CASE_DIR SCRATCH_DIR
# The case layout is described in tests/cli/README.md. Exit 0 on a match, 1 on a mismatch,
# 77 when the case asks to be skipped in a sanitizer build. A case with a `program` file runs
# the program it names, found beside BINARY.
set -u
bin=$(realpath "$1")
case_dir=$(cd "$2" && pwd)
scratch=$3
name=$(basename "$case_dir")
if [ -e "$case_dir/program" ]; then bin=$(dirname "$bin")/$(tr -d ' \n' < "$case_dir/program"); fi

if [ -e "$case_dir/skip-under-sanitizer" ] && [ -n "${GENETRAIN_SANITIZED:-}" ]; then
  echo "$name: skipped in a sanitizer build"
  exit 77
fi

work=$scratch/work
result=$scratch/result
rm -rf "$scratch"
mkdir -p "$work" "$result"
if [ -d "$case_dir/in" ]; then cp -a "$case_dir/in/." "$work/"; fi
if [ -e "$case_dir/setup" ]; then
  # Setup scripts find the bundled real data here.
  GENETRAIN_EXAMPLES=$(cd "$case_dir/../../../examples" && pwd)
  export GENETRAIN_EXAMPLES
  (cd "$work" && bash "$case_dir/setup") || { echo "$name: setup failed"; exit 1; }
fi
(cd "$work" && find . -type f | sort) > "$result/before"

args=()
mapfile -t args < "$case_dir/args"
limit=unlimited
if [ -e "$case_dir/ulimit-v" ]; then limit=$(cat "$case_dir/ulimit-v"); fi
# A file size limit stands in for a full disk: writes past it fail with EFBIG, since the signal
# the kernel sends first is ignored.
file_limit=unlimited
if [ -e "$case_dir/ulimit-f" ]; then file_limit=$(cat "$case_dir/ulimit-f"); fi
stdin_file=/dev/null
if [ -e "$case_dir/stdin" ]; then stdin_file=$case_dir/stdin; fi
env_settings=()
if [ -e "$case_dir/env" ]; then mapfile -t env_settings < "$case_dir/env"; fi

# Standard input arrives through a pipe, as in a pipeline; a hang is cut after a minute.
cat "$stdin_file" | (cd "$work" && ulimit -v "$limit" && ulimit -f "$file_limit" && trap '' XFSZ &&
  exec env "${env_settings[@]}" timeout -s KILL 60 "$bin" "${args[@]}") \
  > "$result/stdout" 2> "$result/stderr"
status=$?

failed=0
fail() {
  echo "$name: $*"
  failed=1
}

expect_status=0
if [ -e "$case_dir/status" ]; then expect_status=$(tr -d ' \n' < "$case_dir/status"); fi
[ "$status" = "$expect_status" ] || fail "exit status $status, expected $expect_status"

for stream in stdout stderr; do
  expected=/dev/null
  if [ -e "$case_dir/$stream" ]; then expected=$case_dir/$stream; fi
  if ! cmp -s "$expected" "$result/$stream"; then
    fail "$stream differs (expected, actual):"
    diff -u --text "$expected" "$result/$stream" | head -n 60
  fi
done

# Every expected output file must match; every other file must be an untouched input.
if [ -d "$case_dir/out" ]; then
  while IFS= read -r file; do
    if [ ! -e "$work/$file" ]; then
      fail "output file $file is missing"
    elif ! cmp -s "$case_dir/out/$file" "$work/$file"; then
      fail "output file $file differs (expected, actual):"
      diff -u --text "$case_dir/out/$file" "$work/$file" | head -n 60
    fi
  done < <(cd "$case_dir/out" && find . -type f | sort)
fi
while IFS= read -r file; do
  [ -e "$case_dir/out/$file" ] && continue
  if ! grep -qxF -- "$file" "$result/before"; then
    fail "unexpected output file $file"
  elif [ -e "$case_dir/in/$file" ] && ! cmp -s "$case_dir/in/$file" "$work/$file"; then
    fail "input file $file was changed"
  fi
done < <(cd "$work" && find . -type f | sort)
# Files that were there before stay, unless they are expected outputs.
while IFS= read -r file; do
  [ -e "$work/$file" ] || [ -e "$case_dir/out/$file" ] || fail "file $file was removed"
done < "$result/before"

exit $failed
