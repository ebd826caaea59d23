# The commands that people type. CMake does the work: see CMakePresets.json for the build trees, build/NAME each.
#
# On a system without Debian packages, install what scripts/install-deps lists by hand and add INSTALL_DEPS=true.
INSTALL_DEPS ?= scripts/install-deps
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
SEED ?= 1
PAIRS ?= 5000000

.DEFAULT_GOAL := help
.PHONY: help example test model bench clang sanitize thread memcheck fuzz mutants coverage goldens docs lint format install

help: ## list these commands
	@sed -n 's/^\([a-z]*\):.* ## /\1\t/p' $(MAKEFILE_LIST) | expand -t 12

example: ## install what is missing, build, check the shipped example
	$(INSTALL_DEPS) example
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target korvelcheck
	scripts/example.sh build/release/src/tool/korvelcheck

test: ## install what is missing, build, run every test
	$(INSTALL_DEPS) test
	scripts/test-preset test $(JOBS)

model: ## the checker against its plain model on PAIRS random pairs, the first of them made from SEED
	$(INSTALL_DEPS) test
	cmake --preset test
	cmake --build --preset test -j $(JOBS) --target korvel_model_test
	KORVEL_SEED=$(SEED) KORVEL_PAIRS=$(PAIRS) build/test/tests/model/korvel_model_test --gtest_filter='Model.*'

bench: ## what things cost; BENCH_ARGS go to the library's part (--benchmark_filter=), PROCESS_ARGS to that of processes (--all)
	$(INSTALL_DEPS) bench
	cmake --preset bench
	cmake --build --preset bench -j $(JOBS)
	build/release/bench/library/korvel_library_bench --benchmark_out=build/release/library.json $(BENCH_ARGS)
	build/release/bench/process/korvel_process_bench $(PROCESS_ARGS) build/release

clang: ## every test, built with clang
	$(INSTALL_DEPS) ci
	scripts/test-preset clang $(JOBS)

sanitize: ## every test under the address and undefined-behaviour sanitizers
	$(INSTALL_DEPS) ci
	scripts/test-preset sanitize $(JOBS)

thread: ## checks at the same time, under the thread sanitizer
	$(INSTALL_DEPS) ci
	scripts/test-preset thread $(JOBS)

memcheck: ## the tests of the checker and of the metadata library under valgrind
	$(INSTALL_DEPS) test
	cmake --preset test
	cmake --build --preset test -j $(JOBS)
	scripts/memcheck $(JOBS)

fuzz: ## every fuzzer for TIME seconds (60) from SEED on, then a table of what they did; fails at a find
	$(INSTALL_DEPS) ci
	SEED=$(SEED) scripts/fuzz $(or $(TIME),60) $(JOBS)

mutants: ## change the rules in small ways; a test must fail for each. MUTANTS_ARGS as scripts/mutants takes them
	$(INSTALL_DEPS) ci
	scripts/mutants --jobs $(JOBS) $(MUTANTS_ARGS)

coverage: ## every line and branch of src/common must be taken by a test, or explained
	$(INSTALL_DEPS) ci
	scripts/coverage $(JOBS)

goldens: ## remake what tests compare with (tests/cases, tests/report, tests/tool); look at the difference before you commit it
	$(INSTALL_DEPS) test
	cmake --preset test
	cmake --build --preset test -j $(JOBS) --target cases_test --target report_test --target tool_test
	KORVEL_UPDATE_GOLDENS=1 build/test/tests/cases/cases_test
	KORVEL_UPDATE_GOLDENS=1 build/test/tests/report/report_test
	KORVEL_UPDATE_GOLDENS=1 build/test/tests/tool/tool_test --gtest_filter='Hostile*'

docs: ## write the index of docs/rules, and the summary of each page from the catalog
	$(INSTALL_DEPS) example
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target korvelcheck
	scripts/make-docs build/release/src/tool/korvelcheck

lint: ## format, clang-tidy, who includes whom, headers by themselves
	$(INSTALL_DEPS) ci
	scripts/lint $(JOBS)

format: ## format every C++ file
	$(INSTALL_DEPS) ci
	scripts/cxx-files | xargs clang-format -i

install: ## build and install the tool under PREFIX (/usr/local)
	$(INSTALL_DEPS) example
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	cmake --install build/release --prefix $(PREFIX)
