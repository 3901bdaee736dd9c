# Front door of the build: `make` builds the Release programs build/genetrain and build/genefind
# and the unit tests, `make test` builds and runs every test, `make test-sanitize` does the same
# with AddressSanitizer and UndefinedBehaviorSanitizer in build-sanitize/. `make demo` builds the
# programs alone and trains a model on the bundled genome, `make test-workflow` tests the batch
# workflow, `make install PREFIX=...` installs and `make package` makes the Debian package.
BUILD_DIR ?= build
SANITIZE_DIR ?= build-sanitize
JOBS ?= $(shell nproc)
# The programs' CMake targets: `make demo` and `make install` build these alone, since the unit
# tests take two thirds of the build and only `make test` and its kin need them.
PROGRAMS ?= genetrain genefind

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
	bash bench/predict_accuracy.sh $(BUILD_DIR)
	bash bench/predict_genomes.sh $(BUILD_DIR)
	bash bench/motif_bench.sh $(BUILD_DIR)
	bash bench/train_bench.sh $(BUILD_DIR)
	bash bench/predict_metagenome.sh $(BUILD_DIR)

# A model trained end to end on the bundled E. coli genome; the files go to DEMO_DIR.
DEMO_DIR ?= $(BUILD_DIR)/demo
demo: programs
	@bash examples/demo.sh $(BUILD_DIR)/genetrain $(DEMO_DIR)

# The Snakemake workflow on two small genomes, locally and through the cluster profiles.
test-workflow: build
	bash tests/workflow/run.sh $(BUILD_DIR)/genetrain

# Installs bin/genetrain and bin/genefind, their man pages, share/genetrain/{workflow,examples},
# the docs and the licence under PREFIX (DESTDIR is honoured). `make uninstall`, with no PREFIX or
# DESTDIR needed, removes every file the installs from this build folder put there since the last
# uninstall, then those folders the installs created that are empty by then. CMake's
# install_manifest.txt lists the files without DESTDIR and says nothing of folders, hence the two
# lists of our own, which tools/install.sh writes and tools/uninstall.sh reads.
PREFIX ?= /usr/local
INSTALLED_FILES = $(BUILD_DIR)/installed_files.txt
INSTALLED_DIRS = $(BUILD_DIR)/installed_dirs.txt
install: programs
	@BUILD_DIR='$(BUILD_DIR)' PREFIX='$(PREFIX)' DESTDIR='$(DESTDIR)' \
	  INSTALLED_FILES='$(INSTALLED_FILES)' INSTALLED_DIRS='$(INSTALLED_DIRS)' bash tools/install.sh

uninstall:
	@BUILD_DIR='$(BUILD_DIR)' INSTALLED_FILES='$(INSTALLED_FILES)' \
	  INSTALLED_DIRS='$(INSTALLED_DIRS)' bash tools/uninstall.sh

# The Debian package genetrain_VERSION_ARCH.deb in BUILD_DIR.
package: build
	cd $(BUILD_DIR) && cpack -G DEB

# The package must carry the licence as Debian's copyright file, not as LICENSE; see
# tests/install/run.sh.
test-package: package
	@bash tests/install/run.sh package '$(BUILD_DIR)'

# Install, the installed demo and uninstall in a scratch folder, through the targets above; see
# tests/install/run.sh.
test-install: programs
	@MAKE='$(MAKE)' bash tests/install/run.sh install '$(BUILD_DIR)'

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR)
