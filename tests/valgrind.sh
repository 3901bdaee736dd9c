#!/usr/bin/env bash
# Runs every golden command-line case of tests/cli/ and every command of the bad-input matrix
# (tests/bad_matrix/) under valgrind memcheck and fails on any memory error or definitely lost
# block, or on a case whose output differs under valgrind.
#   valgrind.sh BUILD_DIR [CASE_NAME_REGEX]
# Set GENETRAIN_VALGRIND_ALL=1 to include the slow cases skipped by default;
# GENETRAIN_VALGRIND_JOBS sets the number of cases run at once (default: number of CPUs).
set -u
if [ $# -lt 1 ]; then
  echo "usage: $0 BUILD_DIR [CASE_NAME_REGEX]" >&2
  exit 2
fi
build=$(realpath "$1")
filter=${2:-.}
here=$(cd "$(dirname "$0")" && pwd)
bin=$build/genetrain
[ -x "$bin" ] || { echo "no executable $bin (build first)" >&2; exit 2; }
if ! command -v valgrind > /dev/null; then
  if [ "$(id -u)" = 0 ] && command -v apt-get > /dev/null; then
    apt-get install -y valgrind > /dev/null || { echo "cannot install valgrind" >&2; exit 2; }
  else
    echo "valgrind is missing (apt-get install valgrind)" >&2
    exit 2
  fi
fi

# Cases that take minutes under memcheck (a 100 MB parameter file, a million keys); the address
# space limit of the out-of-memory case leaves no room for valgrind itself.
slow_cases="par_file_100mb par_file_many_keys"

scratch=$(mktemp -d "${TMPDIR:-/tmp}/genetrain-valgrind.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
# One wrapper per program, side by side: a case with a `program` file runs the one it names.
mkdir -p "$scratch/bin"
for program in genetrain genefind; do
  cat > "$scratch/bin/$program" << WRAP
#!/usr/bin/env bash
exec valgrind --tool=memcheck --error-exitcode=99 --leak-check=full \
  --errors-for-leak-kinds=definite --log-file="$scratch/logs/\$GENETRAIN_CASE.%p.log" \
  "$build/$program" "\$@"
WRAP
  chmod +x "$scratch/bin/$program"
done
wrapper=$scratch/bin/genetrain
mkdir -p "$scratch/logs" "$scratch/results"

cases=()
skipped=()
for dir in "$here"/cli/*/; do
  name=$(basename "$dir")
  [ -e "$dir/args" ] || continue
  [[ $name =~ $filter ]] || continue
  if [ -e "$dir/skip-under-sanitizer" ]; then
    skipped+=("$name (skip-under-sanitizer)")
  elif [ -e "$dir/ulimit-f" ]; then
    skipped+=("$name (its file size limit would cut valgrind's own log)")
  elif [ -z "${GENETRAIN_VALGRIND_ALL:-}" ] && [[ " $slow_cases " == *" $name "* ]]; then
    skipped+=("$name (slow under valgrind)")
  else
    cases+=("$name")
  fi
done

# The bad-input matrix too, one command (all its variants) per entry.
for transcript in "$here"/bad_matrix/expected/*.txt; do
  name=matrix_$(basename "$transcript" .txt)
  [[ $name =~ $filter ]] && cases+=("$name")
done

run_one() {
  local name=$1
  if [[ $name == matrix_* ]]; then
    GENETRAIN_CASE=$name bash "$here/bad_matrix/run.sh" "$wrapper" "${name#matrix_}" \
      "$scratch/cases/$name" > "$scratch/results/$name" 2>&1
  else
    GENETRAIN_CASE=$name bash "$here/cli/run_case.sh" "$wrapper" "$here/cli/$name" \
      "$scratch/cases/$name" > "$scratch/results/$name" 2>&1
  fi
  echo $? >> "$scratch/results/$name.status"
}
export -f run_one
export here wrapper scratch
jobs=${GENETRAIN_VALGRIND_JOBS:-$(nproc 2> /dev/null || echo 2)}
printf '%s\n' "${cases[@]}" | xargs -P "$jobs" -I{} bash -c 'run_one "$1"' _ {}

failed=0
for name in "${cases[@]}"; do
  bad=""
  ls "$scratch/logs/$name".*.log > /dev/null 2>&1 || { bad=1; echo "== $name: no valgrind log (did the wrapper run?)"; }
  for log in "$scratch/logs/$name".*.log; do
    [ -e "$log" ] || continue
    if ! grep -q 'ERROR SUMMARY: 0 errors' "$log"; then
      bad=1
      echo "== $name: valgrind reports errors"
      cat "$log"
    fi
  done
  if [ "$(cat "$scratch/results/$name.status")" != 0 ]; then
    bad=1
    echo "== $name: the case fails under valgrind"
    cat "$scratch/results/$name"
  fi
  [ -n "$bad" ] && failed=$((failed + 1))
done

echo "valgrind: ${#cases[@]} cases run, $failed failed, ${#skipped[@]} skipped"
for s in "${skipped[@]}"; do echo "  skipped: $s"; done
[ "$failed" = 0 ]
