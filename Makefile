# The two commands of the README: `make demo` and `make test`. `make bench` for the figures,
# `make fuzz` to fuzz (FUZZ_SECONDS a fuzzer, 300 by default).
BUILD      ?= build
GENERATOR  := $(shell command -v ninja >/dev/null 2>&1 && echo "-G Ninja")
CTEST_ARGS := --output-on-failure --timeout 900

PREFIX     ?= /usr/local

.PHONY: all deps deps-bench deps-fuzz fuzz configure build test test-release test-asan tsan demo install bench clean

all: build

deps:
	@scripts/install-deps.sh test

deps-bench:
	@scripts/install-deps.sh bench

deps-fuzz:
	@scripts/install-deps.sh fuzz

configure: deps
	cmake -S . -B $(BUILD)/release $(GENERATOR) -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: configure
	cmake --build $(BUILD)/release

test-release: build
	ctest --test-dir $(BUILD)/release $(CTEST_ARGS)

test-asan: deps
	cmake -S . -B $(BUILD)/asan $(GENERATOR) -DCMAKE_BUILD_TYPE=Debug -DTELA_SANITIZE=ON
	cmake --build $(BUILD)/asan
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
		ctest --test-dir $(BUILD)/asan $(CTEST_ARGS)

# The threaded tests (event queue, main loop) again under ThreadSanitizer.
TSAN_TESTS := events headless
TSAN_REGEX := ^(events|headless)$$
tsan: deps
	cmake -S . -B $(BUILD)/tsan $(GENERATOR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTELA_TSAN=ON
	cmake --build $(BUILD)/tsan --target $(addsuffix _tests,$(TSAN_TESTS))
	TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
		ctest --test-dir $(BUILD)/tsan $(CTEST_ARGS) -R '$(TSAN_REGEX)'

test: test-release test-asan tsan

# The gallery opens a window when there is a display; without one it plays a
# scripted session on the headless platform and writes screenshots. Only the
# library and the gallery are built, and the gallery keeps its settings under
# the build folder, not in the user's home.
demo: configure
	cmake --build $(BUILD)/release --target gallery
	@mkdir -p $(BUILD)/screenshots $(BUILD)/demo-settings
	XDG_CONFIG_HOME=$(abspath $(BUILD))/demo-settings $(BUILD)/release/examples/gallery/gallery $(BUILD)/screenshots

# Headers under $(PREFIX)/include/tela, libtela, the CMake package and tela.pc.
install: build
	cmake --install $(BUILD)/release --prefix $(PREFIX)

bench: deps-bench
	cmake -S . -B $(BUILD)/bench $(GENERATOR) -DCMAKE_BUILD_TYPE=Release -DTELA_BENCH=ON
	cmake --build $(BUILD)/bench
	@for benchmark in $(BUILD)/bench/bench/bench_*; do \
		echo "== $$benchmark"; $$benchmark --benchmark_min_time=0.2; \
	done

# Every tests/fuzz/<name>_fuzz.cpp is a fuzzer, built with clang's libFuzzer and
# the address and UB sanitisers, run for FUZZ_SECONDS on its corpus tests/fuzz/<name>/.
# What a run finds lands in a scratch folder first; only the inputs that reach
# code the corpus did not reach are merged into it, so the corpus stays small.
# A crash, a broken rule or a hang (an input slower than FUZZ_TIMEOUT seconds)
# stops the run, and the input is left under $(BUILD)/fuzz/artifacts.
FUZZ_SECONDS ?= 300
FUZZ_TIMEOUT ?= 10
FUZZERS      := $(patsubst tests/fuzz/%.cpp,%,$(wildcard tests/fuzz/*_fuzz.cpp))
fuzz: deps-fuzz
	cmake -S . -B $(BUILD)/fuzz $(GENERATOR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTELA_FUZZ=ON \
		-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
	cmake --build $(BUILD)/fuzz --target fuzzers
	@set -e; for fuzzer in $(FUZZERS); do \
		name=$${fuzzer%_fuzz}; corpus=tests/fuzz/$$name; found=$(BUILD)/fuzz/found/$$name; \
		dict=""; [ -f tests/fuzz/$$name.dict ] && dict=-dict=tests/fuzz/$$name.dict; \
		mkdir -p $$corpus $$found $(BUILD)/fuzz/artifacts; rm -f $$found/*; \
		echo "== $$fuzzer: $(FUZZ_SECONDS) s on $$corpus"; \
		$(BUILD)/fuzz/tests/fuzz/$$fuzzer $$found $$corpus $$dict -max_total_time=$(FUZZ_SECONDS) \
			-timeout=$(FUZZ_TIMEOUT) -artifact_prefix=$(BUILD)/fuzz/artifacts/$$fuzzer- -print_final_stats=1 \
			> $(BUILD)/fuzz/$$fuzzer.log 2>&1 || { tail -n 60 $(BUILD)/fuzz/$$fuzzer.log; exit 1; }; \
		grep -E '^(stat::number_of_executed_units|stat::peak_rss_mb|#[0-9]+[[:space:]]+DONE)' $(BUILD)/fuzz/$$fuzzer.log || true; \
		$(BUILD)/fuzz/tests/fuzz/$$fuzzer -merge=1 $$corpus $$found > $(BUILD)/fuzz/$$fuzzer-merge.log 2>&1 \
			|| { tail -n 20 $(BUILD)/fuzz/$$fuzzer-merge.log; exit 1; }; \
		echo "   corpus: $$(ls $$corpus | wc -l) inputs"; \
	done

clean:
	rm -rf $(BUILD)
