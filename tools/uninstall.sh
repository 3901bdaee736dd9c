#!/usr/bin/env bash
# Removes what tools/install.sh recorded since the last uninstall: every file of INSTALLED_FILES,
# then those folders of INSTALLED_DIRS that are empty by then; then the two lists. `make uninstall`
# calls it. Relative paths are taken from the current folder:
#   BUILD_DIR=build INSTALLED_FILES=build/installed_files.txt \
#   INSTALLED_DIRS=build/installed_dirs.txt bash tools/uninstall.sh
# (those are the defaults; BUILD_DIR only names the build folder in the messages).
set -euo pipefail
build_dir=${BUILD_DIR:-build}
installed_files=${INSTALLED_FILES:-$build_dir/installed_files.txt}
installed_dirs=${INSTALLED_DIRS:-$build_dir/installed_dirs.txt}

if [ ! -e "$installed_files" ] && [ ! -e "$installed_dirs" ]; then
  echo "uninstall: nothing to remove (no install from $build_dir since the last uninstall)"
  exit 0
fi
list=$(mktemp)
trap 'rm -f "$list"' EXIT
files=0
dirs=0
# An interrupted install may have written one list and not the other.
touch "$installed_files" "$installed_dirs"
# Several installs since the last uninstall name the same files more than once.
LC_ALL=C sort -u "$installed_files" > "$list"
while IFS= read -r file; do
  # -L as well: a dangling symbolic link is still the install's.
  if [ -e "$file" ] || [ -L "$file" ]; then rm -f "$file"; files=$((files + 1)); fi
done < "$list"
# In reverse order, so that a folder comes before its parent, which it may leave empty. Folders
# that hold anything else, such as a file the user put there, stay.
LC_ALL=C sort -ru "$installed_dirs" > "$list"
while IFS= read -r dir; do
  if [ -d "$dir" ] && [ -z "$(ls -A "$dir")" ]; then rmdir "$dir"; dirs=$((dirs + 1)); fi
done < "$list"
rm -f "$installed_files" "$installed_dirs"
echo "uninstall: removed $files files and $dirs empty folders that the install had made"
