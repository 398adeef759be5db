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

.PHONY: all setup setup-bench configure build test test-asan test-tsan fuzz bench bench-quick bench-micro demo install clean

all: build

# Installs what the build needs when it is missing (only possible as root).
setup:
	@missing=""; \
	command -v cmake >/dev/null 2>&1 || missing="$$missing cmake"; \
	command -v g++ >/dev/null 2>&1 || missing="$$missing g++"; \
	command -v clang++ >/dev/null 2>&1 || missing="$$missing clang"; \
	[ -f /usr/include/gtest/gtest.h ] || missing="$$missing libgtest-dev"; \
	[ -f /usr/include/benchmark/benchmark.h ] || missing="$$missing libbenchmark-dev"; \
	dpkg -s libclang-rt-14-dev >/dev/null 2>&1 || missing="$$missing libclang-rt-14-dev"; \
	if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" = "0" ]; then \
	    echo "installing:$$missing"; \
	    apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $$missing; \
	  else \
	    echo "missing packages:$$missing (run as root to install them)"; \
	  fi; \
	fi

configure: setup
	cmake -S . -B $(BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release -DZU_BUILD_BENCH=ON

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The same suite under AddressSanitizer and UndefinedBehaviorSanitizer (clang).
test-asan: setup
	CXX=clang++ cmake -S . -B $(ASAN_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZU_SANITIZE=address,undefined -DZU_BUILD_BENCH=OFF
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	cd $(ASAN_BUILD) && ctest --output-on-failure -j $(JOBS)

# The thread-using tests under ThreadSanitizer (clang).
test-tsan: setup
	CXX=clang++ cmake -S . -B $(TSAN_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZU_SANITIZE=thread -DZU_BUILD_BENCH=OFF -DZU_BUILD_TOOLS=OFF
	cmake --build $(TSAN_BUILD) -j $(JOBS) --target zuSystemTests resourcesTests ioTests
	cd $(TSAN_BUILD) && ctest --output-on-failure -j $(JOBS) -R 'Thread|Mutex|Concurren|Resource|ObjReaderTest'

# Every fuzz target (libFuzzer, clang, under ASan+UBSan) for FUZZ_SECONDS each, FUZZ_JOBS at
# once; fails on any finding (fuzz/run.sh).
fuzz: setup
	CXX=clang++ cmake -S . -B $(FUZZ_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DZU_SANITIZE=address,undefined -DZU_BUILD_FUZZ=ON -DZU_BUILD_TESTS=OFF -DZU_BUILD_TOOLS=OFF \
	  -DZU_BUILD_BENCH=OFF -DZU_BUILD_EXAMPLES=OFF
	cmake --build $(FUZZ_BUILD) -j $(JOBS)
	fuzz/run.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_JOBS)

# The peer libraries the benchmarks compare with; only `make bench` needs them.
PEER_PACKAGES := libopenscenegraph-dev libtinyobjloader-dev libassimp-dev

setup-bench: setup
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
bench-micro: build
	@for b in $(BUILD)/bin/bench_*; do echo "== $$b"; $$b --benchmark_min_time=0.2; done

demo: build
	$(BUILD)/bin/zusg demo

install: build
	cmake --install $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(TSAN_BUILD) $(FUZZ_BUILD)
