#!/usr/bin/env bash
# Times genetrain's sequence commands next to the tool a user would pick instead, on generated
# metagenome-like FASTA files of several sizes, then its gene commands on the E. coli genome of
# examples/ (and on that genome repeated, for the cost per base), then its model commands on
# that genome; rewrites the results sections of docs/performance.md and draws the scaling plot
# docs/bench-scaling.svg.
#
#   make bench             (builds build/genetrain in Release first)
#   bash bench/run.sh      (uses the binary as it stands)
#   BENCH_SIZES="10" BENCH_RUNS=1 BENCH_GENE_RUNS=1 BENCH_GENE_COPIES= bash bench/run.sh
#                          (a quick check of the script, a minute or two)
#
# Settings, all optional, from the environment:
#   BENCH_SIZES  input sizes in MB (10^6 bytes), default "100 1000"; "10 100 1000 4000" for all;
#                empty for none
#   BENCH_RUNS   timed runs of each command, default 3; the median is reported
#   BENCH_GENES  1 (default) times the gene commands, 0 leaves them out
#   BENCH_GENE_RUNS    timed runs of each gene command on E. coli, default 11 (they take ms)
#   BENCH_MODEL  1 (default) times the model commands (runs: BENCH_GENE_RUNS, default 5 here;
#                orders 10 and 11: BENCH_RUNS), 0 leaves them out
#   BENCH_ORDER12_RUNS runs of --mkchain --order 12, default 1; 0 leaves it out
#   BENCH_GENE_COPIES  copies of the genome joined into one sequence for the cost per base,
#                      default 22 (about 100 MB); empty for none
#   BENCH_DATA   scratch folder for generated inputs and outputs, default bench/data
#   GENETRAIN    the binary to time, default build/genetrain
#   BENCH_DOC    the document to update, default docs/performance.md; empty = print only
#   BENCH_PLOT   the scaling plot, default docs/bench-scaling.svg (drawn when two sizes or more
#                ran); empty = none
# shellcheck disable=SC2016  # the backquotes in printf formats are Markdown
set -euo pipefail
export LC_ALL=C

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
sizes=${BENCH_SIZES-100 1000}
runs=${BENCH_RUNS:-3}
with_genes=${BENCH_GENES:-1}
gene_runs=${BENCH_GENE_RUNS:-11}
with_model=${BENCH_MODEL:-1}
model_runs=${BENCH_GENE_RUNS:-5}
order12_runs=${BENCH_ORDER12_RUNS:-1}
gene_copies=${BENCH_GENE_COPIES-22}
data=${BENCH_DATA:-$root/bench/data}
bin=${GENETRAIN:-$root/build/genetrain}
doc=${BENCH_DOC-$root/docs/performance.md}
plot=${BENCH_PLOT-$root/docs/bench-scaling.svg}
# The counting commands read in blocks: their peak memory, whatever the input size.
counting_memory_mb=64
# The cleaning commands stream their input: at most 128 MB of memory for the joins and the
# renaming, 64 MB for --split (its records are small) and the record + 64 MB for --mask.
streamed_memory_mb=128
split_memory_mb=64
# The commands of the scaling plot and of the linearity check, in legend order.
scaling_ids=(stat stat_fasta count_substring_n clean_join clean split mask clean_fasta cat)

scratch=$data/scratch
targets_file=$scratch/targets.md
scaling_file=$scratch/scaling.tsv
# Median wall time and peak memory per "<input>.<command id>".
declare -A walls=() peak_mb=()
# What the gene commands find on E. coli, for the cross-checks on the repeated genome.
ecoli_counts=()
mkdir -p "$data/bin" "$scratch"
started=$(date +%s)

# shellcheck source=bench/lib/timing.sh
source "$root/bench/lib/timing.sh"
# shellcheck source=bench/lib/commands.sh
source "$root/bench/lib/commands.sh"
# shellcheck source=bench/lib/genes.sh
source "$root/bench/lib/genes.sh"
# shellcheck source=bench/lib/plot.sh
source "$root/bench/lib/plot.sh"
# shellcheck source=bench/lib/compressed.sh
source "$root/bench/lib/compressed.sh"
# shellcheck source=bench/lib/metagenome.sh
source "$root/bench/lib/metagenome.sh"

install_from_debian() {
  local package=$1
  if [ "$(id -u)" -ne 0 ]; then
    say "note: $package is missing; install it with: sudo apt-get install -y $package"
    return 1
  fi
  say "installing $package from Debian"
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$package" > /dev/null ||
    { apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$package" > /dev/null; }
}

check_tools() {
  if [ ! -x "$bin" ]; then
    say "error: $bin is missing; run 'make build' (or 'make bench') first"
    exit 1
  fi
  [ -x /usr/bin/time ] || install_from_debian time || { say "error: /usr/bin/time is needed"; exit 1; }
  have_seqkit=1
  command -v seqkit > /dev/null || install_from_debian seqkit || have_seqkit=0
  command -v seqkit > /dev/null || have_seqkit=0
  if [ -n "${sizes// /}" ]; then
    command -v bedtools > /dev/null || install_from_debian bedtools || true
  fi
  # Glimmer's programs live outside PATH, behind a wrapper script (tigr-glimmer NAME).
  glimmer=/usr/lib/tigr-glimmer
  command -v long-orfs > /dev/null && glimmer=$(dirname "$(command -v long-orfs)")
  if [ "$with_genes" = 1 ] || [ "$with_model" = 1 ]; then
    [ -x "$glimmer/long-orfs" ] || install_from_debian tigr-glimmer || true
  fi
  if [ "$with_model" = 1 ]; then
    command -v prodigal > /dev/null || install_from_debian prodigal || true
  fi
  if [ "$with_genes" = 1 ]; then
    command -v getorf > /dev/null || install_from_debian emboss || true
  fi
}

# The k-mer floor of the model commands is rebuilt when its source is newer than the binary (the
# input generator likewise, in bench/lib/metagenome.sh).
build_generator() {
  floor=$data/bin/kmer_floor
  if [ "$with_model" = 1 ] && { [ ! -x "$floor" ] || [ "$root/bench/kmer_floor.c" -nt "$floor" ]; }; then
    say "compiling bench/kmer_floor.c"
    mkdir -p "$data/bin"
    gcc -O2 -Wall -Wextra -o "$floor" "$root/bench/kmer_floor.c"
  fi
}

# Prints the name of the input of the given size in MB, generating it when absent.
input_file() { metagenome_input "$root" "$data" "$1"; }

run_size() {
  local size=$1 in mb records
  in=$(input_file "$size")
  one_record "$in" > /dev/null
  mask_intervals "$in" > /dev/null
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  records=$(grep -c '>' "$in")
  say "input $in: $mb MB, $records records"
  cat "$in" "$(one_record "$in")" > /dev/null
  echo
  echo "### $size MB input: $mb MB, $records records"
  echo
  echo '| command (F = input, F1 = F as one record, M = intervals) | wall s | CPU s | peak RSS MB | MB/s | wall ratio | target |'
  echo '|---|---|---|---|---|---|---|'
  rm -f "$scratch/times.$size.cat"
  for ((r = 1; r <= runs; r++)); do measure "$size.cat" cat "$in"; done
  summarise "$size.cat"
  walls[$size.cat]=$WALL peak_mb[$size.cat]=$RSS_MB
  command_for cat "$in"
  printf '| `%s` | %s | %s | %s | %s | | floor |\n' "$SHOWN" "$WALL" "$CPU" "$RSS_MB" \
    "$(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
  local pairs=(
    "stat seqkit_stats" "stat seqkit_fx2tab" "gc seqkit_stats" "gc seqkit_fx2tab"
    "stat_fasta seqkit_stats" "stat_fasta seqkit_fx2tab"
    "count_substring_n seqkit_stats" "count_substring_n seqkit_fx2tab"
    "count_substring_atcg seqkit_stats" "count_substring_atcg seqkit_fx2tab"
    "clean_join seqkit_seq_s" "clean seqkit_seq_s" "clean_fasta seqkit_replace"
    "mask bedtools_maskfasta" "split seqkit_seq")
  [ "$size" -le 100 ] && pairs+=("split seqkit_split2")
  local pair
  for pair in "${pairs[@]}"; do
    [[ $pair == split* ]] && wait_after_purge
    # shellcheck disable=SC2086
    run_pair "$size" "$in" $pair "$mb"
  done
  purge_kept
  echo
  check_size "$in" "$records"
  local id
  for id in "${scaling_ids[@]}"; do
    [ -n "${walls[$size.$id]:-}" ] && echo "$mb $id ${walls[$size.$id]} ${peak_mb[$size.$id]}" >> "$scaling_file"
  done
  return 0
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
  last_purge=$(date +%s)
}

# The 1 GB run against the 100 MB run of every command: at most 11 times the wall time.
linearity() {
  [ -n "${walls[100.stat]:-}" ] && [ -n "${walls[1000.stat]:-}" ] || return 0
  echo
  echo '### Linearity: 1000 MB against 100 MB'
  echo
  echo '| command | wall 100 MB | wall 1000 MB | ratio (at most 11) |'
  echo '|---|---|---|---|'
  local key id ratio
  for key in "${!walls[@]}"; do
    [[ $key == 100.* ]] || continue
    id=${key#100.}
    [ -n "${walls[1000.$id]:-}" ] || continue
    ratio=$(calc "printf \"%.1f\", ${walls[1000.$id]} / (${walls[$key]} > 0 ? ${walls[$key]} : 0.001)")
    echo "| \`$id\` | ${walls[$key]} | ${walls[1000.$id]} | $ratio: $(calc "print ($ratio <= 11) ? \"yes\" : \"**no**\"") |"
  done | sort
  return 0
}

# The worst linearity ratio of genetrain's commands, for the summary.
note_linearity() {
  [ -n "${walls[100.stat]:-}" ] && [ -n "${walls[1000.stat]:-}" ] || return 0
  local key id ratio worst=0 worst_id=""
  for key in "${!walls[@]}"; do
    [[ $key == 100.* ]] || continue
    id=${key#100.}
    [[ $id == seqkit* || $id == bedtools* || $id == cat ]] && continue
    [ -n "${walls[1000.$id]:-}" ] || continue
    ratio=$(calc "printf \"%.1f\", ${walls[1000.$id]} / (${walls[$key]} > 0 ? ${walls[$key]} : 0.001)")
    if calc "exit !($ratio > $worst)"; then worst=$ratio worst_id=$id; fi
  done
  note_target "every command: 1 GB at most 11x the 100 MB wall time" "largest ${worst}x (\`--$worst_id\`)" \
    "$(calc "print ($worst <= 11) ? \"yes\" : \"no\"")"
}

machine_lines() {
  local cpu memory
  cpu=$(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo)
  memory=$(awk '/^MemTotal/ { printf "%.0f GB", $2 / 1e6 }' /proc/meminfo)
  echo "- Run of $(date -u '+%Y-%m-%d %H:%M UTC'), genetrain $(git -C "$root" rev-parse --short HEAD 2> /dev/null || echo '(no git)') plus any local changes."
  echo "- Machine: $cpu, $(nproc) CPUs, $memory RAM, Linux $(uname -r)."
  echo "- Tools: $( [ "$have_seqkit" = 1 ] && seqkit version | head -n 1 || echo 'seqkit missing'), bedtools $(dpkg-query -W -f '${Version}' bedtools 2> /dev/null || echo missing), $(g++ --version | head -n 1)."
  if [ "$with_genes" = 1 ]; then
    echo "- Gene peers: EMBOSS getorf $(dpkg-query -W -f '${Version}' emboss 2> /dev/null || echo missing), Glimmer long-orfs $(dpkg-query -W -f '${Version}' tigr-glimmer 2> /dev/null || echo missing) (Debian packages \`emboss\`, \`tigr-glimmer\`)."
  fi
  echo "- Timed runs of each command: $runs, alternating with its peer; medians shown.$(
    [ "$with_genes" = 1 ] && echo " Gene commands on E. coli: $gene_runs runs each.")"
  echo "- Load average (1, 5, 15 min) at the start: $(cut -d ' ' -f 1-3 /proc/loadavg)."
}

model_lines() {
  echo "- Run of $(date -u '+%Y-%m-%d %H:%M UTC'), genetrain $(git -C "$root" rev-parse --short HEAD 2> /dev/null || echo '(no git)') plus any local changes."
  echo "- Machine: $(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo), $(nproc) CPUs; $(gcc --version | head -n 1); Prodigal $(dpkg-query -W -f '${Version}' prodigal 2> /dev/null || echo missing), Glimmer $(dpkg-query -W -f '${Version}' tigr-glimmer 2> /dev/null || echo missing) (Debian packages \`prodigal\`, \`tigr-glimmer\`)."
  echo "- Timed runs of each command: $model_runs, alternating with its peer, medians shown; orders 10 and 11: ${BENCH_RUNS:-3}; order 12: $order12_runs."
  echo "- Load average (1, 5, 15 min) at the start: $(cut -d ' ' -f 1-3 /proc/loadavg)."
}

# The run's header lines, the summary of the targets noted, then the tables.
with_targets() {
  local header=$1 body=$2
  cat "$header"
  if [ -s "$targets_file" ]; then
    echo
    echo '#### Targets, as measured'
    echo
    echo '| target | measured | |'
    echo '|---|---|---|'
    cat "$targets_file"
  fi
  cat "$body"
}

# Replaces the text between the two markers named $2 in the document by the new results.
update_doc() {
  local results=$1 name=$2
  if [ -z "$doc" ]; then cat "$results"; return; fi
  if [ ! -e "$doc" ] || ! grep -q "^<!-- $name:begin -->\$" "$doc"; then
    say "note: $doc has no $name markers; appending them"
    printf '\n<!-- %s:begin -->\n<!-- %s:end -->\n' "$name" "$name" >> "$doc"
  fi
  awk -v results="$results" -v begin="<!-- $name:begin -->" -v end="<!-- $name:end -->" '
    $0 == begin { print; while ((getline line < results) > 0) print line; skip = 1; next }
    $0 == end { skip = 0 }
    !skip { print }' "$doc" > "$doc.new"
  mv "$doc.new" "$doc"
  say "updated $doc"
}

main() {
  check_tools
  build_generator
  local results=$scratch/results.md header=$scratch/header.md body=$scratch/body.md size
  rm -f "$scaling_file" "$targets_file"
  # A run of the model commands alone leaves the other results in place, and the other way round.
  if [ -n "${sizes// /}" ] || [ "$with_genes" = 1 ]; then
    machine_lines > "$header"
    {
      for size in $sizes; do run_size "$size"; done
      linearity
      note_linearity
      run_compressed
      if [ "$with_genes" = 1 ]; then run_genes; fi
      echo
      echo "Whole run: $(($(date +%s) - started)) s including input generation."
    } > "$body"
    rm -rf "$scratch/out"
    purge_kept
    with_targets "$header" "$body" > "$results"
    update_doc "$results" bench-results
    if [ -n "$plot" ] && plot_scaling "$scaling_file" "$plot"; then say "drew $plot"; fi
  fi
  [ "$with_model" = 1 ] || return 0
  local model_started
  model_started=$(date +%s)
  rm -f "$targets_file"
  model_lines > "$header"
  {
    run_model
    echo
    echo "Model commands: $(($(date +%s) - model_started)) s."
  } > "$body"
  rm -rf "$scratch/out"
  with_targets "$header" "$body" > "$results"
  update_doc "$results" bench-model
}

main "$@"
