# Thin wrapper over CMake. `make test` sets up a fresh machine, builds and runs the tests.
BUILD      ?= build
ASAN_BUILD ?= build-asan
TSAN_BUILD ?= build-tsan
FUZZ_BUILD ?= build-fuzz
# Seconds per fuzz target, and targets run at once.
FUZZ_SECONDS ?= 600
FUZZ_JOBS  ?= 2
JOBS       ?= $(shell nproc)
CMAKE_GEN  := $(shell command -v ninja >/dev/null 2>&1 && echo "-G Ninja")

.PHONY: all setup setup-sanitizers setup-benchmark setup-bench setup-docs configure build test test-asan test-tsan fuzz \
	bench bench-quick bench-micro demo docs install clean count-lines

all: build

# Each target installs what it needs and nothing more, when it is missing (only possible as
# root; otherwise it names the packages). `missing` collects the names, then:
INSTALL_MISSING = if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" = "0" ]; then \
	    echo "installing:$$missing"; \
	    apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $$missing; \
	  else \
	    echo "missing packages:$$missing (run as root to install them)"; \
	  fi; \
	fi

# The build and its tests: a compiler, CMake, GoogleTest, and pkg-config for the test that
# builds the examples against an installation.
setup:
	@missing=""; \
	command -v cmake >/dev/null 2>&1 || missing="$$missing cmake"; \
	command -v g++ >/dev/null 2>&1 || missing="$$missing g++"; \
	command -v pkg-config >/dev/null 2>&1 || missing="$$missing pkg-config"; \
	[ -f /usr/include/gtest/gtest.h ] || missing="$$missing libgtest-dev"; \
	$(INSTALL_MISSING)

# The sanitizer builds use clang and its runtime libraries.
setup-sanitizers: setup
	@missing=""; \
	command -v clang++ >/dev/null 2>&1 || missing="$$missing clang"; \
	dpkg -s libclang-rt-14-dev >/dev/null 2>&1 || missing="$$missing libclang-rt-14-dev"; \
	$(INSTALL_MISSING)

# Our own benchmark programs use Google Benchmark (without it they are not built).
setup-benchmark: setup
	@missing=""; \
	[ -f /usr/include/benchmark/benchmark.h ] || missing="$$missing libbenchmark-dev"; \
	$(INSTALL_MISSING)

# The API reference.
setup-docs:
	@missing=""; \
	command -v doxygen >/dev/null 2>&1 || missing="$$missing doxygen"; \
	$(INSTALL_MISSING)

configure: setup
	cmake -S . -B $(BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release -DZU_BUILD_BENCH=ON

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The same suite under AddressSanitizer and UndefinedBehaviorSanitizer (clang).
test-asan: setup-sanitizers
	CXX=clang++ cmake -S . -B $(ASAN_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZU_SANITIZE=address,undefined -DZU_BUILD_BENCH=OFF
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	cd $(ASAN_BUILD) && ctest --output-on-failure -j $(JOBS)

# The thread-using tests under ThreadSanitizer (clang).
test-tsan: setup-sanitizers
	CXX=clang++ cmake -S . -B $(TSAN_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZU_SANITIZE=thread -DZU_BUILD_BENCH=OFF -DZU_BUILD_TOOLS=OFF
	cmake --build $(TSAN_BUILD) -j $(JOBS) --target zuSystemTests resourcesTests ioTests objectsTests streamTests
	cd $(TSAN_BUILD) && ctest --output-on-failure -j $(JOBS) -R 'Thread|Mutex|Concurren|Resource|ObjReaderTest'

# Every fuzz target (libFuzzer, clang, under ASan+UBSan) for FUZZ_SECONDS each, FUZZ_JOBS at
# once (FUZZ_TARGETS="fuzz_obj ..." for some only); fails on any finding (fuzz/run.sh).
fuzz: setup-sanitizers
	CXX=clang++ cmake -S . -B $(FUZZ_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZU_SANITIZE=address,undefined -DZU_BUILD_FUZZ=ON -DZU_BUILD_TESTS=OFF -DZU_BUILD_TOOLS=OFF \
	  -DZU_BUILD_BENCH=OFF -DZU_BUILD_EXAMPLES=OFF
	cmake --build $(FUZZ_BUILD) -j $(JOBS)
	fuzz/run.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_JOBS)

# The peer libraries the benchmarks compare with; only `make bench` needs them.
PEER_PACKAGES := libopenscenegraph-dev libtinyobjloader-dev libassimp-dev

setup-bench: setup-benchmark
	@missing=""; \
	for p in $(PEER_PACKAGES); do dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; done; \
	if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" = "0" ]; then \
	    echo "installing:$$missing"; \
	    apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $$missing; \
	  else \
	    echo "missing packages:$$missing (run as root to install them)"; exit 1; \
	  fi; \
	fi

# One table against the peer libraries, every side run in turn in the same invocation:
# W1 at depth 6 and W2 at N = 1000 (a few minutes), or W1 at depth 4 and W2 at N = 250.
bench: setup-bench
	@$(MAKE) --no-print-directory build
	$(BUILD)/bin/peers_table --depth 6 --runs 5

bench-quick: setup-bench
	@$(MAKE) --no-print-directory build
	$(BUILD)/bin/peers_table --depth 4 --obj-grid 250 --runs 11

# Our own Google Benchmark programs, one after the other.
bench-micro: setup-benchmark
	@$(MAKE) --no-print-directory build
	@for b in $(BUILD)/bin/bench_*; do echo "== $$b"; $$b --benchmark_min_time=0.2; done

# The demo's checks, and the camera's view of its scene as a picture in out/demo.svg.
demo: build
	@mkdir -p out
	$(BUILD)/bin/zusg demo --svg out/demo.svg

# The API reference from the header comments, in $(BUILD)/docs/html (index.html).
docs: setup-docs
	@mkdir -p $(BUILD)/docs
	ZU_DOCS_OUTPUT=$(BUILD)/docs ZU_DOCS_VERSION=$$(sed -n 's/^project(zuSceneGraph VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt) \
	  doxygen docs/Doxyfile

install: build
	cmake --install $(BUILD)

# Test lines against all C++ lines (non-blank, non-comment): the tests' share of the code.
count-lines:
	@tools/count-lines.sh -v

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(TSAN_BUILD) $(FUZZ_BUILD)
