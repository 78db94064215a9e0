# Top-level entry points. Each installs missing Debian packages first, then builds into build/.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

.PHONY: all deps configure build run test bench clean

all: build

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target tessaly
	@$(BUILD_DIR)/src/tessaly

test: build
	@cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS) --timeout 600

bench: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target tessaly_benchmarks tessaly_gui_benchmarks
	@$(BUILD_DIR)/bench/tessaly_benchmarks
	@$(BUILD_DIR)/bench/tessaly_gui_benchmarks

clean:
	@rm -rf $(BUILD_DIR)
