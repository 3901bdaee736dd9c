# The scaling plot of bench/run.sh as SVG: reads lines "input_MB command wall_s peak_MB" and draws
# wall time and peak memory against input size, log-log, one line per command in the order the
# commands first appear ("cat" dashed, time only). Exits with status 1 below two sizes.
#   awk -v stamp="date, version" -f scaling.awk data.tsv > plot.svg
function lg(v) { return log(v) / log(10) }
function floor_(v) { return v == int(v) ? v : (v < 0 ? int(v) - 1 : int(v)) }
function ceil_(v) { return v == int(v) ? v : (v < 0 ? int(v) : int(v) + 1) }
function px(v, lo, hi, left) { return left + (lg(v) - lo) / (hi - lo) * pw }
function py(v, lo, hi) { return top + ph - (lg(v) - lo) / (hi - lo) * ph }
function label(v) {
  if (v >= 1000) return (v / 1000) " k"
  if (v >= 1) return v
  return sprintf("%g", v)
}
function axes(left, title, ylo, yhi, unit,   d, x, y, v) {
  printf "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"none\" stroke=\"#888\"/>\n", left, top, pw, ph
  printf "<text x=\"%d\" y=\"%d\" font-size=\"15\" text-anchor=\"middle\">%s</text>\n", left + pw / 2, top - 12, title
  for (d = xlo; d <= xhi; d++) {
    v = 10 ^ d; x = px(v, xlo, xhi, left)
    printf "<line x1=\"%.1f\" y1=\"%d\" x2=\"%.1f\" y2=\"%d\" stroke=\"#ddd\"/>\n", x, top, x, top + ph
    printf "<text x=\"%.1f\" y=\"%d\" font-size=\"12\" text-anchor=\"middle\">%s</text>\n", x, top + ph + 16, label(v)
  }
  for (d = ylo; d <= yhi; d++) {
    v = 10 ^ d; y = py(v, ylo, yhi)
    printf "<line x1=\"%d\" y1=\"%.1f\" x2=\"%d\" y2=\"%.1f\" stroke=\"#ddd\"/>\n", left, y, left + pw, y
    printf "<text x=\"%d\" y=\"%.1f\" font-size=\"12\" text-anchor=\"end\">%s</text>\n", left - 6, y + 4, label(v)
  }
  printf "<text x=\"%d\" y=\"%d\" font-size=\"12\" text-anchor=\"middle\">input size (MB)</text>\n", left + pw / 2, top + ph + 34
  printf "<text x=\"%d\" y=\"%d\" font-size=\"12\" text-anchor=\"middle\" transform=\"rotate(-90 %d %d)\">%s</text>\n", left - 44, top + ph / 2, left - 44, top + ph / 2, unit
}
function series(left, col, ylo, yhi,   i, k, id, path, x, y) {
  for (i = 1; i <= ids; i++) {
    id = order[i]; path = ""
    for (k = 1; k <= count[id]; k++) {
      if (col == 4 && id == "cat") continue
      x = px(size[id, k], xlo, xhi, left); y = py(val[id, k, col], ylo, yhi)
      path = path (path == "" ? "M" : " L") sprintf("%.1f %.1f", x, y)
      printf "<circle cx=\"%.1f\" cy=\"%.1f\" r=\"3\" fill=\"%s\"/>\n", x, y, colour[i]
    }
    if (path != "") printf "<path d=\"%s\" fill=\"none\" stroke=\"%s\" stroke-width=\"2\"%s/>\n", path, colour[i], id == "cat" ? " stroke-dasharray=\"5 4\"" : ""
  }
}
NF == 4 && $1 > 0 && $3 > 0 && $4 > 0 {
  if (!($2 in count)) { order[++ids] = $2; count[$2] = 0 }
  k = ++count[$2]; size[$2, k] = $1; val[$2, k, 3] = $3; val[$2, k, 4] = $4
  if (!(lo_x) || $1 < lo_x) lo_x = $1
  if ($1 > hi_x) hi_x = $1
  if (!(lo_t) || $3 < lo_t) lo_t = $3
  if ($3 > hi_t) hi_t = $3
  if ($2 != "cat") { if (!(lo_m) || $4 < lo_m) lo_m = $4; if ($4 > hi_m) hi_m = $4 }
  sizes[$1] = 1
}
END {
  n = 0; for (s in sizes) n++
  if (n < 2) exit 1
  split("#1f77b4 #ff7f0e #2ca02c #d62728 #9467bd #8c564b #e377c2 #17becf #7f7f7f #bcbd22", colour, " ")
  for (i = 1; i <= ids; i++) if (order[i] == "cat") colour[i] = "#555"
  pw = 360; ph = 300; top = 60
  xlo = floor_(lg(lo_x)); xhi = ceil_(lg(hi_x))
  tlo = floor_(lg(lo_t)); thi = ceil_(lg(hi_t)); if (thi == tlo) thi++
  mlo = floor_(lg(lo_m)); mhi = ceil_(lg(hi_m)); if (mhi == mlo) mhi++
  printf "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"1040\" height=\"%d\" font-family=\"sans-serif\">\n", top + ph + 70 + 18 * int((ids + 3) / 4)
  printf "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n"
  printf "<text x=\"520\" y=\"22\" font-size=\"16\" text-anchor=\"middle\">genetrain on metagenome-like FASTA: time and memory against input size (%s)</text>\n", stamp
  axes(90, "wall time (median)", tlo, thi, "seconds")
  series(90, 3, tlo, thi)
  axes(620, "peak resident memory (median)", mlo, mhi, "MB")
  series(620, 4, mlo, mhi)
  for (i = 1; i <= ids; i++) {
    x = 90 + ((i - 1) % 4) * 230; y = top + ph + 60 + 18 * int((i - 1) / 4)
    printf "<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"%s\" stroke-width=\"3\"%s/>\n", x, y - 4, x + 24, y - 4, colour[i], order[i] == "cat" ? " stroke-dasharray=\"5 4\"" : ""
    printf "<text x=\"%d\" y=\"%d\" font-size=\"13\">%s</text>\n", x + 30, y, order[i] == "cat" ? "cat F (reading floor)" : "--" order[i]
  }
  print "</svg>"
}
