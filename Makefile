# Two commands for a newcomer: `make run` and `make test`.
BUILD_DIR ?= build
FILES ?=
JOBS ?= $(shell nproc)
# A folder of real decks for `make bench` (its PDFs, and its set50/ folder as the large set).
DECKS ?=

.PHONY: run test deps build clean bench

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

bench: build
	@for b in $(BUILD_DIR)/bench/bench_*; do [ -f "$$b" ] && [ -x "$$b" ] || continue; echo "== $$b"; \
		if [ "$${b##*/}" = bench_presenter ] && [ -n "$(DECKS)" ]; then \
			"$$b" $$([ -d "$(DECKS)/set50" ] && echo --set "$(DECKS)/set50") "$(DECKS)"/*.pdf; \
		else "$$b"; fi; done

clean:
	rm -rf $(BUILD_DIR)
