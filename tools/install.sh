#!/usr/bin/env bash
# Installs the build folder's programs and files with `cmake --install` under PREFIX, below
# DESTDIR if set, and records them for tools/uninstall.sh; `make install` calls it. Relative
# paths are taken from the current folder:
#   BUILD_DIR=build PREFIX=/usr/local DESTDIR= \
#   INSTALLED_FILES=build/installed_files.txt INSTALLED_DIRS=build/installed_dirs.txt \
#     bash tools/install.sh
# (those are the defaults). Appends every installed file, DESTDIR included, to INSTALLED_FILES
# and every folder this install made to INSTALLED_DIRS.
set -euo pipefail
build_dir=${BUILD_DIR:-build}
installed_files=${INSTALLED_FILES:-$build_dir/installed_files.txt}
installed_dirs=${INSTALLED_DIRS:-$build_dir/installed_dirs.txt}
# Absolute and without . or .. (symbolic links kept), as make's $(abspath) makes them: the lists
# must name the same files and folders whatever folder uninstall runs in.
prefix=$(realpath -m -s -- "${PREFIX:-/usr/local}")
root=
if [ -n "${DESTDIR:-}" ]; then root=$(realpath -m -s -- "$DESTDIR"); fi

stage=$(mktemp -d)
trap 'rm -rf "$stage" "$stage.dirs"' EXIT
# CMake's install_manifest.txt names files only; the folders the install will make are those a
# trial install into a scratch folder makes that do not exist yet under the real root.
DESTDIR="$stage" cmake --install "$build_dir" --prefix "$prefix" > /dev/null
(cd "$stage" && find . -mindepth 1 -type d | sed 's|^\.||') | while IFS= read -r dir; do
  [ -e "$root$dir" ] || printf '%s\n' "$root$dir"
done > "$stage.dirs"
# The trial install starts below DESTDIR, so DESTDIR itself and its missing parents are added here.
dir=$root
while [ -n "$dir" ] && [ ! -e "$dir" ]; do
  printf '%s\n' "$dir" >> "$stage.dirs"
  dir=$(dirname "$dir")
done

echo "DESTDIR=$root cmake --install $build_dir --prefix $prefix"
DESTDIR="$root" cmake --install "$build_dir" --prefix "$prefix"
# Appended, not overwritten: uninstall removes what every install since the last uninstall made.
cat "$stage.dirs" >> "$installed_dirs"
# The manifest lists the files without DESTDIR, and its last line has no newline, which awk reads.
awk -v root="$root" '{ print root $0 }' "$build_dir/install_manifest.txt" >> "$installed_files"
