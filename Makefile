# Front door of the build: `make` builds the Release binary build/genetrain, `make test` builds
# and runs every test, `make test-sanitize` does the same with AddressSanitizer and
# UndefinedBehaviorSanitizer in build-sanitize/. `make demo` trains a model on the bundled
# genome, `make test-workflow` tests the batch workflow, `make install PREFIX=...` installs and
# `make package` makes the Debian package.
BUILD_DIR ?= build
SANITIZE_DIR ?= build-sanitize
JOBS ?= $(shell nproc)

.PHONY: all build test test-sanitize test-valgrind fuzz bench deps format clean demo \
  test-workflow install uninstall package

all: build

deps:
	@bash tools/install-deps.sh

build: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j $(JOBS)

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
demo: build
	@bash examples/demo.sh $(BUILD_DIR)/genetrain $(DEMO_DIR)

# The Snakemake workflow on two small genomes, locally and through the cluster profiles.
test-workflow: build
	bash tests/workflow/run.sh $(BUILD_DIR)/genetrain

# Installs bin/genetrain, the man page, share/genetrain/{workflow,examples} and the docs under
# PREFIX (DESTDIR is honoured); `make uninstall` removes what the last install put there.
PREFIX ?= /usr/local
install: build
	DESTDIR=$(DESTDIR) cmake --install $(BUILD_DIR) --prefix $(PREFIX)

uninstall:
	@test -f $(BUILD_DIR)/install_manifest.txt || { echo "no install_manifest.txt in $(BUILD_DIR)"; exit 1; }
	xargs -d '\n' rm -f < $(BUILD_DIR)/install_manifest.txt
	-find $(DESTDIR)$(PREFIX)/share/genetrain $(DESTDIR)$(PREFIX)/share/doc/genetrain -depth -type d -empty -delete 2>/dev/null

# The Debian package genetrain_VERSION_ARCH.deb in BUILD_DIR.
package: build
	cd $(BUILD_DIR) && cpack -G DEB

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR)
