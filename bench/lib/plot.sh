# The scaling plot: wall time and peak memory against input size, log-log, one line per
# command, written as SVG by awk. Sourced by bench/run.sh.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154  # settings and results shared with bench/run.sh

# plot_scaling DATA SVG: DATA holds lines "input_MB command wall_s peak_MB"; commands are drawn
# in the order they first appear. Needs two sizes at least; prints nothing otherwise.
plot_scaling() {
  local data=$1 svg=$2 stamp
  stamp="$(date -u '+%Y-%m-%d %H:%M UTC'), genetrain $(git -C "$root" rev-parse --short HEAD 2> /dev/null || echo '?')"
  awk -v stamp="$stamp" -f "$root/bench/lib/scaling.awk" "$data" > "$svg.part" || {
    rm -f "$svg.part"
    return 1
  }
  mv "$svg.part" "$svg"
}
