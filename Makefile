# Shortcuts for common commands. CMake does the work: CMakePresets.json defines the build trees, build/NAME each.
#
# On a system without Debian packages, install the packages that scripts/install-deps lists by hand and add INSTALL_DEPS=true.
INSTALL_DEPS ?= scripts/install-deps
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
SEED ?= 1
PAIRS ?= 5000000
EXECUTED_PAGES := docs/how-to/*.md docs/mistakes.md docs/schema-from-types.md docs/tutorial.md

.DEFAULT_GOAL := help
.PHONY: help example test model bench clang sanitize thread memcheck fuzz fuzz-tool mutants coverage case goldens docs lint format install dist debian-packages release-check

help: ## list these commands
	@sed -n 's/^\([a-z-]*\):.* ## /\1\t/p' $(MAKEFILE_LIST) | expand -t 12

example: ## install missing packages, build, check the shipped example
	$(INSTALL_DEPS) example
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target korvelcheck
	scripts/example.sh build/release/src/tool/korvelcheck

test: ## install missing packages, build, run every test
	$(INSTALL_DEPS) test
	scripts/test-preset test $(JOBS)

model: ## compare the checker with its plain model on PAIRS random pairs, starting from SEED
	$(INSTALL_DEPS) test
	cmake --preset test
	cmake --build --preset test -j $(JOBS) --target korvel_model_test
	KORVEL_SEED=$(SEED) KORVEL_PAIRS=$(PAIRS) build/test/tests/model/korvel_model_test --gtest_filter='Model.*'

bench: ## run the benchmarks; BENCH_ARGS go to the library's (--benchmark_filter=), PROCESS_ARGS to the process's (--all)
	$(INSTALL_DEPS) bench
	cmake --preset bench
	cmake --build --preset bench -j $(JOBS)
	build/release/bench/library/korvel_library_bench --benchmark_out=build/release/library.json $(BENCH_ARGS)
	build/release/bench/process/korvel_process_bench $(PROCESS_ARGS) build/release

clang: ## run every test, built with clang
	$(INSTALL_DEPS) ci
	scripts/test-preset clang $(JOBS)

sanitize: ## run every test under the address and undefined-behavior sanitizers
	$(INSTALL_DEPS) ci
	scripts/test-preset sanitize $(JOBS)

thread: ## run concurrent checks under the thread sanitizer
	$(INSTALL_DEPS) ci
	scripts/test-preset thread $(JOBS)

memcheck: ## run the tests of the checker and of the metadata library under valgrind
	$(INSTALL_DEPS) test
	cmake --preset test
	cmake --build --preset test -j $(JOBS)
	scripts/memcheck $(JOBS)

fuzz: ## run every fuzzer for TIME seconds (60), starting from SEED, and print a summary; fail if one finds a bug
	$(INSTALL_DEPS) ci
	SEED=$(SEED) scripts/fuzz $(or $(TIME),60) $(JOBS)

fuzz-tool: ## run whole calls under a second fuzzing engine for TIME seconds (60), starting from SEED, and print a summary
	$(INSTALL_DEPS) fuzz-tool
	SEED=$(SEED) scripts/fuzz-tool $(or $(TIME),60) $(JOBS)

mutants: ## run the mutation tests: a test must fail for each small change to the rules. MUTANTS_ARGS go to scripts/mutants
	$(INSTALL_DEPS) ci
	scripts/mutants --jobs $(JOBS) $(MUTANTS_ARGS)

coverage: ## measure coverage: a test must take every line and branch of src/common that is not explained
	$(INSTALL_DEPS) ci
	scripts/coverage $(JOBS)

case: ## create the directory of a case with template schemas: make case NAME=FAMILY/CASE
	@scripts/new-case '$(NAME)'

goldens: ## regenerate golden files and the output of commands in documents; review the diff before you commit it
	$(INSTALL_DEPS) test
	cmake --preset test
	cmake --build --preset test -j $(JOBS) --target cases_test --target report_test --target tool_test
	KORVEL_UPDATE_GOLDENS=1 build/test/tests/cases/cases_test
	KORVEL_UPDATE_GOLDENS=1 build/test/tests/report/report_test
	KORVEL_UPDATE_GOLDENS=1 build/test/tests/tool/tool_test --gtest_filter='Hostile*:DocumentTest.*'
	KORVEL_UPDATE_GOLDENS=1 tests/lsp/client/run build/test/src/tool/korvelcheck
	examples/check.sh build/test/src/tool/korvelcheck --update
	for page in $(EXECUTED_PAGES); do tests/documents/run_document.py $$page build/test/src/tool/korvelcheck --update; done

docs: ## write the grammar of schema files, the index of docs/rules, and the summary of each page from the catalog
	$(INSTALL_DEPS) example
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target korvelcheck --target write_grammar
	build/release/src/grammar/write_grammar docs
	scripts/make-docs build/release/src/tool/korvelcheck

lint: ## check formatting, clang-tidy, include dependencies and self-contained headers
	$(INSTALL_DEPS) ci
	scripts/lint $(JOBS)

format: ## format every C++ file
	$(INSTALL_DEPS) ci
	scripts/cxx-files | xargs clang-format -i

install: ## build and install the tool and the libraries under PREFIX (/usr/local)
	$(INSTALL_DEPS) example
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	cmake --install build/release --prefix $(PREFIX)

dist: ## build the release archive, without shared libraries, with its SBOM, the Python wheel and checksums, in dist/
	$(INSTALL_DEPS) release
	scripts/dist $(JOBS)

debian-packages: ## build the Debian packages of HEAD in build/debian, check them and install them in a new system
	$(INSTALL_DEPS) release
	rm -rf build/debian
	scripts/debian-packages build/debian $(JOBS)
	/usr/bin/python3 -B tests/packaging/debian_test.py . build/debian

release-check: ## check that HEAD can be released: version, changelog, two identical builds, the archive; see RELEASE.md
	$(INSTALL_DEPS) release
	scripts/release-check $(JOBS)
