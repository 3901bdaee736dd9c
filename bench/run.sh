#!/usr/bin/env bash
# Times genetrain's sequence commands next to the tool a user would pick instead, on generated
# metagenome-like FASTA files, and rewrites the results section of docs/performance.md.
#
#   make bench             (builds build/genetrain in Release first)
#   bash bench/run.sh      (uses the binary as it stands)
#
# Settings, all optional, from the environment:
#   BENCH_SIZES  input sizes in MB (10^6 bytes), default "100 1000"; "10 100 1000 4000" for all
#   BENCH_RUNS   timed runs of each command, default 3; the median is reported
#   BENCH_DATA   scratch folder for generated inputs and outputs, default bench/data
#   GENETRAIN    the binary to time, default build/genetrain
#   BENCH_DOC    the document to update, default docs/performance.md; empty = print only
# shellcheck disable=SC2016  # the backquotes in printf formats are Markdown
set -euo pipefail
export LC_ALL=C

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
sizes=${BENCH_SIZES:-100 1000}
runs=${BENCH_RUNS:-3}
data=${BENCH_DATA:-$root/bench/data}
bin=${GENETRAIN:-$root/build/genetrain}
doc=${BENCH_DOC-$root/docs/performance.md}
# Bump when metagen.cpp changes what it writes, so that stale inputs are not reused.
generator_version=1
# "Within file size plus a few MB" for the counting commands' peak memory.
rss_slack_mb=8
min_throughput=500

scratch=$data/scratch
mkdir -p "$data/bin" "$scratch"
started=$(date +%s)

say() { printf '%s\n' "$*" >&2; }

install_from_debian() {
  local package=$1
  if [ "$(id -u)" -ne 0 ]; then
    say "note: $package is missing; install it with: sudo apt-get install -y $package"
    return 1
  fi
  say "installing $package from Debian"
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$package" >/dev/null ||
    { apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$package" >/dev/null; }
}

check_tools() {
  if [ ! -x "$bin" ]; then
    say "error: $bin is missing; run 'make build' (or 'make bench') first"
    exit 1
  fi
  [ -x /usr/bin/time ] || install_from_debian time || { say "error: /usr/bin/time is needed"; exit 1; }
  have_seqkit=1
  command -v seqkit >/dev/null || install_from_debian seqkit || have_seqkit=0
  command -v seqkit >/dev/null || have_seqkit=0
}

# The generator is rebuilt when its source is newer than the binary.
build_generator() {
  generator=$data/bin/metagen
  if [ ! -x "$generator" ] || [ "$root/bench/metagen.cpp" -nt "$generator" ]; then
    say "compiling bench/metagen.cpp"
    g++ -std=c++20 -O2 -Wall -Wextra -o "$generator" "$root/bench/metagen.cpp"
  fi
}

# Prints the name of the input of the given size in MB, generating it when absent.
input_file() {
  local size=$1
  local file=$data/metagenome_v${generator_version}_${size}MB.fa
  if [ ! -s "$file" ]; then
    say "generating $file"
    gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" "$root/examples/ecoli_mg1655_contigs.fasta.gz" |
      "$generator" "$((size * 1000000))" > "$file.part"
    mv "$file.part" "$file"
  fi
  printf '%s\n' "$file"
}

# Sets CMD (the argument list), OUT (where standard output goes) and SHOWN (the command as the
# table shows it) for a command id on input $1.
command_for() {
  local id=$1 in=$2 o=$scratch/out
  OUT=/dev/null
  case $id in
    cat) CMD=(cat "$in") SHOWN='cat F > /dev/null' ;;
    stat) CMD=("$bin" --stat "$o/stat.txt" --seq "$in") SHOWN='genetrain --stat out.txt --seq F' ;;
    gc) CMD=("$bin" --gc "" --seq "$in") SHOWN='genetrain --gc "" --seq F' ;;
    stat_fasta) CMD=("$bin" --stat_fasta "" --seq "$in") SHOWN='genetrain --stat_fasta "" --seq F' ;;
    count_substring_n)
      CMD=("$bin" --count_substring_n "" --seq "$in")
      SHOWN='genetrain --count_substring_n "" --seq F' ;;
    clean_join)
      CMD=("$bin" --clean_join "$o/joined.txt" --seq "$in" --GAP_FILLER NNNNNNNNNN --MAX_N_SUBSTRING 100)
      SHOWN='genetrain --clean_join out --seq F --GAP_FILLER NNNNNNNNNN --MAX_N_SUBSTRING 100' ;;
    clean)
      CMD=("$bin" --clean "" --seq "$in" --out_clean "$o/clean.txt" --out_masked "$o/masked.txt" --GAP_FILLER NNNNNNNNNN)
      SHOWN='genetrain --clean "" --seq F --out_clean a --out_masked b --GAP_FILLER NNNNNNNNNN' ;;
    split) CMD=("$bin" --split "$o/part" --seq "$in") SHOWN='genetrain --split base --seq F' ;;
    seqkit_stats) CMD=(seqkit stats -a -j 1 "$in") SHOWN='seqkit stats -a -j 1 F' ;;
    seqkit_fx2tab) CMD=(seqkit fx2tab -n -l -g -B N "$in") SHOWN='seqkit fx2tab -n -l -g -B N F' ;;
    seqkit_seq_s)
      CMD=(seqkit seq -s -w 0 "$in") OUT=$o/seq.txt SHOWN='seqkit seq -s -w 0 F > out' ;;
    seqkit_seq) CMD=(seqkit seq -w 0 "$in") OUT=$o/seq.fa SHOWN='seqkit seq -w 0 F > out' ;;
    seqkit_split2) CMD=(seqkit split2 -s 1 -O "$o/split2" "$in") SHOWN='seqkit split2 -s 1 -O dir F' ;;
    *) say "unknown command id $id"; exit 1 ;;
  esac
}

# Runs a command once untimed (warming up) and prints "ok", "not yet available" (the build does
# not provide it yet), "missing" (seqkit absent) or "failed (status N)".
probe() {
  local id=$1 in=$2 status=0
  command_for "$id" "$in"
  if [ "${CMD[0]}" = seqkit ] && [ "$have_seqkit" = 0 ]; then echo missing; return; fi
  rm -rf "$scratch/out" && mkdir -p "$scratch/out"
  "${CMD[@]}" > "$OUT" 2> "$scratch/stderr.txt" || status=$?
  if grep -q 'command not yet available' "$scratch/stderr.txt"; then
    echo not yet available
  elif [ "$status" -ne 0 ]; then
    echo "failed (status $status)"
  else
    echo ok
  fi
}

# One timed run; appends "wall cpu rss_kb" to $scratch/times.<key>.
measure() {
  local key=$1 id=$2 in=$3 timing=$scratch/time.txt
  command_for "$id" "$in"
  rm -rf "$scratch/out" && mkdir -p "$scratch/out"
  local begin=$EPOCHREALTIME end
  /usr/bin/time -f '%U %S %M' -o "$timing" "${CMD[@]}" > "$OUT" 2> /dev/null || true
  end=$EPOCHREALTIME
  # Wall time from the shell's microsecond clock: /usr/bin/time shows only hundredths.
  tail -n 1 "$timing" | awk -v begin="$begin" -v end="$end" \
    '{ printf "%.3f %.2f %d\n", end - begin, $1 + $2, $3 }' >> "$scratch/times.$key"
}

# Median of one column of a times file.
median() {
  cut -d ' ' -f "$2" "$1" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# Sets WALL, CPU and RSS_MB from the runs recorded under a key.
summarise() {
  local file=$scratch/times.$1
  WALL=$(median "$file" 1)
  CPU=$(median "$file" 2)
  RSS_MB=$(awk -v kb="$(median "$file" 3)" 'BEGIN { printf "%.1f", kb * 1024 / 1e6 }')
}

calc() { awk "BEGIN { $1 }"; }

# Times a genetrain command next to its peer, alternating, and prints the two table rows.
run_pair() {
  local size=$1 in=$2 ours=$3 peer=$4 mb=$5
  local ours_state peer_state ours_row peer_row r ours_rss=""
  ours_state=$(probe "$ours" "$in")
  peer_state=$(probe "$peer" "$in")
  say "  $ours ($ours_state) vs $peer ($peer_state)"
  rm -f "$scratch/times.$size.$ours.$peer.a" "$scratch/times.$size.$ours.$peer.b"
  for ((r = 1; r <= runs; r++)); do
    [ "$ours_state" = ok ] && measure "$size.$ours.$peer.a" "$ours" "$in"
    [ "$peer_state" = ok ] && measure "$size.$ours.$peer.b" "$peer" "$in"
  done
  local ours_wall=""
  command_for "$ours" "$in"
  if [ "$ours_state" = ok ]; then
    summarise "$size.$ours.$peer.a"
    ours_wall=$WALL
    ours_row="| $WALL | $CPU | $RSS_MB | $(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
    ours_rss=$RSS_MB
  else
    ours_row="| $ours_state | | | "
  fi
  local ours_shown=$SHOWN
  command_for "$peer" "$in"
  local ratio="" verdict=""
  if [ "$peer_state" = ok ]; then
    summarise "$size.$ours.$peer.b"
    peer_row="| $WALL | $CPU | $RSS_MB | $(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
    [ -n "$ours_wall" ] && ratio=$(calc "printf \"%.2f\", $ours_wall / ($WALL > 0 ? $WALL : 0.01)")
  else
    peer_row="| $peer_state | | | "
  fi
  [ -n "$ours_wall" ] && verdict=$(verdict "$ours" "$ours_wall" "$ratio" "$ours_rss" "$mb")
  printf '| `%s` %s | %s | %s |\n' "$ours_shown" "$ours_row" "$ratio" "$verdict"
  printf '| `%s` %s | | |\n' "$SHOWN" "$peer_row"
}

# The targets of docs/performance.md, judged on one result.
verdict() {
  local id=$1 wall=$2 ratio=$3 rss=$4 mb=$5 speed="" memory=""
  case $id in
    stat | gc) [ -n "$ratio" ] && speed=$(calc "print ($ratio < 1) ? \"faster: yes\" : \"faster: no\"") ;;
    stat_fasta | count_substring_n)
      [ -n "$ratio" ] && speed=$(calc "print ($ratio <= 2) ? \"within 2x: yes\" : \"within 2x: no\"") ;;
    clean_join | clean | split)
      speed=$(calc "print ($mb / ($wall > 0 ? $wall : 0.01) >= $min_throughput) ? \"500 MB/s: yes\" : \"500 MB/s: no\"") ;;
  esac
  case $id in
    stat | gc | stat_fasta | count_substring_n)
      memory=$(calc "print ($rss <= $mb + $rss_slack_mb) ? \"; memory: yes\" : \"; memory: no\"") ;;
  esac
  printf '%s%s' "$speed" "$memory"
}

run_size() {
  local size=$1 in mb records
  in=$(input_file "$size")
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  records=$(grep -c '>' "$in")
  say "input $in: $mb MB, $records records"
  cat "$in" > /dev/null
  echo
  echo "### $size MB input: $mb MB, $records records"
  echo
  echo '| command (F = input) | wall s | CPU s | peak RSS MB | MB/s | wall ratio | target |'
  echo '|---|---|---|---|---|---|---|'
  rm -f "$scratch/times.$size.cat"
  for ((r = 1; r <= runs; r++)); do measure "$size.cat" cat "$in"; done
  summarise "$size.cat"
  command_for cat "$in"
  printf '| `%s` | %s | %s | %s | %s | | floor |\n' "$SHOWN" "$WALL" "$CPU" "$RSS_MB" \
    "$(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
  local pairs=(
    "stat seqkit_stats" "gc seqkit_stats"
    "stat_fasta seqkit_fx2tab" "count_substring_n seqkit_fx2tab"
    "clean_join seqkit_seq_s" "clean seqkit_seq_s" "split seqkit_seq")
  [ "$size" = 100 ] && pairs+=("split seqkit_split2")
  local pair
  for pair in "${pairs[@]}"; do
    # shellcheck disable=SC2086
    run_pair "$size" "$in" $pair "$mb"
  done
  echo
  check_size "$in" "$records"
}

# Cross-checks on each input, outside the timing: the --stat counts against seqkit's (which also
# catches counters that wrap beyond 2^31 letters; awk prints them with %.0f, as mawk's %d stops
# at 2^31 - 1) and one --split file per record.
check_size() {
  local in=$1 records=$2 o=$scratch/out expected actual files
  rm -rf "$o" && mkdir -p "$o"
  if "$bin" --stat "$o/stat.txt" --seq "$in" 2> /dev/null && [ "$have_seqkit" = 1 ]; then
    expected=$(seqkit fx2tab -n -l -C A -C C -C G -C T "$in" |
      awk -F'\t' '{ n += $2; a += $3; c += $4; g += $5; t += $6 }
        END { printf "%.0f %.0f %.0f %.0f %.0f %.0f %.0f", n, a + c + g + t, a, c, g, t, n - a - c - g - t }')
    actual=$(awk 'NR >= 2 && NR <= 8 { printf "%s%s", sep, $2; sep = " " }' "$o/stat.txt")
    if [ "$expected" = "$actual" ]; then
      echo "- \`--stat\` counts equal seqkit's: $actual (size, ACGT, A, C, G, T, N)."
    else
      echo "- **\`--stat\` counts differ from seqkit's**: $actual against $expected."
    fi
  fi
  rm -rf "$o" && mkdir -p "$o"
  if "$bin" --split "$o/part" --seq "$in" 2> /dev/null; then
    files=$(find "$o" -name 'part_*' | wc -l)
    if [ "$files" = "$records" ]; then
      echo "- \`--split\` wrote one file per record ($files)."
    else
      echo "- **\`--split\` wrote $files files for $records records.**"
    fi
  fi
  rm -rf "$o"
}

machine_lines() {
  local cpu memory
  cpu=$(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo)
  memory=$(awk '/^MemTotal/ { printf "%.0f GB", $2 / 1e6 }' /proc/meminfo)
  echo "- Run of $(date -u '+%Y-%m-%d %H:%M UTC'), genetrain $(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo '(no git)') plus any local changes."
  echo "- Machine: $cpu, $(nproc) CPUs, $memory RAM, Linux $(uname -r)."
  echo "- Tools: $( [ "$have_seqkit" = 1 ] && seqkit version | head -n 1 || echo 'seqkit missing'), $(g++ --version | head -n 1)."
  echo "- $runs runs of each command, alternating with its peer; medians shown."
}

# Replaces the text between the two markers of the document by the new results.
update_doc() {
  local results=$1
  if [ -z "$doc" ]; then cat "$results"; return; fi
  if [ ! -e "$doc" ] || ! grep -q '^<!-- bench-results:begin -->$' "$doc"; then
    say "note: $doc has no results markers; appending them"
    printf '\n<!-- bench-results:begin -->\n<!-- bench-results:end -->\n' >> "$doc"
  fi
  awk -v results="$results" '
    /^<!-- bench-results:begin -->$/ { print; while ((getline line < results) > 0) print line; skip = 1; next }
    /^<!-- bench-results:end -->$/ { skip = 0 }
    !skip { print }' "$doc" > "$doc.new"
  mv "$doc.new" "$doc"
  say "updated $doc"
}

main() {
  check_tools
  build_generator
  local results=$scratch/results.md size
  {
    machine_lines
    for size in $sizes; do run_size "$size"; done
    echo
    echo "Whole run: $(($(date +%s) - started)) s including input generation."
  } > "$results"
  rm -rf "$scratch/out"
  update_doc "$results"
}

main "$@"
