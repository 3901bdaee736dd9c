# Front door of the build: `make` builds the Release binary build/genetrain and the unit tests,
# `make test` builds and runs every test, `make test-sanitize` does the same with
# AddressSanitizer and UndefinedBehaviorSanitizer in build-sanitize/. `make demo` builds the
# programs alone and trains a model on the bundled genome, `make test-workflow` tests the batch
# workflow, `make install PREFIX=...` installs and `make package` makes the Debian package.
BUILD_DIR ?= build
SANITIZE_DIR ?= build-sanitize
JOBS ?= $(shell nproc)
# The programs' CMake targets: `make demo` and `make install` build these alone, since the unit
# tests take two thirds of the build and only `make test` and its kin need them.
PROGRAMS ?= genetrain

.PHONY: all build configure programs test test-sanitize test-valgrind fuzz bench deps format \
  clean demo test-workflow install uninstall package test-install test-package

all: build

deps:
	@bash tools/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

programs: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target $(PROGRAMS)

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

test-sanitize: deps
	cmake -S . -B $(SANITIZE_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DGENETRAIN_SANITIZE=ON
	cmake --build $(SANITIZE_DIR) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir $(SANITIZE_DIR) --output-on-failure -j $(JOBS)

# Every fuzz target for FUZZ_SECONDS seconds (libFuzzer, clang, ASan + UBSan).
FUZZ_SECONDS ?= 30
fuzz:
	bash fuzz/run.sh $(FUZZ_SECONDS)

# The golden command-line cases under valgrind memcheck.
test-valgrind: build
	bash tests/valgrind.sh $(BUILD_DIR)

bench: build
	bash bench/run.sh

# A model trained end to end on the bundled E. coli genome; the files go to DEMO_DIR.
DEMO_DIR ?= $(BUILD_DIR)/demo
demo: programs
	@bash examples/demo.sh $(BUILD_DIR)/genetrain $(DEMO_DIR)

# The Snakemake workflow on two small genomes, locally and through the cluster profiles.
test-workflow: build
	bash tests/workflow/run.sh $(BUILD_DIR)/genetrain

# Installs bin/genetrain, the man page, share/genetrain/{workflow,examples}, the docs and the
# licence under PREFIX (DESTDIR is honoured). `make uninstall`, with no PREFIX or DESTDIR needed,
# removes every file the installs from this build folder put there since the last uninstall, then
# those folders the installs created that are empty by then. CMake's install_manifest.txt lists
# the files without DESTDIR and says nothing of folders, hence the two lists of our own: the
# folders are those a trial install into a scratch folder makes that did not exist yet.
PREFIX ?= /usr/local
INSTALLED_FILES = $(BUILD_DIR)/installed_files.txt
INSTALLED_DIRS = $(BUILD_DIR)/installed_dirs.txt
install_root = $(abspath $(DESTDIR))
install_prefix = $(abspath $(PREFIX))
install: programs
	@set -e; stage=$$(mktemp -d); trap 'rm -rf "$$stage" "$$stage.dirs"' EXIT; \
	DESTDIR="$$stage" cmake --install $(BUILD_DIR) --prefix $(install_prefix) > /dev/null; \
	(cd "$$stage" && find . -mindepth 1 -type d | sed 's|^\.||') | while IFS= read -r dir; do \
	  [ -e "$(install_root)$$dir" ] || printf '%s\n' "$(install_root)$$dir"; \
	done > "$$stage.dirs"; \
	dir="$(install_root)"; while [ -n "$$dir" ] && [ ! -e "$$dir" ]; do \
	  printf '%s\n' "$$dir" >> "$$stage.dirs"; dir=$$(dirname "$$dir"); \
	done; \
	echo "DESTDIR=$(install_root) cmake --install $(BUILD_DIR) --prefix $(install_prefix)"; \
	DESTDIR="$(install_root)" cmake --install $(BUILD_DIR) --prefix $(install_prefix); \
	cat "$$stage.dirs" >> $(INSTALLED_DIRS); \
	awk -v root="$(install_root)" '{ print root $$0 }' $(BUILD_DIR)/install_manifest.txt \
	  >> $(INSTALLED_FILES)

uninstall:
	@set -e; \
	if [ ! -e $(INSTALLED_FILES) ] && [ ! -e $(INSTALLED_DIRS) ]; then \
	  echo "uninstall: nothing to remove (no install from $(BUILD_DIR) since the last uninstall)"; \
	  exit 0; \
	fi; \
	list=$$(mktemp); trap 'rm -f "$$list"' EXIT; files=0; dirs=0; \
	touch $(INSTALLED_FILES) $(INSTALLED_DIRS); \
	LC_ALL=C sort -u $(INSTALLED_FILES) > "$$list"; \
	while IFS= read -r file; do \
	  if [ -e "$$file" ] || [ -L "$$file" ]; then rm -f "$$file"; files=$$((files + 1)); fi; \
	done < "$$list"; \
	LC_ALL=C sort -ru $(INSTALLED_DIRS) > "$$list"; \
	while IFS= read -r dir; do \
	  if [ -d "$$dir" ] && [ -z "$$(ls -A "$$dir")" ]; then rmdir "$$dir"; dirs=$$((dirs + 1)); fi; \
	done < "$$list"; \
	rm -f $(INSTALLED_FILES) $(INSTALLED_DIRS); \
	echo "uninstall: removed $$files files and $$dirs empty folders that the install had made"

# The Debian package genetrain_VERSION_ARCH.deb in BUILD_DIR.
package: build
	cd $(BUILD_DIR) && cpack -G DEB

# The package must carry the licence as Debian's copyright file, in the machine-readable format,
# and not a second time as LICENSE.
test-package: package
	@set -e; deb=$$(ls -t $(BUILD_DIR)/genetrain_*.deb | head -1); \
	contents=$$(dpkg-deb -c "$$deb"); \
	printf '%s\n' "$$contents" | grep -q ' ./usr/share/doc/genetrain/copyright$$' || \
	  { echo "test-package: $$deb has no usr/share/doc/genetrain/copyright"; exit 1; }; \
	! printf '%s\n' "$$contents" | grep -q '/LICENSE$$' || \
	  { echo "test-package: LICENSE in $$deb"; exit 1; }; \
	copyright=$$(dpkg-deb --fsys-tarfile "$$deb" | tar -xO ./usr/share/doc/genetrain/copyright); \
	for line in 'Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/' \
	    'Files: *' 'Copyright: 2026 the genetrain authors' 'License: Expat' ' SOFTWARE.'; do \
	  printf '%s\n' "$$copyright" | grep -qxF "$$line" || \
	    { echo "test-package: no line \"$$line\" in the copyright file"; exit 1; }; \
	done; \
	echo "test-package: $$deb carries usr/share/doc/genetrain/copyright"

# Install, the installed demo and uninstall in a scratch folder, with lists of their own so that
# a real install stays on record. The installed demo.sh, run without arguments from an empty
# folder, must take the program installed beside it over the one on the PATH (a stand-in that
# fails) and write into ./genetrain-demo alone; uninstall must keep the folders that were there
# before, even an empty one, and a foreign file, and remove the rest; with DESTDIR, everything.
test-install: programs
	@set -e; root=$$(mktemp -d); trap 'rm -rf "$$root"' EXIT; \
	fail() { echo "test-install: $$*"; exit 1; }; \
	pre=$$root/prefix; mkdir -p "$$pre/bin" "$$pre/share/man/man1" "$$root/path" "$$root/run"; \
	touch "$$pre/bin/other"; \
	printf '#!/bin/sh\nexit 3\n' > "$$root/path/genetrain"; chmod +x "$$root/path/genetrain"; \
	lists="INSTALLED_FILES=$$root/files.txt INSTALLED_DIRS=$$root/dirs.txt"; \
	$(MAKE) --no-print-directory install PREFIX="$$pre" $$lists > "$$root/make.log"; \
	for file in bin/genetrain share/man/man1/genetrain.1 share/doc/genetrain/LICENSE \
	    share/doc/genetrain/README.md share/genetrain/examples/demo.sh \
	    share/genetrain/workflow/Snakefile; do \
	  [ -f "$$pre/$$file" ] || fail "$$file not installed"; \
	done; \
	[ ! -e "$$pre/share/doc/genetrain/copyright" ] || fail "the Debian copyright file installed"; \
	ls -lR "$$pre/share/genetrain" > "$$root/examples.before"; \
	(cd "$$root/run" && PATH="$$root/path:$$PATH" "$$pre/share/genetrain/examples/demo.sh") \
	  > "$$root/demo.log" 2>&1 || { cat "$$root/demo.log"; fail "the installed demo failed"; }; \
	[ -s "$$root/run/genetrain-demo/ecoli_rbs.mod" ] || fail "the demo made no model"; \
	[ "$$(ls -A "$$root/run")" = genetrain-demo ] || fail "the demo wrote beside genetrain-demo"; \
	ls -lR "$$pre/share/genetrain" | cmp -s - "$$root/examples.before" || \
	  fail "the demo wrote into the installed folders"; \
	$(MAKE) --no-print-directory uninstall $$lists > "$$root/make.log"; \
	left=$$(cd "$$pre" && find . | LC_ALL=C sort | tr '\n' ' '); \
	[ "$$left" = ". ./bin ./bin/other ./share ./share/man ./share/man/man1 " ] || \
	  fail "left after uninstall: $$left"; \
	$(MAKE) --no-print-directory install DESTDIR="$$root/dest/dir" PREFIX=/usr $$lists \
	  > "$$root/make.log"; \
	[ -x "$$root/dest/dir/usr/bin/genetrain" ] || fail "DESTDIR not honoured"; \
	$(MAKE) --no-print-directory uninstall $$lists > "$$root/make.log"; \
	[ ! -e "$$root/dest" ] || fail "left after uninstall: $$(find "$$root/dest" | tr '\n' ' ')"; \
	$(MAKE) --no-print-directory uninstall $$lists > "$$root/make.log"; \
	grep -q 'nothing to remove' "$$root/make.log" || fail "a second uninstall found something"; \
	echo "test-install: install, installed demo and uninstall passed"

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR)
