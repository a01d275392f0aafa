# Thin wrapper: each target sets the machine up, configures and builds first.
BUILD ?= build
ASAN_BUILD ?= build-asan
JOBS ?= $(shell nproc)

.PHONY: setup build test demo sanitize bench bench-smoke clean

setup:
	@./scripts/setup

build: setup
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The demo script on a copy of examples/, left in place for a look afterwards
demo: build
	@dir=$$(mktemp -d) && cp examples/* "$$dir" && cd "$$dir" && \
	echo "== quelmar scene.json -s demo.quelmar, in $$dir" && \
	"$(abspath $(BUILD))/src/quelmar" scene.json -s demo.quelmar

sanitize: setup
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DQUELMAR_SANITIZE=ON
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

# Benchmarks in their own optimised build; BENCH_FLAGS go to the program,
# for example BENCH_FLAGS=--benchmark_repetitions=5
BENCH_BUILD ?= build-bench
bench: setup
	cmake -S . -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DQUELMAR_BUILD_TESTS=OFF -DQUELMAR_BUILD_BENCHMARKS=ON
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target QuelmarBenchmark
	$(BENCH_BUILD)/bench/QuelmarBenchmark $(BENCH_FLAGS)

# Every benchmark once at the smallest size, to show that they still run
bench-smoke: setup
	cmake -S . -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DQUELMAR_BUILD_TESTS=OFF -DQUELMAR_BUILD_BENCHMARKS=ON
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target QuelmarBenchmark
	$(BENCH_BUILD)/bench/QuelmarBenchmark --smoke

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(BENCH_BUILD)
