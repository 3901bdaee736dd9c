# What the end-to-end scripts of genefind share: the failure message, a scratch folder and the
# accuracy floors. Sourced by them.
# shellcheck shell=bash

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

# A folder of their own for the files of the run, removed at exit; it becomes the current one.
enter_scratch() {
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  cd "$work" || exit 1
}

# Fails unless the line of bench/gene_accuracy.py reaches each floor, in %:
# accuracy_floors REPORT SENSITIVITY PRECISION START_AGREEMENT.
accuracy_floors() {
  python3 - "$@" << 'PY' || fail "accuracy below the floor (${2} / ${3} / ${4}): $1"
import re, sys
figures = dict(re.findall(r"(sensitivity|precision|start agreement) ([0-9.]+) %", sys.argv[1]))
floors = zip(("sensitivity", "precision", "start agreement"), map(float, sys.argv[2:5]))
sys.exit(1 if any(float(figures[name]) < floor for name, floor in floors) else 0)
PY
}
