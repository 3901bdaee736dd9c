# Running and timing commands, medians, and the verdicts on the targets. Sourced by
# bench/run.sh.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154  # settings and results shared with bench/run.sh
# shellcheck disable=SC2016  # the backquotes in printf formats are Markdown

say() { printf '%s\n' "$*" >&2; }

calc() { awk "BEGIN { $1 }"; }

# Commands that write one file per record get a fresh folder for every run, kept until the end
# of the input size: ext4 skips recently deleted inodes when it makes new ones, which makes
# creating thousands of files right after deleting thousands take 10 to 20 times as long (the
# kernel's find_inode_bit and recently_deleted dominate the profile then). Sets KEEP.
fresh_keep() {
  mkdir -p "$scratch/keep"
  KEEP=$(mktemp -d "$scratch/keep/run.XXXXXX")
}

# Deletes the kept folders and notes the time, for wait_after_purge.
last_purge=0
purge_kept() {
  if [ -d "$scratch/keep" ]; then
    rm -rf "$scratch/keep"
    last_purge=$(date +%s)
  fi
}

# Waits until the file system no longer treats the last deleted inodes as recent (30 s).
wait_after_purge() {
  local left=$((last_purge + 31 - $(date +%s)))
  if [ "$left" -gt 0 ]; then
    say "  waiting ${left} s for the deleted files to age (ext4 inode allocation)"
    sleep "$left"
  fi
}

# The bytes of output a command wrote in its last run.
output_bytes() {
  local id=$1
  case $id in
    split | seqkit_split2) du -sb "$KEEP" | cut -f 1 ;;
    *) du -sb "$scratch/out" | cut -f 1 ;;
  esac
}

# Runs a command once untimed (warming up) and prints "ok", "not yet available" (the build does
# not provide it yet), "missing" (the peer is not installed) or "failed (status N)".
probe() {
  local id=$1 in=$2 status=0
  fresh_keep
  command_for "$id" "$in"
  if ! command -v "${CMD[0]}" > /dev/null; then echo missing; return; fi
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

# This VM reports the memory its kernel frees to the host, which takes it back (free page
# reporting), and a page cache page on such memory costs several times as much to write (the kernel's copy_folio_from_iter_atomic
# then dominates). Without a level start, a command that follows a larger output's deletion gets
# more of the cheap, recently freed pages than its peer. So before each timed run of a command
# that writes, a file of 2.5 times the input (more than any output here) is written and deleted.
settle_memory() {
  local id=$1 in=$2
  case $id in
    clean_join | clean | clean_fasta | mask | split | seqkit_seq* | seqkit_split2 | seqkit_replace | bedtools_maskfasta) ;;
    *) return 0 ;;
  esac
  local mb=$(($(stat -c %s "$in") * 5 / 2 / 1048576 + 1))
  dd if=/dev/zero of="$scratch/settle" bs=1M count="$mb" status=none
  rm -f "$scratch/settle"
}

# One timed run; appends "wall cpu rss_kb" to $scratch/times.<key> and notes the bytes the
# command wrote in OUT_BYTES[id].
declare -A OUT_BYTES=()
measure() {
  local key=$1 id=$2 in=$3 timing=$scratch/time.txt
  fresh_keep
  command_for "$id" "$in"
  rm -rf "$scratch/out" && mkdir -p "$scratch/out"
  settle_memory "$id" "$in"
  local begin=$EPOCHREALTIME end
  /usr/bin/time -f '%U %S %M' -o "$timing" "${CMD[@]}" > "$OUT" 2> /dev/null || true
  end=$EPOCHREALTIME
  OUT_BYTES[$id]=$(output_bytes "$id")
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

# Notes one target's result for the summary table: target, measured, met ("yes"/"no").
note_target() {
  printf '| %s | %s | %s |\n' "$1" "$2" "$([ "$3" = yes ] && echo met || echo '**missed**')" >> "$targets_file"
}

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
  local ours_wall="" ours_bytes=${OUT_BYTES[$ours]:-0}
  command_for "$ours" "$in"
  if [ "$ours_state" = ok ]; then
    summarise "$size.$ours.$peer.a"
    ours_wall=$WALL
    # A command timed against two peers keeps its first result for the plot and the linearity.
    [ -n "${walls[$size.$ours]:-}" ] || walls[$size.$ours]=$WALL peak_mb[$size.$ours]=$RSS_MB
    ours_row="| $WALL | $CPU | $RSS_MB | $(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
    ours_rss=$RSS_MB
  else
    ours_row="| $ours_state | | | "
  fi
  local ours_shown=$SHOWN
  command_for "$peer" "$in"
  local ratio="" verdict="" digits=2
  # The model commands take about 1 % of their peer's time: a third digit shows it.
  [ "$size" = model ] && digits=3
  if [ "$peer_state" = ok ]; then
    summarise "$size.$ours.$peer.b"
    walls[$size.$peer]=$WALL
    peer_row="| $WALL | $CPU | $RSS_MB | $(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.01)")"
    [ -n "$ours_wall" ] && ratio=$(calc "printf \"%.${digits}f\", $ours_wall / ($WALL > 0 ? $WALL : 0.01)")
  else
    peer_row="| $peer_state | | | "
  fi
  if [ -n "$ours_wall" ]; then
    verdict=$(verdict "$ours" "$ours_wall" "$ratio" "$ours_rss" "$mb" "$peer" "$ours_bytes" "$size")
  fi
  printf '| `%s` %s | %s | %s |\n' "$ours_shown" "$ours_row" "$ratio" "$verdict"
  printf '| `%s` %s | | |\n' "$SHOWN" "$peer_row"
}

# The targets of docs/performance.md, judged on one result: id, wall, ratio to the peer, peak
# RSS (MB), input MB, peer id, output bytes, size label. Notes the ones the summary lists.
verdict() {
  local id=$1 wall=$2 ratio=$3 peak=$4 mb=$5 peer=${6:-} size=${8:-} speed="" memory=""
  local rate ok
  rate=$(calc "printf \"%.0f\", $mb / ($wall > 0 ? $wall : 0.01)")
  case $id in
    stat | gc | stat_fasta | count_substring_n | count_substring_atcg)
      [ -n "$ratio" ] || return 0
      local limit=1.0 short="1.0x fx2tab" peer_shown='`seqkit fx2tab -n -l -g -B N`'
      if [ "$peer" = seqkit_stats ]; then
        limit=0.5 short="0.5x stats" peer_shown='`seqkit stats -a -j 1`'
      fi
      ok=$(calc "print ($ratio <= $limit) ? \"yes\" : \"no\"")
      speed="$short: $ok"
      [ "$size" = 1000 ] && note_target "\`--$id\` at most ${limit}x $peer_shown (1 GB)" "${ratio}x" "$ok"
      # Memory once per command, with its second peer.
      if [ "$peer" != seqkit_stats ]; then
        ok=$(calc "print ($peak <= $counting_memory_mb) ? \"yes\" : \"no\"")
        memory="; memory: $ok"
        [ "$size" = 1000 ] && note_target "\`--$id\` peak memory at most ${counting_memory_mb} MB (1 GB)" "$peak MB" "$ok"
      fi ;;
    clean_join | clean | split | mask | clean_fasta)
      # Each against its peer: the joins and the renaming at most 1.0x, --mask at most 0.5x,
      # --split at most 1.0x split2 on 100 MB; the other pairs are shown for information.
      local limit="" peer_shown memory_limit=$streamed_memory_mb
      case $id.$peer in
        clean_join.seqkit_seq_s | clean.seqkit_seq_s) limit=1.0 peer_shown='`seqkit seq -w 0 -s`' ;;
        clean_fasta.seqkit_replace) limit=1.0 peer_shown='`seqkit replace`' ;;
        mask.bedtools_maskfasta) limit=0.5 peer_shown='`bedtools maskfasta`' ;;
        split.seqkit_split2) limit=1.0 peer_shown='`seqkit split2 -s 1`' memory_limit=$split_memory_mb ;;
        split.*) memory_limit=$split_memory_mb ;;
      esac
      # --mask holds nothing but its intervals: its bound is the record (about the input) + 64 MB.
      [ "$id" = mask ] && memory_limit=$(calc "printf \"%.0f\", $mb + $split_memory_mb")
      if [ -n "$limit" ] && [ -n "$ratio" ]; then
        ok=$(calc "print ($ratio <= $limit) ? \"yes\" : \"no\"")
        speed="${limit}x: $ok"
        local at=1000 shown_size="1 GB"
        [ "$peer" = seqkit_split2 ] && at=100 shown_size="100 MB"
        [ "$size" = "$at" ] && note_target "\`--$id\` at most ${limit}x $peer_shown ($shown_size)" "${ratio}x" "$ok"
      fi
      ok=$(calc "print ($peak <= $memory_limit) ? \"yes\" : \"no\"")
      memory="${speed:+; }memory: $ok"
      if [ -n "$limit" ] && [ "$size" = 1000 ]; then
        note_target "\`--$id\` peak memory at most $memory_limit MB (1 GB)" "$peak MB" "$ok"
      elif [ -n "$limit" ] && [ "$peer" = seqkit_split2 ] && [ "$size" = 100 ]; then
        note_target "\`--$id\` peak memory at most $memory_limit MB (100 MB)" "$peak MB" "$ok"
      fi ;;
    orf)
      [ "$peer" = getorf ] && [ -n "$ratio" ] || return 0
      ok=$(calc "print ($ratio <= 0.1) ? \"yes\" : \"no\"")
      speed="0.1x: $ok"
      note_target '`--orf` at most 0.1x `getorf -find 1` (*E. coli*)' "${ratio}x" "$ok" ;;
    parse | pre_start)
      ok=$(calc "print ($wall < 0.05) ? \"yes\" : \"no\"")
      speed="under 50 ms: $ok"
      note_target "\`--$id\` under 50 ms (*E. coli*)" "$wall s" "$ok" ;;
    mkmod | mkchain5) speed=$(model_verdict "$id" "$wall" "$ratio" "$peer") ;;
  esac
  printf '%s%s' "$speed" "$memory"
}

model_verdict() {
  local id=$1 wall=$2 ratio=$3 peer=$4 ok speed
  [ -n "$ratio" ] || return 0
  case $peer in
    kmer_floor)
      local limit=2
      [ "$id" = mkmod ] && limit=1.5
      ok=$(calc "print ($ratio <= $limit) ? \"yes\" : \"no\"")
      speed="within ${limit}x of floor: $ok"
      note_target "\`--$id\` within ${limit}x of the k-mer floor" "${ratio}x" "$ok" ;;
    prodigal_train)
      ok=$(calc "print ($wall < 0.1) ? \"yes\" : \"no\"")
      speed="under 100 ms: $ok"
      ok=$(calc "print ($ratio <= 0.03) ? \"yes\" : \"no\"")
      speed+="; 0.03x: $ok"
      note_target "\`--$id\` at most 0.03x Prodigal's training" "${ratio}x" "$ok" ;;
    *) return 0 ;;
  esac
  printf '%s' "$speed"
}

# Times commands without a peer, round-robin, and prints a row each. With a base input name
# ($4), the ratio column holds the wall time over that of the same command on the base input.
run_alone() {
  local size=$1 in=$2 mb=$3 base=$4 limit=$5 id r ratio verdict
  shift 5
  local -A state=()
  for id in "$@"; do
    state[$id]=$(probe "$id" "$in")
    say "  $id (${state[$id]})"
    rm -f "$scratch/times.$size.$id"
  done
  for ((r = 1; r <= runs; r++)); do
    for id in "$@"; do [ "${state[$id]}" = ok ] && measure "$size.$id" "$id" "$in"; done
  done
  for id in "$@"; do
    command_for "$id" "$in"
    if [ "${state[$id]}" != ok ]; then
      printf '| `%s` | %s | | | | | |\n' "$SHOWN" "${state[$id]}"
      continue
    fi
    summarise "$size.$id"
    walls[$size.$id]=$WALL
    peak_mb[$size.$id]=$RSS_MB
    ratio="" verdict=""
    if [ -n "$base" ] && [ -n "${walls[$base.$id]:-}" ]; then
      ratio=$(calc "printf \"%.1f\", $WALL / (${walls[$base.$id]} > 0 ? ${walls[$base.$id]} : 0.001)")
      [ "${CMD[0]}" = "$bin" ] &&
        verdict=$(calc "print ($ratio <= $limit) ? \"at most ${limit}x: yes\" : \"at most ${limit}x: no\"")
    elif [ -z "$base" ]; then
      verdict=$(verdict "$id" "$WALL" "" "$RSS_MB" "$mb")
    fi
    printf '| `%s` | %s | %s | %s | %s | %s | %s |\n' "$SHOWN" "$WALL" "$CPU" "$RSS_MB" \
      "$(calc "printf \"%.0f\", $mb / ($WALL > 0 ? $WALL : 0.001)")" "$ratio" "$verdict"
  done
}
