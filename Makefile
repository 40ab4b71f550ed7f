# tovfoundation: the two everyday commands and the other gates.
#   make test   set up, build the dev configuration and run every test
#   make demo   set up, build and run the tool's end-to-end demo
#   make test-windows  cross-build for Windows x64 and run every test under Wine
#   make package       Debian packages in build/package/packages (libtovfoundation0,
#                      libtovfoundation-dev, tovtool); make test-package installs,
#                      uses and removes them in a throwaway root
#   make abi-check     compare libtovfoundation.so.0 with the baseline in abi/ and
#                      check its exports; make abi-update records a new baseline
#   make docs          the API reference (Doxygen) into build/docs/html, checked in
#                      headless Chromium
#   make coverage      instrumented build, the dev tests, coverage per subsystem
.PHONY: all deps build test demo test-asan test-tsan test-install test-windows format clean
.PHONY: package test-package abi-build abi-check abi-update docs coverage

PRESET ?= dev
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

all: build

# Targets that run tests add the packages their tests read files with.
DEPS_FLAGS ?=
deps:
	@bash scripts/install-deps $(DEPS_FLAGS)

build: deps
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) -j $(JOBS)

test: DEPS_FLAGS += --test-tools
test: build
	ctest --preset $(PRESET)

demo: build
	build/$(PRESET)/bin/tovtool demo

test-asan: DEPS_FLAGS += --test-tools
test-asan: deps
	cmake --preset asan
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan

# The subsystems with locks (station registry, stream states, automatic names,
# registrar, metadata list, events) under ThreadSanitizer.
TSAN_SUITES := messaging streams files foundation
test-tsan: deps
	cmake --preset tsan
	cmake --build --preset tsan -j $(JOBS) --target $(addprefix tovtests_,$(TSAN_SUITES))
	ctest --preset tsan -L '$(subst $(eval) ,|,$(TSAN_SUITES))'

test-install: build
	ctest --preset $(PRESET) -L install

test-windows:
	@bash scripts/install-deps --windows
	cmake --preset windows
	cmake --build --preset windows -j $(JOBS)
	ctest --preset windows

# Debian packages and the ABI guard: the package preset (RelWithDebInfo,
# prefix /usr), building only the library and the tool.
package:
	@bash scripts/install-deps --package
	cmake --preset package
	cmake --build --preset package -j $(JOBS) --target tovfoundation tovtool
	cd build/package && cpack --config CPackConfig.cmake

test-package: package
	ctest --preset package -L package

abi-build:
	@bash scripts/install-deps --package
	cmake --preset package
	cmake --build --preset package -j $(JOBS) --target tovfoundation

abi-check: abi-build
	ctest --preset package -L abi

abi-update: abi-build
	bash abi/abi.sh update build/package

# Doxygen warnings are errors (an undocumented public name, a broken reference);
# tests/docs/check_pages.py then opens the pages in headless Chromium.
docs:
	@bash scripts/install-deps --docs
	bash scripts/docs

# Instrumented build (gcc --coverage, -O0) in build/coverage, the dev test
# suites with fresh counters, then line and branch coverage of the library's
# sources per subsystem (HTML in build/coverage/html), checked against
# scripts/coverage-thresholds. docs/coverage.md explains the figures. The tools
# suite runs tovtool under a file-size limit and the registrar crash tests kill
# children at random moments: a child's counters then reach the disk half
# written and spoil everyone's, so those tests count into a scratch folder.
coverage: DEPS_FLAGS += --test-tools --coverage
coverage: deps
	cmake --preset coverage
	cmake --build --preset coverage -j $(JOBS)
	rm -rf build/coverage/uncounted
	find build/coverage -name '*.gcda' -delete
	ctest --preset coverage -LE 'install|tools' -E '^RegistrarCrash\.'
	GCOV_PREFIX=$(CURDIR)/build/coverage/uncounted ctest --preset coverage -L tools
	GCOV_PREFIX=$(CURDIR)/build/coverage/uncounted ctest --preset coverage -R '^RegistrarCrash\.'
	python3 scripts/coverage-report build/coverage

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build

# make fuzz TARGET=name SECONDS=n: runs one libFuzzer target on its seed corpus.
TARGET ?=
SECONDS ?= 60
.PHONY: fuzz fuzz-build fuzz-smoke bench
fuzz-build:
	@bash scripts/install-deps --fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)

fuzz: fuzz-build
	@test -n "$(TARGET)" || { echo "usage: make fuzz TARGET=name SECONDS=n"; ls build/fuzz/bin; exit 2; }
	mkdir -p build/fuzz/corpus/$(TARGET)
	build/fuzz/bin/fuzz_$(TARGET) -max_total_time=$(SECONDS) -print_final_stats=1 \
	  build/fuzz/corpus/$(TARGET) fuzz/corpus/$(TARGET)

# Every fuzz target for SECONDS on its committed seed corpus, two at a time.
fuzz-smoke: fuzz-build
	bash scripts/fuzz-smoke build/fuzz $(SECONDS)

bench:
	@bash scripts/install-deps --bench
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	python3 scripts/bench-report build/release --repetitions 3
