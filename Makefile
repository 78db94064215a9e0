# Top-level entry points. Each installs missing Debian packages first, then builds into build/.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 120
ASAN_DIR ?= build-asan
TSAN_DIR ?= build-tsan
# The tests that run work on the thread pool beside the interface thread: the main window's (its
# preload, the refresh's density and statistics), the reader's, whose lock they share, the blocks of
# work that the numerics hand to the pool, and those that paint scatter points, which are blended
# on the pool.
TSAN_TESTS ?= ^(MainWindow[A-Za-z]*|VQDReader[A-Za-z]*|Hdf5Filters|ParallelBlocks|PoolRun|PoolTask|Contours|Density|StatisticsDockWidget|PointLayerPixels|DotTiles|ScatterPlotDots|ScatterPlotRender)\.
# ThreadSanitizer's allocator has no heap checks, so a probe there need not notice the heap damage a
# malformed file does inside libhdf5; the test that relies on the probe noticing it is left out. So
# is the refresh of a large example file, whose writing alone takes many minutes there; the
# threaded passes it covers run in smaller tests.
TSAN_EXCLUDE ?= FilesThatCrashTheFileLibrary|LargeFileGivesTheSameBits
SUPPRESSIONS := $(CURDIR)/sanitizers
# Sanitizer builds: clang, light optimisation, line tables for the reports. Tests are listed when
# ctest runs, so that the sanitizer options below apply to the listing too.
SANITIZE_CMAKE := -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	-DCMAKE_C_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
	-DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
	-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DTESSALY_BUILD_BENCH=OFF \
	-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST
ASAN_ENV := ASAN_OPTIONS=detect_stack_use_after_return=1:check_initialization_order=1:strict_init_order=1 \
	LSAN_OPTIONS=suppressions=$(SUPPRESSIONS)/lsan.supp:print_suppressions=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
TSAN_ENV := TSAN_OPTIONS=suppressions=$(SUPPRESSIONS)/tsan.supp:halt_on_error=1:second_deadlock_stack=1

.PHONY: all deps dev-deps configure build run test bench fuzz sanitize sanitize-asan sanitize-tsan clean

all: build

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

# A first start finds example datasets in $(BUILD_DIR)/examples, written once when missing.
run: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target tessaly tessaly-example-data
	@bash scripts/write-examples.sh $(BUILD_DIR)
	@$(BUILD_DIR)/src/tessaly

test: build
	@cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS) --timeout 600

bench: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target tessaly_benchmarks tessaly_gui_benchmarks
	@$(BUILD_DIR)/bench/tessaly_benchmarks
	@$(BUILD_DIR)/bench/tessaly_gui_benchmarks

dev-deps:
	@bash scripts/install-dev-deps.sh

# The reader's libFuzzer target, built with clang, AddressSanitizer and UndefinedBehaviorSanitizer in
# its own folder, run for FUZZ_SECONDS on seeds written afresh and the corpus it kept from earlier runs.
# Inputs that crash it land in $(FUZZ_DIR)/findings/; see fuzz/run-fuzzer.sh for how they are judged.
fuzz: deps dev-deps
	@cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DTESSALY_BUILD_TESTS=OFF \
		-DTESSALY_BUILD_BENCH=OFF -DTESSALY_BUILD_FUZZ=ON -DTESSALY_SANITIZERS=address,undefined >/dev/null
	@cmake --build $(FUZZ_DIR) -j $(JOBS) --target tessaly_reader_fuzzer tessaly-fuzz-seeds
	@rm -rf $(FUZZ_DIR)/seeds && $(FUZZ_DIR)/fuzz/tessaly-fuzz-seeds $(FUZZ_DIR)/seeds
	@bash fuzz/run-fuzzer.sh $(FUZZ_DIR) $(FUZZ_SECONDS)

# The test suite under AddressSanitizer and UndefinedBehaviorSanitizer (all tests), then under
# ThreadSanitizer (TSAN_TESTS), each in its own build folder.
sanitize: sanitize-asan sanitize-tsan

sanitize-asan: deps dev-deps
	@cmake -S . -B $(ASAN_DIR) $(SANITIZE_CMAKE) -DTESSALY_SANITIZERS=address,undefined >/dev/null
	@cmake --build $(ASAN_DIR) -j $(JOBS) --target tessaly_core_tests tessaly_gui_tests
	@cd $(ASAN_DIR) && $(ASAN_ENV) QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS) --timeout 900

sanitize-tsan: deps dev-deps
	@cmake -S . -B $(TSAN_DIR) $(SANITIZE_CMAKE) -DTESSALY_SANITIZERS=thread >/dev/null
	@cmake --build $(TSAN_DIR) -j $(JOBS) --target tessaly_core_tests tessaly_gui_tests
	@cd $(TSAN_DIR) && $(TSAN_ENV) QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS) --timeout 900 \
		-R '$(TSAN_TESTS)' -E '$(TSAN_EXCLUDE)'

clean:
	@rm -rf $(BUILD_DIR)
