# One run of a command, timed: wall seconds, CPU seconds (user + system, two decimals) and peak
# kB into the variables wall, cpu and peak. Sourced by bench/train_bench.sh and
# bench/predict_metagenome.sh; the caller's $work folder holds the timing file.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154  # wall, cpu and peak are read by the caller, work is its own

measure_once() {
  local user system
  /usr/bin/time -f "%e %U %S %M" -o "$work/time" "$@"
  read -r wall user system peak < "$work/time"
  cpu=$(printf "%.2f" "$(echo "$user + $system" | bc)")
}
