# Developer entry points. `make demo` and `make test` work on a fresh Debian 12
# machine: they install what is missing, configure, build and run.

DEBIAN_PACKAGES := g++ cmake ninja-build pkg-config libxerces-c-dev \
                   libgtest-dev libgmock-dev libbenchmark-dev

RELEASE_DIR := build/release
TEST_DIR    := build/debug-asan
JOBS        ?= 2

.PHONY: deps demo test release format clean

deps:
	@tools/install-deps.sh $(DEBIAN_PACKAGES)

release: deps
	cmake -S . -B $(RELEASE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(RELEASE_DIR) -j $(JOBS)

demo: release
	$(RELEASE_DIR)/examples/demo

# Debug build with AddressSanitizer and UndefinedBehaviorSanitizer; any
# sanitizer report aborts the test that caused it.
test: deps
	cmake -S . -B $(TEST_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DMSG_SANITIZE=ON
	cmake --build $(TEST_DIR) -j $(JOBS)
	cd $(TEST_DIR) && ctest --output-on-failure -j $(JOBS)

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build
