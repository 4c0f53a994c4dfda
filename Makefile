# The two set-up commands: `make run` and `make test`.
BUILD      ?= build
ASAN_BUILD ?= build-asan
JOBS       ?= 2

.PHONY: run test check asan deps build format bench package

deps:
	@bash scripts/deps.sh

build: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

# Builds and starts the program.
run: build
	@bash scripts/run.sh $(BUILD)

# Builds everything and runs every test, then the logic tests again under
# AddressSanitizer and UndefinedBehaviorSanitizer.
test: check asan

check: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

asan: deps
	@cmake -S . -B $(ASAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORV_SANITIZE=ON -DORV_BUILD_UI=OFF >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)
	@cd $(ASAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
		ctest --output-on-failure -j $(JOBS) -L logic

# Builds the Debian package build/orvane_<version>_<arch>.deb.
package: build
	@cd $(BUILD) && cpack -G DEB

format: build
	@cmake --build $(BUILD) --target format

bench: build
	@echo "Benchmarks are in $(BUILD)/bench; see README.md"
