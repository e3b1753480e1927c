# Two commands for a newcomer: `make run` and `make test`.
BUILD_DIR ?= build
FILES ?=
JOBS ?= $(shell nproc)
# A folder of real decks for `make bench` (its PDFs, and its set50/ folder as the large set).
DECKS ?=

.PHONY: run test deps build clean bench package install

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

# A Debian package of the program in $(BUILD_DIR) (install it with apt or dpkg -i).
package: build
	cd $(BUILD_DIR) && cpack -G DEB

# The same files under a prefix: make install PREFIX=/usr/local (DESTDIR is honoured).
PREFIX ?= /usr/local
install: build
	cmake --install $(BUILD_DIR) --prefix $(PREFIX)

clean:
	rm -rf $(BUILD_DIR)
