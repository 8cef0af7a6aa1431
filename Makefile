# The commands of this project. `make demo` and `make test` do everything from a bare machine on.
.PHONY: help setup build demo scanner screenshots test test-asan test-tsan test-arm64 packages coverage fuzz bench accuracy scan-accuracy docs format lint clean train python serve test-python test-browser test-cluster

JOBS   ?= 2
PRAVIK := build/release/apps/pravik/pravik
SOURCES = $(shell git ls-files '*.cpp' '*.h')

help:
	@echo "make demo       set up, build, read every picture and clip in samples/ and print it beside its truth"
	@echo "make test       set up, build and run all tests"
	@echo "make build      set up and build a release (build/release)"
	@echo "make scanner    set up, build and start the scanner's window (ARGS=... for its arguments)"
	@echo "make screenshots  take a picture of the window in every state into docs/images/"
	@echo "make test-asan  unit tests under the address and undefined-behaviour sanitizers"
	@echo "make test-tsan  unit tests under the thread sanitizer"
	@echo "make test-arm64 unit tests of the library alone, cross-compiled for 64-bit Arm, under an emulator"
	@echo "make packages   Debian packages of library, development files and tools into build/release/packages/"
	@echo "make python     the Python package as a wheel that needs Python alone, into build/python/dist/"
	@echo "make serve      the service and its page, at http://127.0.0.1:8000/ (ARGS=... for its arguments)"
	@echo "make test-python  tests of the Python package and of the service;  make test-browser: of the page, in Chromium"
	@echo "make test-cluster  test of python/examples/ray_cards.py: 300 pictures on two workers, of which one is killed"
	@echo "make coverage   unit tests with the lines counted that they run; 85 % of src/ is the least"
	@echo "make fuzz       every fuzz target for SECONDS=60 each, or those named with TARGET=... (id-front, picture, ...)"
	@echo "make bench      benchmarks"
	@echo "make accuracy   draw fresh synthetic cards and report how many fields are read exactly"
	@echo "make scan-accuracy  draw fresh clips and report what the scanner makes of them and how long it takes"
	@echo "make train      train the reader of digit rows on real groups of digits (GROUPS=DIR) into build/train/"
	@echo "make docs       the reference of the public headers and the guide into build/docs/html/"
	@echo "make format     format the sources;  make lint: clang-format and clang-tidy in check mode"
	@echo "make clean      remove build/ (what tools/setup fetched stays)"

setup:
	@tools/setup

build: setup
	@tools/compile release $(JOBS) all

demo: setup
	@tools/compile release $(JOBS) pravik_tool
	@tools/demo

# Says by itself when there is no display.
scanner: setup
	@tools/compile release $(JOBS) pravik-scanner
	@build/release/apps/scanner/pravik-scanner $(ARGS)

screenshots: setup
	@tools/compile release $(JOBS) pravik-screenshots
	@tools/screenshots/screenshots

test: build
	@ctest --test-dir build/release --output-on-failure -j$(JOBS)

# A finding of a sanitizer ends the test that shows it, and fails it.
test-asan: export ASAN_OPTIONS = detect_stack_use_after_return=1:strict_string_checks=1
test-asan: export UBSAN_OPTIONS = print_stacktrace=1
test-tsan: export TSAN_OPTIONS = halt_on_error=1:history_size=7:second_deadlock_stack=1:suppressions=$(CURDIR)/tests/tsan.suppressions
test-asan test-tsan: test-%: setup
	@tools/compile $* $(JOBS) unit-tests
	@ctest --test-dir build/$* --output-on-failure -j$(JOBS) -L unit

packages: build
	@cd build/release && cpack

python: setup
	@tools/setup --python
	@python/setup
	@python/wheel $(JOBS)

install-wheel = build/python/env/bin/pip install --quiet --disable-pip-version-check --no-deps --force-reinstall \
	build/python/dist/*.whl
pytest = build/python/env/bin/pytest -c python/pyproject.toml --rootdir python python/tests

serve: python
	@$(install-wheel)
	@build/python/env/bin/pravik-serve $(ARGS)

test-python: python
	@tools/compile release $(JOBS) pravik_tool
	@$(install-wheel)
	@$(pytest)

test-browser: python
	@$(install-wheel)
	@$(pytest) -m browser

test-cluster: python
	@python/setup --cluster
	@$(install-wheel)
	@$(pytest) -m cluster

# The library alone, cross-compiled and run under an emulator.
test-arm64:
	@tools/setup --arm64
	@tools/compile arm64 $(JOBS) all
	@ctest --test-dir build/arm64 --output-on-failure -j$(JOBS)

# Not part of .ci/run: it compiles everything a fourth time for a figure that moves slowly.
# Listing the tests, as the build does, counts lines too; and counts of an older build do not fit a newer one.
forget-counts = find build/coverage -name '*.gcda' -delete 2>/dev/null || true
coverage: setup
	@$(forget-counts)
	@tools/compile coverage $(JOBS) unit-tests
	@$(forget-counts)
	@ctest --test-dir build/coverage --output-on-failure -j$(JOBS) -L unit
	@tools/coverage

fuzz: SECONDS = 60
fuzz: setup
	@tools/compile fuzz $(JOBS) fuzz-targets
	@fuzz/run $(SECONDS) $(TARGET)

bench: build
	@build/release/bench/pravik-bench
	@bench/process
	@bench/jobs
	@bench/window/window

accuracy: build
	@tools/accuracy/accuracy --pravik $(PRAVIK)

scan-accuracy: build
	@tools/accuracy/scan-accuracy --pravik $(PRAVIK)

docs:
	@tools/setup --docs
	@mkdir -p build/docs && doxygen Doxyfile && echo build/docs/html/index.html

format: setup
	@clang-format-19 -i $(SOURCES)

lint: setup
	@clang-format-19 --dry-run --Werror $(SOURCES)
	@cmake --preset lint > /dev/null
	@run-clang-tidy-19 -quiet -p build/lint -j$(JOBS) '^(?!.*/build/).*\.cpp$$'

clean:
	@rm -rf build

# Not part of a build: its result, backends/onnxruntime/digit-rows.onnx, lies in the repository.
train:
	@test -n "$(GROUPS)" || { echo "make train: say where the pictures of groups are: GROUPS=DIR" >&2; exit 2; }
	@mkdir -p build/train
	@test -x build/train/python/bin/python || python3 -m venv build/train/python
	@echo "train: installing what tools/train/requirements.txt names"
	@build/train/python/bin/pip install --quiet --requirement tools/train/requirements.txt
	@build/train/python/bin/python tools/train/train --groups "$(GROUPS)" --out build/train/digit-rows.onnx $(ARGS)
