# SPDX-License-Identifier: MIT
# The front door: `make run`, `make test`, `make bench`. Each installs what is
# missing, configures on first use and builds before it does its work. The
# generator is asked for only when a tree is configured, after the installs.

WERROR ?= OFF
# SANITIZE=ON builds the tree with AddressSanitizer and UndefinedBehaviorSanitizer
# (LeakSanitizer included), optimised lightly with line tables, in a folder of
# its own, and runs every test there (`make sanitize` is `make test SANITIZE=ON`).
SANITIZE ?= OFF
SANITIZE_BUILD ?= build-sanitize
ifeq ($(SANITIZE),ON)
BUILD ?= $(SANITIZE_BUILD)
TREE_FLAGS = -DCMAKE_BUILD_TYPE=Debug "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g1" -DPLENDRA_SANITIZE=ON
else
BUILD ?= build
TREE_FLAGS =
endif
BENCH_BUILD ?= build-bench
GENERATOR = $(shell command -v ninja >/dev/null 2>&1 && echo Ninja || echo "Unix Makefiles")
JOBS ?= $(shell nproc 2>/dev/null || sysctl -n hw.ncpu 2>/dev/null || echo 2)

.PHONY: all deps configure build run test package package-build package-test bench sanitize clean

all: build

# Each command installs what its purpose needs, when missing: building and
# running, testing, benchmarking (with the tools plendra-batch is raced
# against), or packaging. The purpose reaches `deps` from the command asked for.
PURPOSE = test
run: PURPOSE = build
bench: PURPOSE = bench
package package-build package-test: PURPOSE = package

deps:
	@./scripts/install-deps.sh $(PURPOSE)

$(BUILD)/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD) -G "$(GENERATOR)" $(TREE_FLAGS) -DPLENDRA_WERROR=$(WERROR)

configure: deps $(BUILD)/CMakeCache.txt
	cmake -S . -B $(BUILD) -DPLENDRA_WERROR=$(WERROR) >/dev/null

build: configure
	cmake --build $(BUILD) -j $(JOBS)

# Builds just the program (not the tests). It looks for its window icon in the
# folder it starts in, and for the sample photos beside its bundle: both are
# the build folder.
run: configure
	cmake --build $(BUILD) -j $(JOBS) --target Plendra
	cd $(BUILD) && ./Plendra.app/Contents/MacOS/Plendra

# Every test but the package's, which installs and removes a system package.
# In a sanitizers' tree each test runs with the sanitizers' options set by the
# tree itself (tests/CMakeLists.txt), so plain ctest there does the same.
test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS) -LE package

# The .deb (a disk image on macOS), in build/package/.
package: build
	cmake --build $(BUILD) --target package

# Builds the .deb, installs it with apt-get, keys and saves with the installed
# program, removes it. Needs root (CI runs it on a throwaway machine). Builds
# only what the package holds and the test that uses it, not every test.
package-build: configure
	cmake --build $(BUILD) -j $(JOBS) --target plendra_packaged tst_installed_save

package-test: package-build
	cd $(BUILD) && ctest --output-on-failure -L package

# A separate optimised tree, so that the benchmark never measures a debug build.
bench: deps
	cmake -S . -B $(BENCH_BUILD) -G "$(GENERATOR)" -DCMAKE_BUILD_TYPE=Release \
	  -DPLENDRA_BUILD_BENCH=ON -DPLENDRA_BUILD_TESTS=OFF -DPLENDRA_WERROR=$(WERROR) >/dev/null
	cmake --build $(BENCH_BUILD) -j $(JOBS) --target plendra_bench plendra-batch plendra_batch_floor plendra_hotfolder_latency \
	  plendra_quality_bench
	QT_QPA_PLATFORM=offscreen $(BENCH_BUILD)/bench/plendra_bench
	./bench/batch_bench.sh $(BENCH_BUILD)
	./bench/hotfolder_bench.sh $(BENCH_BUILD)
	$(BENCH_BUILD)/bench/plendra_quality_bench


# Every test, built with AddressSanitizer and UndefinedBehaviorSanitizer
# (LeakSanitizer included), in build-sanitize/.
sanitize:
	$(MAKE) test SANITIZE=ON

clean:
	rm -rf build $(BENCH_BUILD) $(SANITIZE_BUILD)
