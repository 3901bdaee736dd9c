# Front door of the build: `make` builds the Release binary build/genetrain, `make test` builds
# and runs every test, `make test-sanitize` does the same with AddressSanitizer and
# UndefinedBehaviorSanitizer in build-sanitize/.
BUILD_DIR ?= build
SANITIZE_DIR ?= build-sanitize
JOBS ?= $(shell nproc)

.PHONY: all build test test-sanitize test-valgrind fuzz bench deps format clean

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

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD_DIR) $(SANITIZE_DIR)
