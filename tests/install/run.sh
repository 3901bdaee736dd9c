#!/usr/bin/env bash
# Tests of the install and of the Debian package:
#   run.sh install [BUILD_DIR]   `make test-install`: the programs must be built
#   run.sh package [BUILD_DIR]   `make test-package`: checks the newest genetrain_*.deb there
# BUILD_DIR (default build) is taken from the current folder. The install test goes through the
# Makefile's install and uninstall targets (MAKE, default make, runs them), so that their wiring
# to tools/install.sh and tools/uninstall.sh is tested too.
set -euo pipefail
repo=$(cd "$(dirname "$0")/../.." && pwd)
mode=${1:-}
build_dir=${2:-build}
make=${MAKE:-make}

# Install, the installed demo and uninstall in a scratch folder, with lists of their own so that
# a real install stays on record. The installed demo.sh, run without arguments from an empty
# folder, must take the program installed beside it over the one on the PATH (a stand-in that
# fails) and write into ./genetrain-demo alone; uninstall must keep the folders that were there
# before, even an empty one, and a foreign file, and remove the rest; with DESTDIR, everything,
# even after a second install over the first, which finds its folders already there.
test_install() {
  local pre vars sums file left dest
  build_dir=$(realpath -m -- "$build_dir")
  # Global, not local: the EXIT trap reads it after this function has returned.
  root=$(mktemp -d)
  trap 'rm -rf "$root"' EXIT
  pre=$root/prefix
  mkdir -p "$pre/bin" "$pre/share/man/man1" "$root/path" "$root/run"
  touch "$pre/bin/other"
  printf '#!/bin/sh\nexit 3\n' > "$root/path/genetrain"
  chmod +x "$root/path/genetrain"
  vars=(BUILD_DIR="$build_dir" INSTALLED_FILES="$root/files.txt" INSTALLED_DIRS="$root/dirs.txt")
  # The build folder's own lists must stay as they are after every step: a target that ignored
  # INSTALLED_FILES or INSTALLED_DIRS would pass every other check here, and its uninstall would
  # take a real install's files with it.
  list_sums() {
    local list
    for list in "$build_dir/installed_files.txt" "$build_dir/installed_dirs.txt"; do
      if [ -e "$list" ]; then cksum < "$list"; else echo "no $list"; fi
    done
  }
  sums=$(list_sums)
  run_make() {
    "$make" -C "$repo" --no-print-directory "$@" "${vars[@]}" > "$root/make.log" ||
      { cat "$root/make.log"; fail "make $1 failed"; }
    [ "$(list_sums)" = "$sums" ] || fail "make $1 changed the lists in $build_dir"
  }

  # DESTDIR= as a DESTDIR given to the make that runs this test reaches these makes too.
  run_make install PREFIX="$pre" DESTDIR=
  for file in bin/genetrain share/man/man1/genetrain.1 share/doc/genetrain/LICENSE \
      bin/genefind share/man/man1/genefind.1 share/doc/genetrain/genefind.md \
      share/doc/genetrain/README.md share/genetrain/examples/demo.sh \
      share/genetrain/workflow/Snakefile; do
    [ -f "$pre/$file" ] || fail "$file not installed"
  done
  [ ! -e "$pre/share/doc/genetrain/copyright" ] || fail "the Debian copyright file installed"
  ls -lR "$pre/share/genetrain" > "$root/examples.before"
  (cd "$root/run" && PATH="$root/path:$PATH" "$pre/share/genetrain/examples/demo.sh") \
    > "$root/demo.log" 2>&1 || { cat "$root/demo.log"; fail "the installed demo failed"; }
  [ -s "$root/run/genetrain-demo/ecoli_rbs.mod" ] || fail "the demo made no model"
  [ "$(ls -A "$root/run")" = genetrain-demo ] || fail "the demo wrote beside genetrain-demo"
  ls -lR "$pre/share/genetrain" | cmp -s - "$root/examples.before" ||
    fail "the demo wrote into the installed folders"
  run_make uninstall
  left=$(cd "$pre" && find . | LC_ALL=C sort | tr '\n' ' ')
  [ "$left" = ". ./bin ./bin/other ./share ./share/man ./share/man/man1 " ] ||
    fail "left after uninstall: $left"

  # A relative DESTDIR is taken from the Makefile's folder, where make runs the install.
  dest=$(realpath --relative-to="$repo" "$root")/dest/dir
  run_make install DESTDIR="$dest" PREFIX=/usr
  [ -x "$root/dest/dir/usr/bin/genetrain" ] || fail "DESTDIR not honoured"
  # The second install finds every folder there and records none: the first one's record counts.
  run_make install DESTDIR="$dest" PREFIX=/usr
  run_make uninstall
  [ ! -e "$root/dest" ] || fail "left after uninstall: $(find "$root/dest" | tr '\n' ' ')"
  run_make uninstall
  grep -q 'nothing to remove' "$root/make.log" || fail "a second uninstall found something"
  echo "test-install: install, installed demo and uninstall passed"
}

# The package must carry the licence as Debian's copyright file, in the machine-readable format,
# and not a second time as LICENSE.
test_package() {
  local deb contents copyright line
  command -v dpkg-deb > /dev/null || fail "needs dpkg-deb (Debian package dpkg)"
  # The newest, as an older version's package may still lie in the build folder.
  deb=$(ls -t "$build_dir"/genetrain_*.deb 2> /dev/null | head -1) || true
  [ -n "$deb" ] || fail "no genetrain_*.deb in $build_dir"
  contents=$(dpkg-deb -c "$deb")
  # Here-strings rather than pipes: with pipefail, grep -q leaving early could fail its writer.
  grep -q ' ./usr/share/doc/genetrain/copyright$' <<< "$contents" ||
    fail "$deb has no usr/share/doc/genetrain/copyright"
  ! grep -q '/LICENSE$' <<< "$contents" || fail "LICENSE in $deb"
  for file in usr/bin/genetrain usr/bin/genefind usr/share/man/man1/genefind.1; do
    grep -q " ./$file\$" <<< "$contents" || fail "$deb has no $file"
  done
  copyright=$(dpkg-deb --fsys-tarfile "$deb" | tar -xO ./usr/share/doc/genetrain/copyright)
  for line in 'Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/' \
      'Files: *' 'Copyright: 2026 the genetrain authors' 'License: Expat' ' SOFTWARE.'; do
    grep -qxF "$line" <<< "$copyright" ||
      fail "no line \"$line\" in the copyright file"
  done
  echo "test-package: $deb carries usr/share/doc/genetrain/copyright"
}

case $mode in
  install | package)
    fail() {
      echo "test-$mode: $*"
      exit 1
    }
    "test_$mode"
    ;;
  *)
    echo "usage: $0 install|package [BUILD_DIR]" >&2
    exit 2
    ;;
esac
