#!/usr/bin/env bash
# Builds the libFuzzer targets into build-fuzz/ and runs each for SECONDS seconds (default 30).
# The corpora start from the golden cases' inputs and live in build-fuzz/corpus/<target>/; a
# crash, leak, timeout or sanitizer report lands in build-fuzz/artifacts/ and fails the run.
#   usage: bash fuzz/run.sh [SECONDS]
set -euo pipefail

seconds=${1:-30}
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-fuzz"
targets=(param_text param_file param_argv fasta_file fasta_scanner fasta_blocks compressed_input
  geneset model_file gibbs mask)

# clang with the fuzzer runtime.
if ! command -v clang++ >/dev/null ||
  ! compgen -G "/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a" >/dev/null; then
  if [ "$(id -u)" -ne 0 ]; then
    echo "fuzz/run.sh: needs clang and libclang-rt-14-dev (run as root to install them)" >&2
    exit 1
  fi
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq clang libclang-rt-14-dev >/dev/null
fi

CXX=clang++ cmake -S "$root/fuzz" -B "$build" >/dev/null
cmake --build "$build" -j "$(nproc)"

bash "$root/fuzz/seed.sh" "$root/tests/cli" "$build/corpus"
mkdir -p "$build/artifacts" "$build/logs"

failed=0
for target in "${targets[@]}"; do
  corpus="$build/corpus/$target"
  mkdir -p "$corpus"
  log="$build/logs/$target.log"
  # -close_fd_mask=3 silences the target's own output; libFuzzer's and the sanitizers'
  # reports still come through. Corpus and artifact paths are absolute: some targets chdir.
  if ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    "$build/fuzz_$target" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
    -rss_limit_mb=4096 -close_fd_mask=3 -print_final_stats=1 \
    -artifact_prefix="$build/artifacts/$target-" "$corpus" >"$log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    echo "fuzz_$target: ok, $runs runs"
  else
    failed=1
    echo "fuzz_$target: FAILED (see $log)"
    grep -E "^(==[0-9]+==ERROR|SUMMARY|.*runtime error)" "$log" | head -5 || true
  fi
done
exit "$failed"
