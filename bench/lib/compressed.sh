# Compressed inputs: `--stat` on the largest input packed by gzip and on the smallest packed by
# bzip2, xz and zstd, each against `seqkit stats -a -j 1` on the same file; Debian's seqkit reads
# gzip only, so the others reach it through their own decoder and a pipe. Sourced by
# bench/run.sh.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154  # settings and results shared with bench/run.sh
# shellcheck disable=SC2016  # the backquotes in printf formats are Markdown

# `--stat` of the gzip input: at most this share of seqkit's time.
gzip_stat_limit=0.25

# Prints the name of the input of the given size packed by the given program (gzip, bzip2, xz,
# zstd) at its default level, making it when absent.
packed_input() {
  local size=$1 tool=$2 plain file
  plain=$(input_file "$size")
  case $tool in
    gzip) file=$plain.gz ;;
    bzip2) file=$plain.bz2 ;;
    xz) file=$plain.xz ;;
    zstd) file=$plain.zst ;;
  esac
  if [ ! -s "$file" ]; then
    say "packing $plain with $tool"
    "$tool" -c "$plain" > "$file.part"
    mv "$file.part" "$file"
  fi
  printf '%s\n' "$file"
}

# One timed run of the command after the key, as measure() times the commands of commands.sh.
measure_command() {
  local key=$1 timing=$scratch/time.txt begin end
  shift
  begin=$EPOCHREALTIME
  /usr/bin/time -f '%U %S %M' -o "$timing" "$@" > /dev/null 2>&1 || true
  end=$EPOCHREALTIME
  tail -n 1 "$timing" | awk -v begin="$begin" -v end="$end" \
    '{ printf "%.3f %.2f %d\n", end - begin, $1 + $2, $3 }' >> "$scratch/times.$key"
}

# One table row: genetrain's --stat and seqkit's stats on the packed file, alternating, after one
# run of each to warm up; then the counts checked against those of the plain file.
compressed_row() {
  local size=$1 tool=$2 in plain key ours_wall ours_cpu ours_rss ratio="" target="" r
  plain=$(input_file "$size")
  in=$(packed_input "$size" "$tool")
  key=$size.$tool
  local ours=("$bin" --stat "$scratch/stat.txt" --seq "$in") peer peer_shown
  if [ "$tool" = gzip ]; then
    peer=(seqkit stats -a -j 1 "$in") peer_shown='seqkit stats -a -j 1 F'
  else
    peer=(bash -c "$tool -dc \"\$1\" | seqkit stats -a -j 1" - "$in")
    peer_shown="$tool -dc F \\| seqkit stats -a -j 1"  # the bar escaped for the Markdown table
  fi
  say "  --stat on $in vs ${peer_shown//\\|/|}"
  rm -f "$scratch/times.$key.a" "$scratch/times.$key.b"
  for ((r = 0; r <= runs; r++)); do
    measure_command "$key.a" "${ours[@]}"
    [ "$have_seqkit" = 1 ] && measure_command "$key.b" "${peer[@]}"
    if [ "$r" = 0 ]; then rm -f "$scratch/times.$key.a" "$scratch/times.$key.b"; fi
  done
  rm -f "$scratch/stat.txt"
  summarise "$key.a"
  ours_wall=$WALL ours_cpu=$CPU ours_rss=$RSS_MB
  local peer_wall="-"
  if [ "$have_seqkit" = 1 ]; then
    summarise "$key.b"
    peer_wall=$WALL
    ratio=$(calc "printf \"%.2f\", $ours_wall / ($WALL > 0 ? $WALL : 0.01)")
  fi
  if [ "$tool" = gzip ] && [ -n "$ratio" ]; then
    local ok
    ok=$(calc "print ($ratio <= $gzip_stat_limit) ? \"yes\" : \"no\"")
    target="${gzip_stat_limit}x stats: $ok"
    note_target "\`--stat\` on the gzip-compressed $size MB input at most ${gzip_stat_limit}x \`seqkit stats -a -j 1\`" "${ratio}x" "$ok"
  fi
  printf '| %s, %s MB (%s MB packed) | %s | %s | %s | `%s` | %s | %s | %s |\n' "$tool" "$size" \
    "$(calc "printf \"%.0f\", $(stat -c %s "$in") / 1e6")" "$ours_wall" "$ours_cpu" "$ours_rss" \
    "$peer_shown" "$peer_wall" "$ratio" "$target"
  # The same counts as from the plain file, the label aside.
  local o=$scratch/out
  rm -rf "$o" && mkdir -p "$o"
  "$bin" --stat "$o/packed.txt" --seq "$in" 2> /dev/null || true
  "$bin" --stat "$o/plain.txt" --seq "$plain" 2> /dev/null || true
  if cmp -s <(tail -n +2 "$o/packed.txt") <(tail -n +2 "$o/plain.txt"); then
    checks+=("- \`--stat\` of the $tool file equals that of the plain file.")
  else
    checks+=("- **\`--stat\` of the $tool file differs from that of the plain file.**")
  fi
  rm -rf "$o"
}

run_compressed() {
  local smallest="" largest="" size tool
  for size in $sizes; do
    if [ -z "$smallest" ] || [ "$size" -lt "$smallest" ]; then smallest=$size; fi
    if [ -z "$largest" ] || [ "$size" -gt "$largest" ]; then largest=$size; fi
  done
  [ -n "$largest" ] || return 0
  for tool in gzip bzip2 xz zstd; do
    command -v "$tool" > /dev/null || install_from_debian "$tool" || return 0
  done
  checks=()
  echo
  echo '### Compressed input: `genetrain --stat out.txt --seq F` against seqkit'
  echo
  echo 'Each file as its program packs it by default; medians of the runs, alternating.'
  echo
  echo '| input F | genetrain wall s | CPU s | peak RSS MB | peer | peer wall s | wall ratio | target |'
  echo '|---|---|---|---|---|---|---|---|'
  compressed_row "$largest" gzip
  for tool in bzip2 xz zstd; do compressed_row "$smallest" "$tool"; done
  echo
  printf '%s\n' "${checks[@]}"
}
