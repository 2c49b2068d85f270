# The commands a newcomer needs: `make run` and `make test`.
# Both install what is missing (Debian 12), configure and build first.

PRESET ?= default
BUILD  := build/$(PRESET)
CTEST_ARGS ?=

.PHONY: all deps configure build test run image asan tsan fuzz bench format clean

all: build

deps:
	@./scripts/install-deps.sh

configure: deps
	@test -f $(BUILD)/build.ninja || cmake --preset $(PRESET)

build: configure
	cmake --build --preset $(PRESET)

image: build
	cmake --build --preset $(PRESET) --target instrument-image

test: build
	ctest --preset $(PRESET) $(CTEST_ARGS)

run: image
	./scripts/run-simulated.sh $(BUILD)/image

asan:
	$(MAKE) test PRESET=asan

tsan:
	$(MAKE) test PRESET=tsan

fuzz: deps
	@test -f build/fuzz/build.ninja || cmake --preset fuzz
	cmake --build --preset fuzz

bench: build
	./scripts/run-benchmarks.sh $(BUILD)

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build
