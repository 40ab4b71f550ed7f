# tovfoundation: the two everyday commands and the other gates.
#   make test   set up, build the dev configuration and run every test
#   make demo   set up, build and run the tool's end-to-end demo
.PHONY: all deps build test demo test-asan test-tsan format clean

PRESET ?= dev
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

all: build

deps:
	@bash scripts/install-deps

build: deps
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) -j $(JOBS)

test: build
	ctest --preset $(PRESET)

demo: build
	build/$(PRESET)/bin/tovtool demo

test-asan: deps
	cmake --preset asan
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan

test-tsan: deps
	cmake --preset tsan
	cmake --build --preset tsan -j $(JOBS)
	ctest --preset tsan

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build
