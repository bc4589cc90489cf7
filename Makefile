# SPDX-License-Identifier: MIT
#
# Short names for what CMake, CTest and the scripts do. `make help` lists them.

PRESET = release
BUILD = build/$(PRESET)
PREFIX = /usr/local
JOBS = $(shell nproc)
SECONDS = 60
SEED = $(shell date +%s)
# Figures for the speed pictures; measured for them when there are none.
SPEED = $(wildcard $(BUILD)/speed/*.json)
# What to build; empty for everything.
TARGETS =
# Which tests `make asan` runs, as an expression; empty for all.
TESTS =
# For CMake, at the first build: OPTIONS="-DLUXVM_TOOLS=OFF" builds the libraries alone.
OPTIONS =
# What `make install PREFIX=...` installed, for each prefix.
MANIFEST = $(BUILD)/installed$(PREFIX)/manifest.txt

.PHONY: help deps build run test slow test-slow fuzz asan coverage accuracy accuracy-quick bench hashes abi docs docs-check install lines format clean examples plots uninstall deb deb-test

help:        ## this list
	@sed -n 's/^\([a-z-]*\):[^#]*## /\1\t/p' $(firstword $(MAKEFILE_LIST)) | expand -t 12

deps:        ## install the packages that the build needs (Debian)
	@tools/deps.sh

$(BUILD)/CMakeCache.txt:
	cmake --preset $(PRESET) $(OPTIONS)

build: $(BUILD)/CMakeCache.txt  ## configure and build, without looking for packages
	cmake --build --preset $(PRESET) --parallel $(JOBS) $(TARGETS:%=--target %)

run: deps    ## build, then show the library at work on a data file
	@$(MAKE) --no-print-directory build TARGETS="luxvm first watch_reports compare_libm"
	examples/run_demo.sh $(BUILD)/bin

examples: deps  ## build and run the examples in C, C++ and Fortran, beside libm
	@$(MAKE) --no-print-directory build TARGETS=examples
	examples/run_examples.sh $(BUILD)/bin

test: deps   ## build and run the fast tests
	@$(MAKE) --no-print-directory build
	ctest --preset fast --parallel $(JOBS)

slow: deps   ## build and run the exhaustive tests
	@$(MAKE) --no-print-directory build
	ctest --preset slow

test-slow: slow

fuzz: deps   ## try the promises over random patterns for SECONDS (60), from SEED (the time)
	@$(MAKE) --no-print-directory build TARGETS=fuzz
	$(BUILD)/bin/fuzz --seconds $(SECONDS) --seed $(SEED) --keep tests/findings.txt

asan: deps   ## build with the sanitizers and run the tests under them
	@$(MAKE) --no-print-directory build PRESET=asan-ubsan
	ctest --preset asan-ubsan --parallel $(JOBS) $(TESTS:%=--tests-regex '%')

coverage: deps  ## how much of the libraries the fast tests run; fails below all lines or 95 % of branches
	@$(MAKE) --no-print-directory build PRESET=coverage
	find build/coverage -name '*.gcda' -delete
	ctest --preset coverage --parallel $(JOBS)
	tools/coverage.py build/coverage

bench: deps  ## measure every function and renew docs/performance.md
	@$(MAKE) --no-print-directory build TARGETS=luxvm
	tools/performance.py $(BUILD)/bin/luxvm docs/performance.md --figures $(BUILD)/speed

plots: deps  ## draw every family's errors and speed into build/plots, in minutes
	@$(MAKE) --no-print-directory build TARGETS=luxvm
	tools/plots.py $(BUILD)/bin/luxvm build/plots $(addprefix --speed ,$(strip $(SPEED)))

accuracy: deps  ## measure all errors, every single of the one-argument 32f functions, and renew the documents' figures
	@$(MAKE) --no-print-directory build TARGETS=luxvm
	tools/accuracy.sh $(BUILD)/bin $(BUILD)/figures --exhaustive

accuracy-quick: deps  ## the same by samples only, in minutes
	@$(MAKE) --no-print-directory build TARGETS=luxvm
	tools/accuracy.sh $(BUILD)/bin $(BUILD)/figures --samples 50000

hashes: deps ## renew the published hashes of all results, once every other test has passed
	@$(MAKE) --no-print-directory build
	ctest --preset fast --exclude-regex '^check_test$$'
	$(BUILD)/bin/luxvm check --publish conformance/result_hashes.def
	@$(MAKE) --no-print-directory build

abi: deps    ## add new exports to the published lists in abi/; refused where one would be lost
	@$(MAKE) --no-print-directory build TARGETS="luxvmk3 luxcore"
	abi/abilist.py $(BUILD)/lib/libluxvmk3.so abi/luxvmk3.abilist --renew
	abi/abilist.py $(BUILD)/lib/libluxcore.so abi/luxcore.abilist --renew

build/plots:
	@$(MAKE) --no-print-directory plots

docs: | build/plots  ## build the site of the documents, build/site/index.html; with what `make plots` drew last
	@tools/deps.sh docs
	/usr/bin/python3 tools/docs_site.py build/site

docs-check: docs  ## look at the site in headless Chromium: links, console, search; pictures in build/screenshots
	/usr/bin/python3 tools/docs_check.py build/site --screenshots build/screenshots

# Neither looks for packages: what is missing is told by CMake.
install:     ## build and install under PREFIX (/usr/local), below DESTDIR if set
	@$(MAKE) --no-print-directory build TARGETS=installed
	umask 022 && cmake --install $(BUILD) --prefix $(PREFIX)
	@mkdir -p $(dir $(MANIFEST)) && cp $(BUILD)/install_manifest.txt $(MANIFEST)

uninstall:   ## remove what was installed under PREFIX, below DESTDIR if set
	cmake -D MANIFEST=$(abspath $(MANIFEST)) -P cmake/uninstall.cmake

deb:         ## build the Debian packages, into build/deb
	@tools/deps.sh deb
	tools/deb.sh build/deb

deb-test:    ## build them twice, compare, install, use and purge them (as root)
	@tools/deps.sh deb
	tools/deb_test.sh

lines:       ## count the lines of the tests beside those of all other code
	@tools/lines.py

format:      ## lay out all C and C++ files
	tools/format.sh

clean:       ## remove everything that was built
	rm -rf build
