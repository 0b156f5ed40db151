# The two commands a new user needs are `make demo` and `make test`; each does
# its own set-up. The others serve CI and development.
SHELL := /bin/bash
, := ,

.PHONY: all setup build demo test test-setup test-release test-asan test-tsan fuzz fuzz-ci cross cross-aarch64 resources ci bench clean

BUILD      ?= build
BUILD_TYPE ?= RelWithDebInfo
CMAKE_ARGS ?=
JOBS       ?= $(shell nproc)
SECONDS    ?= 60
FUZZ_CI_SECONDS ?= 10
# Leaks inside system libraries that are not ours to fix.
LSAN_SUPPRESS = LSAN_OPTIONS=suppressions=$(CURDIR)/tests/sanitizers/lsan.supp

# Warnings are always on; they stop the build only where asked (CI sets
# CI=true, so its builds fail on any warning, while a user's or a packager's
# build with another compiler version does not).
WERROR     ?= $(if $(filter true 1 yes,$(CI)),ON,OFF)

CONFIGURE = cmake -S . -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DTENDRANE_WERROR=$(WERROR)

# Configures build folder $(1) with the arguments $(2), unless it was last
# configured with exactly these: the line is kept in the folder, and a
# different line starts the cache afresh, so that a changed BUILD_TYPE or
# CMAKE_ARGS always takes effect and a dropped -D option does not linger.
define configure
	@line='$(CONFIGURE) -B $(1) $(2)'; \
	if [ ! -f $(1)/build.ninja ] || [ "$$(cat $(1)/configure-line 2>/dev/null)" != "$$line" ]; then \
	  rm -f $(1)/CMakeCache.txt; echo "$$line"; eval "$$line" && echo "$$line" > $(1)/configure-line; \
	fi
endef

all: build

setup:
	@tools/setup-debian.sh build

build: setup
	$(call configure,$(BUILD),$(CMAKE_ARGS))
	cmake --build $(BUILD) -j $(JOBS)

demo: build
	@mkdir -p out
	$(BUILD)/bin/tendrane version
	@phrase=48:0:3.2:90,60:0:0.45:100,64:0.5:0.45:90,67:1:0.45:95,72:1.5:0.9:110,71:2.5:0.3:80,67:2.85:0.35:85; \
	branches=$$(for b in 1 2 3 4 5 6 7 8 9 10 11 12; do printf -- '--param Branch%s=0.7 ' $$b; done); \
	echo "render out/init.wav"; \
	$(BUILD)/bin/tendrane render --init --notes $$phrase -o out/init.wav || exit 1; \
	for seed in 11 2024 31337 777777; do \
	  echo "render out/seed$$seed.wav"; \
	  $(BUILD)/bin/tendrane render --seed $$seed $$branches --notes $$phrase -o out/seed$$seed.wav || exit 1; \
	done; \
	for n in 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15; do \
	  echo "render out/factory$$n.wav"; \
	  $(BUILD)/bin/tendrane render --factory $$n --notes $$phrase -o out/factory$$n.wav || exit 1; \
	done
	@echo "draw out/artwork-sheet.png"
	$(BUILD)/bin/tendrane artwork-sheet -o out/artwork-sheet.png

# The host tests need the real hosts (and wine with the Windows compiler).
test-setup:
	@tools/setup-debian.sh build host

test: test-setup build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-asan: setup
	$(call configure,build-asan,-DTENDRANE_SANITIZE=address$(,)undefined -DTENDRANE_BENCH=OFF -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1 -DNDEBUG")
	cmake --build build-asan -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1 $(LSAN_SUPPRESS) UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir build-asan --output-on-failure -j $(JOBS) -LE 'host|slow'

test-tsan: setup
	$(call configure,build-tsan,-DTENDRANE_SANITIZE=thread -DTENDRANE_BENCH=OFF)
	cmake --build build-tsan -j $(JOBS)
	TSAN_OPTIONS=halt_on_error=1 ctest --test-dir build-tsan --output-on-failure -j $(JOBS) -LE 'host|slow'

build-fuzz/build.ninja:
	@tools/setup-debian.sh build fuzz
	CC=clang CXX=clang++ $(CONFIGURE) -B build-fuzz -DTENDRANE_FUZZ=ON -DTENDRANE_WERROR=OFF

# make fuzz TARGET=name SECONDS=n
fuzz: build-fuzz/build.ninja
	@test -n "$(TARGET)" || (echo "make fuzz TARGET=name [SECONDS=n]; targets:"; ls tests/fuzz | grep -v replay_main | sed 's/\.cpp$$//'; exit 1)
	cmake --build build-fuzz -j $(JOBS) --target fuzz_$(TARGET)
	@mkdir -p build-fuzz/corpus/$(TARGET)
	$(LSAN_SUPPRESS) build-fuzz/tests/fuzz_$(TARGET) -max_total_time=$(SECONDS) -print_final_stats=1 \
	  build-fuzz/corpus/$(TARGET) $(wildcard tests/fuzz/corpus/$(TARGET))

# Every fuzz target for a short time.
FUZZ_TARGETS = $(filter-out fuzz_replay_main,$(patsubst tests/fuzz/%.cpp,fuzz_%,$(wildcard tests/fuzz/*.cpp)))

fuzz-ci: build-fuzz/build.ninja
	cmake --build build-fuzz -j $(JOBS) --target $(FUZZ_TARGETS)
	@set -e; for src in tests/fuzz/*.cpp; do \
	  name=$$(basename $$src .cpp); [ "$$name" = replay_main ] && continue; \
	  mkdir -p build-fuzz/corpus/$$name; \
	  echo "== fuzz $$name ($(FUZZ_CI_SECONDS) s)"; \
	  $(LSAN_SUPPRESS) build-fuzz/tests/fuzz_$$name -max_total_time=$(FUZZ_CI_SECONDS) -print_final_stats=1 \
	    build-fuzz/corpus/$$name $$(ls -d tests/fuzz/corpus/$$name 2>/dev/null) 2>&1 | tail -n 12; \
	  test $${PIPESTATUS[0]} -eq 0; \
	done

# The portable core, cross-built for both Windows targets.
cross:
	@tools/setup-debian.sh build cross
	$(CONFIGURE) -B build-mingw32 -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-i686.cmake -DTENDRANE_CORE_ONLY=ON
	cmake --build build-mingw32 -j $(JOBS) --target core tendrane_vst
	tests/host/windows/check_dll.sh i686-w64-mingw32-objdump build-mingw32/vst/Tendrane.dll
	$(CONFIGURE) -B build-mingw64 -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-x86_64.cmake -DTENDRANE_CORE_ONLY=ON
	cmake --build build-mingw64 -j $(JOBS) --target core tendrane_vst
	tests/host/windows/check_dll.sh x86_64-w64-mingw32-objdump build-mingw64/vst/Tendrane.dll

# The core for Linux on 64-bit ARM, without the desktop's libraries, with
# the tests of the sound, the patch model, the plug-in's standalone parts
# and the stored render self-test run under qemu-aarch64 (ctest runs them
# through the toolchain's emulator).
AARCH64_BUILD ?= build-aarch64

cross-aarch64:
	@tools/setup-debian.sh build aarch64
	$(call configure,$(AARCH64_BUILD),-DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake -DTENDRANE_CORE_ONLY=ON -DTENDRANE_HEADLESS=ON $(CMAKE_ARGS))
	cmake --build $(AARCH64_BUILD) -j $(JOBS) --target core engine_tests patch_tests plugin_tests selftest_tests
	ctest --test-dir $(AARCH64_BUILD) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD)/bench/bench_*; do echo "== $$b"; $$b; done

# The Release build with its unit tests (the host tests run in `make test`).
test-release: setup
	$(call configure,build-release,-DCMAKE_BUILD_TYPE=Release -DTENDRANE_BENCH=OFF)
	cmake --build build-release -j $(JOBS)
	ctest --test-dir build-release --output-on-failure -j $(JOBS) -LE 'host|slow'

# The tools that make the committed images and font atlases, and the test
# that runs them again and compares their output with the committed files.
resources:
	@tools/setup-debian.sh build tools
	$(call configure,build-tools,-DTENDRANE_TOOLS=ON -DTENDRANE_TESTS=OFF -DTENDRANE_BENCH=OFF)
	cmake --build build-tools -j $(JOBS) --target fontbake artwork
	ctest --test-dir build-tools --output-on-failure -j $(JOBS) -L resources --no-tests=ignore

# What CI runs (.ci/run is `make ci`), step by step, each with its time.
# Short random fuzzing adds little to the corpus replay that every build
# runs (under the sanitizers in test-asan) and costs a third compiler build,
# so it stays out of CI: run `make fuzz-ci` or `make fuzz` by hand.
# cross-aarch64 takes 7 min 40 s from nothing on 2 busy cores (most of
# it compiling; the tests under qemu take under a minute and a half).
CI_STEPS = test test-release test-asan cross cross-aarch64 resources

ci:
	@start=$$(date +%s); \
	for step in $(CI_STEPS); do \
	  t0=$$(date +%s); echo; echo "=== make $$step (at $$(( t0 - start )) s)"; \
	  $(MAKE) --no-print-directory $$step WERROR=ON || { echo "=== make $$step FAILED after $$(( $$(date +%s) - t0 )) s"; exit 1; }; \
	  echo "=== make $$step took $$(( $$(date +%s) - t0 )) s"; \
	done; \
	echo; echo "=== CI steps done in $$(( $$(date +%s) - start )) s"

clean:
	rm -rf build build-release build-tools build-asan build-tsan build-fuzz build-mingw32 build-mingw64 build-aarch64 out
