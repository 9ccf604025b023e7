# The front door: every daily task has a name here. `make run` and `make test` need nothing but a Debian machine.

BUILD := build
PREFIX ?= /usr/local
TIDIED := conversion|event|clock|schema|processor|monitors|guards|appliers|platform|replay

.PHONY: run test test-arm64 fuzz soak mutants bench bench-gate docs install packages tidy format clean deps ci-deps

run: deps $(BUILD)/release/build.ninja
	@cmake --build $(BUILD)/release --target telemetry-replay
	@mkdir -p out
	@$(BUILD)/release/replay/telemetry-replay run samples/day.jsonl --device samples/device.json \
		--schema samples/schema.json --output out/day.jsonl --drops out/drops.jsonl \
		--monitor-events out/monitor-events.jsonl --report out/report.html --expect samples/expect.json
	@echo "The events as they leave the pipeline: out/day.jsonl"
	@echo "What was dropped, and why: out/drops.jsonl"
	@echo "What the pipeline reported: out/monitor-events.jsonl"
	@echo "All of it as a page for a browser: out/report.html"
	@echo "The journey of one of the events:"
	@$(BUILD)/release/replay/telemetry-replay explain samples/day.jsonl --device samples/device.json \
		--schema samples/schema.json --line 3

test: deps $(BUILD)/dev/build.ninja
	@cmake --build $(BUILD)/dev
	@ctest --preset dev

# The architecture of devices, cross-built and emulated.
test-arm64:
	@scripts/test-arm64

# Makes small mistakes in the library's sources, and counts how many the tests notice. Takes too long for .ci/run.
mutants:
	@scripts/install-deps mutants
	@scripts/check-mutants

# Arbitrary inputs, FUZZ_SECONDS for each target: see fuzz/. Their corpora run with the tests.
fuzz: $(BUILD)/fuzz/build.ninja
	@cmake --build $(BUILD)/fuzz --target fuzz_targets
	@scripts/fuzz $(BUILD)/fuzz

# Time, allocations and the ratio to the floor of each group: see benchmarks/.
bench: deps $(BUILD)/release/build.ninja
	@cmake --build $(BUILD)/release --target telemetry_benchmarks
	@$(BUILD)/release/benchmarks/telemetry_benchmarks

# Instructions and allocations an event, which repeat exactly: fails if one is 3 % off what benchmarks/figures.json
# keeps. `scripts/bench-gate --record` keeps what is now; `scripts/bench-gate --growth` fills tables up to a million.
bench-gate: deps $(BUILD)/release/build.ninja
	@scripts/install-deps bench-gate
	@cmake --build $(BUILD)/release --target telemetry_gate telemetry_allocation_counter telemetry-replay
	@scripts/bench-gate $(BUILD)/release

# A million events on eight threads, then ten million with a hundred thousand names: nothing is lost, and nothing grows
# but the tables, whose bytes for each name are printed.
soak: deps $(BUILD)/release/build.ninja
	@cmake --build $(BUILD)/release --target threads_tests telemetry_soak
	@TELEMETRY_STRESS_EVENTS=1000000 $(BUILD)/release/tests/threads_tests --gtest_filter=Threads.EveryCount*
	@$(BUILD)/release/benchmarks/telemetry_soak tables
	@$(BUILD)/release/benchmarks/telemetry_soak

# The reference of the public headers, with the guides in docs/.
docs:
	@scripts/install-deps docs
	@scripts/make-docs

# Into PREFIX, below DESTDIR if that is set.
install: deps $(BUILD)/release/build.ninja
	@cmake --build $(BUILD)/release --target replay_documents
	@DESTDIR="$(DESTDIR)" cmake --install $(BUILD)/release --prefix "$(PREFIX)" --strip

# Two Debian packages: the libraries with the tool, and what building against them takes.
packages: deps $(BUILD)/release/build.ninja
	@scripts/install-deps packages
	@cmake --build $(BUILD)/release --target telemetryprocessor telemetry-replay replay_documents
	@cpack --config $(BUILD)/release/CPackConfig.cmake -B $(BUILD)/packages > $(BUILD)/packages.log 2>&1 || \
		{ cat $(BUILD)/packages.log; exit 1; }
	@ls $(BUILD)/packages/*.deb

# Configures anew, or files added since would go unchecked.
tidy: $(BUILD)/clang/build.ninja
	@cmake --preset clang > /dev/null
	@run-clang-tidy -quiet -p $(BUILD)/clang '^$(CURDIR)/($(TIDIED))/'

format:
	@scripts/install-deps format
	@git ls-files --cached --others --exclude-standard '*.h' '*.cpp' | xargs clang-format -i

clean:
	@rm -rf $(BUILD) out

deps:
	@scripts/install-deps

ci-deps: deps
	@scripts/install-deps ci

# Ninja configures anew by itself when a CMake file changes.
$(BUILD)/%/build.ninja: | deps
	@cmake --preset $*

# These presets take clang to configure.
$(BUILD)/clang/build.ninja $(BUILD)/fuzz/build.ninja: | ci-deps
