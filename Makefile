# Thin wrapper: each target sets the machine up, configures and builds first.
BUILD ?= build
ASAN_BUILD ?= build-asan
TSAN_BUILD ?= build-tsan
JOBS ?= $(shell nproc)

.PHONY: setup build test demo sanitize tsan bench bench-smoke bench-memory fuzz package-check clean

setup:
	@./scripts/setup

build: setup
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The demo script on a copy of examples/, left in place for a look afterwards;
# the setup and build write to a log, so that only the demo is shown
DEMO_LOG ?= $(BUILD)/demo-build.log
demo:
	@mkdir -p $(BUILD) && echo "== building quelmar; the log is in $(DEMO_LOG)" && \
	{ ./scripts/setup && cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo && \
	  cmake --build $(BUILD) -j $(JOBS) --target quelmar; } >$(DEMO_LOG) 2>&1 || \
	{ tail -n 20 $(DEMO_LOG); echo "== the build failed; see $(DEMO_LOG)"; exit 1; }
	@dir=$$(mktemp -d) && find examples -maxdepth 1 -type f -exec cp {} "$$dir" \; && cd "$$dir" && \
	echo "== quelmar scene.json --echo -s demo.quelmar, in $$dir" && \
	"$(abspath $(BUILD))/src/quelmar" scene.json --echo -s demo.quelmar

sanitize: setup
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DQUELMAR_SANITIZE=ON
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

# Two editors on two threads under ThreadSanitizer: only the library and
# that one test are built
tsan: setup
	cmake -S . -B $(TSAN_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DCMAKE_CXX_FLAGS=-fsanitize=thread -DCMAKE_EXE_LINKER_FLAGS=-fsanitize=thread
	cmake --build $(TSAN_BUILD) -j $(JOBS) --target EditorThreadsTest
	TSAN_OPTIONS=halt_on_error=1 $(TSAN_BUILD)/tests/EditorThreadsTest

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
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target QuelmarBenchmark QuelmarMemoryFigures
	$(BENCH_BUILD)/bench/QuelmarBenchmark --smoke
	$(BENCH_BUILD)/bench/QuelmarMemoryFigures --objects 2000 --cycles 20 --batch 100

# Resident memory after 1,000 duplicate-and-undo cycles of 1,000 objects in a
# 50,000-object project, compacting between commands, and the cost of a compaction
bench-memory: setup
	cmake -S . -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DQUELMAR_BUILD_TESTS=OFF -DQUELMAR_BUILD_BENCHMARKS=ON
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target QuelmarMemoryFigures
	$(BENCH_BUILD)/bench/QuelmarMemoryFigures $(BENCH_FLAGS)

# The fuzz targets in their own clang build, each run for FUZZ_SECONDS on a
# working corpus in the build folder seeded from fuzz/corpus/; any finding
# stops the run and fails, the input kept in $(FUZZ_BUILD)/findings/
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
FUZZERS = ProjectLoaderFuzzer ClipboardReaderFuzzer CommandSequenceFuzzer
fuzz:
	@./scripts/setup fuzz
	cmake -S . -B $(FUZZ_BUILD) -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DQUELMAR_BUILD_TESTS=OFF -DQUELMAR_BUILD_FUZZERS=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target $(FUZZERS)
	@set -e; mkdir -p $(FUZZ_BUILD)/findings; for f in $(FUZZERS); do \
		mkdir -p $(FUZZ_BUILD)/corpus/$$f; \
		echo "== $$f for $(FUZZ_SECONDS) s"; \
		$(FUZZ_BUILD)/fuzz/$$f -max_total_time=$(FUZZ_SECONDS) -timeout=60 -print_final_stats=1 \
			-artifact_prefix=$(FUZZ_BUILD)/findings/$$f- $(FUZZ_BUILD)/corpus/$$f fuzz/corpus/$$f; \
	done

# Installs to a temporary prefix and builds and runs examples/embed from it
package-check: build
	./scripts/check-package $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(TSAN_BUILD) $(BENCH_BUILD) $(FUZZ_BUILD)
