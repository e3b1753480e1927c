# Two commands for a newcomer: `make run` and `make test`.
BUILD_DIR ?= build
FILES ?=
JOBS ?= $(shell nproc)
# A folder of real decks for `make bench` (its PDFs, and its set50/ folder as the large set).
DECKS ?=

.PHONY: run test deps build clean bench package install test-sanitize fuzz

deps:
	@bash scripts/install-deps.sh

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD_DIR)/build.ninja
	cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	@bash scripts/run.sh $(BUILD_DIR) $(FILES)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# The whole test suite built with AddressSanitizer and UndefinedBehaviorSanitizer
# (g++, a build folder of its own, ccache as for the plain build). Any report
# fails the test. The PDF library keeps some allocations for the life of the
# process; those reports, and only those, are suppressed by name in
# scripts/lsan.supp, so every other leak still fails the run.
SANITIZE_BUILD_DIR ?= build-sanitize
SANITIZE_ENV = ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:detect_stack_use_after_return=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:print_suppressions=0

$(SANITIZE_BUILD_DIR)/build.ninja:
	cmake -S . -B $(SANITIZE_BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DCMAKE_CXX_COMPILER=g++ -DBRELVONIC_SANITIZE=address,undefined

test-sanitize: deps $(SANITIZE_BUILD_DIR)/build.ninja
	cmake --build $(SANITIZE_BUILD_DIR) -j $(JOBS)
	cd $(SANITIZE_BUILD_DIR) && $(SANITIZE_ENV) ctest --output-on-failure -j $(JOBS)

# libFuzzer harnesses (clang, ASan + UBSan), seeded from files written by the
# tests' own writers, each run for FUZZ_SECONDS; FUZZERS picks some of them.
# Findings land in $(FUZZ_BUILD_DIR)/findings and fail the run.
FUZZ_BUILD_DIR ?= build-fuzz
FUZZ_SECONDS ?= 60
FUZZERS ?= show pdf recents intake handover

$(FUZZ_BUILD_DIR)/build.ninja:
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DBRELVONIC_FUZZ=ON -DBRELVONIC_SANITIZE=address,undefined

fuzz: deps $(FUZZ_BUILD_DIR)/build.ninja
	cmake --build $(FUZZ_BUILD_DIR) -j $(JOBS) --target fuzzers
	@bash scripts/run-fuzzers.sh $(FUZZ_BUILD_DIR) $(FUZZ_SECONDS) $(FUZZERS)

bench: build
	@for b in $(BUILD_DIR)/bench/bench_*; do [ -f "$$b" ] && [ -x "$$b" ] || continue; echo "== $$b"; \
		if [ "$${b##*/}" = bench_presenter ] && [ -n "$(DECKS)" ]; then \
			"$$b" $$([ -d "$(DECKS)/set50" ] && echo --set "$(DECKS)/set50") "$(DECKS)"/*.pdf; \
		elif [ "$${b##*/}" = bench_render_compare ] && [ -n "$(DECKS)" ]; then "$$b" "$(DECKS)"/*.pdf; \
		else "$$b"; fi; done

# A Debian package of the program in $(BUILD_DIR) (install it with apt or dpkg -i).
package: build
	cd $(BUILD_DIR) && cpack -G DEB

# The same files under a prefix: make install PREFIX=/usr/local (DESTDIR is honoured).
PREFIX ?= /usr/local
install: build
	cmake --install $(BUILD_DIR) --prefix $(PREFIX)

clean:
	rm -rf $(BUILD_DIR)
