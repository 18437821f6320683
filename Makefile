# SPDX-License-Identifier: MIT
# The front door: `make run`, `make test`, `make bench`. Each installs what is
# missing, configures on first use and builds before it does its work. The
# generator is asked for only when a tree is configured, after the installs.

BUILD ?= build
BENCH_BUILD ?= build-bench
WERROR ?= OFF
GENERATOR = $(shell command -v ninja >/dev/null 2>&1 && echo Ninja || echo "Unix Makefiles")
JOBS ?= $(shell nproc 2>/dev/null || sysctl -n hw.ncpu 2>/dev/null || echo 2)

.PHONY: all deps configure build run test package package-test bench sanitize sanitize-build clean

all: build

# Each command installs what its purpose needs, when missing: building and
# running, testing, benchmarking (with the tools plendra-batch is raced
# against), or packaging. The purpose reaches `deps` from the command asked for.
PURPOSE = test
run: PURPOSE = build
bench: PURPOSE = bench
package package-test: PURPOSE = package

deps:
	@./scripts/install-deps.sh $(PURPOSE)

$(BUILD)/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD) -G "$(GENERATOR)" -DPLENDRA_WERROR=$(WERROR)

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
test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS) -LE package

# The .deb (a disk image on macOS), in build/package/.
package: build
	cmake --build $(BUILD) --target package

# Builds the .deb, installs it with apt-get, keys and saves with the installed
# program, removes it. Needs root (CI runs it on a throwaway machine).
package-test: build
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


# Every unit and widget test again, built with AddressSanitizer and
# UndefinedBehaviorSanitizer (LeakSanitizer included) in a tree of its own.
# Line tables are all a sanitizer's report needs; the tests that start the
# program on a virtual screen are not built there.
SANITIZE_BUILD ?= build-sanitize
sanitize-build: deps
	@test -f $(SANITIZE_BUILD)/CMakeCache.txt || cmake -S . -B $(SANITIZE_BUILD) -G "$(GENERATOR)" \
	  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-g1 -DPLENDRA_SANITIZE=ON -DPLENDRA_E2E_TESTS=OFF \
	  -DPLENDRA_WERROR=$(WERROR)
	cmake --build $(SANITIZE_BUILD) -j $(JOBS)

sanitize: sanitize-build
	cd $(SANITIZE_BUILD) && \
	  ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1:detect_stack_use_after_return=1 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/sanitizers/lsan.supp:print_suppressions=0 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --output-on-failure -j $(JOBS) -LE "e2e|package"


clean:
	rm -rf $(BUILD) $(BENCH_BUILD) $(SANITIZE_BUILD)
