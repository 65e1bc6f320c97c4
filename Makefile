# Developer entry points. `make demo` and `make test` work on a fresh Debian 12
# machine: they install what is missing, configure, build and run.

DEBIAN_PACKAGES := g++ cmake ninja-build pkg-config libxerces-c-dev \
                   libgtest-dev libgmock-dev libbenchmark-dev \
                   libcli11-dev nlohmann-json3-dev
# Checksums of compiled catalogues (header only).
DEBIAN_PACKAGES += libxxhash-dev
# ICU: its plural rules are compiled into a table at build time.
DEBIAN_PACKAGES += libicu-dev

RELEASE_DIR := build/release
TEST_DIR    := build/debug-asan
BENCH_DIR   := build/bench
JOBS        ?= 2

# The project's own builds treat warnings as errors; a plain cmake build of a
# clone or of a release does not.
OWN_BUILD := -DMSG_WARNINGS_AS_ERRORS=ON

# Debian packages (cmake/MsgPackaging.cmake): the trees they are built from
# put the libraries into Debian's multiarch directory. Expanded when used,
# after `deps` has installed the compiler.
PACKAGE_LIBDIR = -DCMAKE_INSTALL_LIBDIR=lib/$(shell gcc -print-multiarch)
# dpkg-shlibdeps (dpkg-dev) and file for the packages' dependencies, lintian
# to check them.
PACKAGE_PACKAGES := dpkg-dev file lintian

# ThreadSanitizer tree: the library and the threads test only, run by `make test`.
TSAN_DIR := build/tsan

# The peers of the benchmarks: optional for the build, installed by `make bench`.
BENCH_PACKAGES    := gettext libicu-dev icu-devtools libfmt-dev python3
BENCH_REPETITIONS ?= 9
BENCH_FLAGS       ?=
# Runs of each process in the start-up measurement (tools/startup-bench.sh).
STARTUP_RUNS      ?= 15

# Hardening: libFuzzer targets built with clang (fuzz/), and the tests under
# valgrind memcheck. `make test` runs each fuzz target for a few seconds.
FUZZ_DIR           := build/fuzz
MEMCHECK_DIR       := build/memcheck
FUZZ_PACKAGES      := clang-14 libclang-rt-14-dev
MEMCHECK_PACKAGES  := valgrind
FUZZ_SECONDS       ?= 60
FUZZ_SMOKE_SECONDS ?= 5

# The translators' tools that msgtool's export and import are tested
# against; test tools only, never dependencies of the library or the tool.
TRANSLATION_TEST_PACKAGES := gettext translate-toolkit

# Unicode's own test data (GraphemeBreakTest.txt), read by the formatting
# channel's Unicode layout test; test data only.
UNICODE_TEST_PACKAGES := unicode-data

# man and groff, which render msgtool's generated manual page in its test;
# test tools only.
MANUAL_TEST_PACKAGES := man-db groff-base

# clang-tidy (checks in .clang-tidy) and clang-format (.clang-format), run by
# `make test` before anything is built.
LINT_PACKAGES := clang-tidy clang-format

# The API reference (docs/Doxyfile.in): Doxygen, and Python for the filter
# that hands the headers' comments to it. The tree is configured without
# tests, examples or tool; its html/ is the reference.
DOCS_DIR      := build/docs
DOCS_PACKAGES := doxygen python3

.PHONY: deps demo test test-tree lint format-check fault-check docs docs-check release bench \
        bench-tree startup-bench fuzz fuzz-build memcheck tsan format clean \
        package package-test dist

deps:
	@tools/install-deps.sh $(DEBIAN_PACKAGES)

release: deps
	cmake -S . -B $(RELEASE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo $(PACKAGE_LIBDIR) \
	  $(OWN_BUILD)
	cmake --build $(RELEASE_DIR) -j $(JOBS)

# The Debian packages libmsg0, libmsg-dev and msgtool of the release tree,
# in $(RELEASE_DIR)/packages.
package: release
	@tools/install-deps.sh $(PACKAGE_PACKAGES)
	cd $(RELEASE_DIR) && cpack

# The packages of a tree unpacked into a scratch root (nothing is installed):
# contents, versions, lintian, and the consumer examples built against that
# root alone (cmake/RunPackageTest.cmake). `make test` runs it on the fuzz
# tree, whose library and msgtool are built plainly, with clang and no
# sanitizer (only the fuzz targets' copies are instrumented), so it costs no
# build of its own.
package-test: fuzz-build
	@tools/install-deps.sh $(PACKAGE_PACKAGES)
	cmake -DMSG_BINARY_DIR=$(CURDIR)/$(FUZZ_DIR) -DMSG_SOURCE_DIR=$(CURDIR) \
	  -DWORK_DIR=$(CURDIR)/$(FUZZ_DIR)/package-test -DCXX_COMPILER=g++ \
	  -P cmake/RunPackageTest.cmake

# The source archive build/msg-<version>.tar.gz of the committed HEAD. It
# holds everything the build and the tests read, and builds offline.
dist:
	@version=$$(sed -n 's/^project(msg VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt) && \
	mkdir -p build && \
	git archive --format=tar.gz --prefix=msg-$$version/ -o build/msg-$$version.tar.gz HEAD && \
	echo build/msg-$$version.tar.gz

demo: release
	$(RELEASE_DIR)/examples/demo
	$(RELEASE_DIR)/tools/msgtool/msgtool check examples/catalogue/demo.xml
	$(RELEASE_DIR)/tools/msgtool/msgtool show --languages de-AT,de,en --width 48 \
	  examples/catalogue/demo.xml demo maintenance /srv/archive

# Debug build with AddressSanitizer and UndefinedBehaviorSanitizer; any
# sanitizer report aborts the test that caused it. Then every fuzz target
# runs for FUZZ_SMOKE_SECONDS and replays its kept regression inputs, in the
# clang tree of `make fuzz` (CTest label "fuzz").
# Format, planted-fault patterns, the API reference and clang-tidy come
# first: they take seconds to a few minutes and fail before the long builds.
# The Debian packages are built from the fuzz tree and tested unpacked
# (package-test).
test: deps format-check fault-check docs-check lint fuzz-build package-test tsan test-tree
	@tools/install-deps.sh $(TRANSLATION_TEST_PACKAGES) $(UNICODE_TEST_PACKAGES) \
	  $(MANUAL_TEST_PACKAGES)
	cmake --build $(TEST_DIR) -j $(JOBS)
	cd $(TEST_DIR) && ctest --output-on-failure -j $(JOBS)
	cd $(FUZZ_DIR)/fuzz && ctest --output-on-failure -j $(JOBS)

test-tree: deps
	cmake -S . -B $(TEST_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DMSG_SANITIZE=ON -DMSG_BUILD_BENCH=ON $(OWN_BUILD)

# clang-tidy over the library's and msgtool's sources, with the compile
# commands of the test tree, JOBS files at a time.
lint: test-tree
	@tools/install-deps.sh $(LINT_PACKAGES)
	tools/lint.sh $(TEST_DIR) $(JOBS)

# Every tracked source formatted as .clang-format says (`make format` fixes it).
format-check:
	@tools/install-deps.sh $(LINT_PACKAGES)
	git ls-files '*.h' '*.cpp' | xargs -r clang-format --dry-run -Werror

# The HTML reference of the public headers, with README.md as its main page
# and the guides of docs/ as related pages, in $(DOCS_DIR)/html/index.html.
# Fails on any warning of Doxygen: a public class, function, member or enum
# value without documentation, a @param that names no parameter, a broken
# reference.
docs: deps
	@tools/install-deps.sh $(DOCS_PACKAGES)
	cmake -S . -B $(DOCS_DIR) -G Ninja -DMSG_BUILD_TESTS=OFF -DMSG_BUILD_EXAMPLES=OFF \
	  -DMSG_BUILD_TOOLS=OFF -DMSG_DOCS_DIR=$(CURDIR)/$(DOCS_DIR)
	cmake --build $(DOCS_DIR) --target docs

# The reference's warning check, as `make test` runs it: builds the
# reference (only the reference, no code).
docs-check: docs

# Every planted fault of tools/plant-faults.py still finds its code; builds nothing.
fault-check:
	python3 tools/plant-faults.py --check

# The fuzz targets of fuzz/ with clang, libFuzzer, ASan and UBSan, in their own
# tree (the library is compiled once more there, with coverage).
fuzz-build: deps
	@tools/install-deps.sh $(FUZZ_PACKAGES)
	cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DCMAKE_CXX_COMPILER=clang++-14 -DMSG_BUILD_FUZZ=ON -DMSG_BUILD_TESTS=OFF \
	  -DMSG_BUILD_EXAMPLES=OFF -DMSG_FUZZ_SMOKE_SECONDS=$(FUZZ_SMOKE_SECONDS) $(PACKAGE_LIBDIR) \
	  $(OWN_BUILD)
	cmake --build $(FUZZ_DIR) -j $(JOBS)

# Runs every fuzz target for FUZZ_SECONDS, one after the other, and prints
# executions and coverage; failing inputs land in $(FUZZ_DIR)/fuzz/logs.
fuzz: fuzz-build
	tools/run-fuzzers.sh $(FUZZ_DIR)/fuzz $(FUZZ_SECONDS)

# Debug build without sanitizers; every test executable runs under valgrind
# memcheck and fails on a memory error or a lost block (tools/memcheck.sh;
# the deliberate ones are named in tools/valgrind.supp).
memcheck: deps
	@tools/install-deps.sh $(MEMCHECK_PACKAGES)
	cmake -S . -B $(MEMCHECK_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DMSG_SANITIZE=OFF \
	  -DMSG_BUILD_EXAMPLES=OFF
	cmake --build $(MEMCHECK_DIR) -j $(JOBS)
	tools/memcheck.sh $(MEMCHECK_DIR) $(JOBS)

# Release build of the benchmarks against gettext and ICU, run with
# repetitions in random order; prints the medians and the msg/peer ratios of
# the run and keeps its JSON in $(BENCH_DIR)/results.json; then the start-up
# measurement (startup-bench below).
# `make test` builds the benchmarks too (so they keep compiling) but does not
# run them.
bench: bench-tree
	cmake --build $(BENCH_DIR) -j $(JOBS) --target msg_bench msg_bench_catalogue_1m \
	  msgtool_check_bench msgtool_import_bench
	$(BENCH_DIR)/bench/msg_bench --benchmark_repetitions=$(BENCH_REPETITIONS) \
	  --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
	  --benchmark_out=$(BENCH_DIR)/results.json --benchmark_out_format=json $(BENCH_FLAGS)
	python3 tools/bench_report.py $(BENCH_DIR)/results.json
	$(BENCH_DIR)/bench/msgtool_check_bench $(BENCH_DIR)/tools/msgtool/msgtool 5 \
	  $(BENCH_DIR)/bench/catalogue/messages.xml $(BENCH_DIR)/bench/catalogue/messages-part.xml
	$(BENCH_DIR)/bench/msgtool_import_bench $(BENCH_DIR)/tools/msgtool/msgtool 5 \
	  $(BENCH_DIR)/bench/catalogue/messages.xsd 5000 10000
	$(MAKE) --no-print-directory startup-bench

bench-tree: deps
	@tools/install-deps.sh $(BENCH_PACKAGES)
	cmake -S . -B $(BENCH_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release -DMSG_BUILD_BENCH=ON \
	  -DMSG_BUILD_TESTS=OFF -DMSG_BUILD_EXAMPLES=OFF

# Start-up of whole processes, side by side with gettext (bench/startup,
# tools/startup-bench.sh): CPU, peak RSS and shared libraries per process,
# medians of STARTUP_RUNS runs. Part of `make bench`; alone it takes a
# minute once the million-key catalogues exist.
startup-bench: bench-tree
	cmake --build $(BENCH_DIR) -j $(JOBS) --target msg_startup_bench
	tools/startup-bench.sh $(BENCH_DIR) $(STARTUP_RUNS)

# The threads test built with ThreadSanitizer in a tree of its own: several
# threads share one loaded handler and write through its channels; any
# report of the sanitizer fails it.
tsan: deps
	cmake -S . -B $(TSAN_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMSG_SANITIZE_THREAD=ON \
	  -DMSG_BUILD_EXAMPLES=OFF $(OWN_BUILD)
	cmake --build $(TSAN_DIR) -j $(JOBS) --target threads_test
	TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" $(TSAN_DIR)/tests/threads_test

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build
