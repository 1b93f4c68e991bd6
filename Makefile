# docmgr: set-up, build, demo and tests on Debian 12.
#   make demo   install what is missing, build, run the tool's demo on a sample sync root
#   make test   install what is missing, build, run every test
#   make bench  build and run the benchmarks (Release): ratios to raw SQLite, then the scan ratios
#   make fuzz   build the libFuzzer targets (clang) and run each for SECONDS (default 60)
#   make crash-test KILLS=N        a writer killed N times (default 200); no corruption, no lost write
#   make tsan-test STRESS_SECONDS=N the tests and an 8-thread stress run (default 60 s) under ThreadSanitizer
#   make windows-test  cross-build for Windows (mingw-w64) and run every test under Wine
#   make windows-demo  run the Windows tool's demo under Wine on a sample sync root

PACKAGES := build-essential cmake pkg-config libsqlite3-dev libnspr4-dev googletest \
            libgtest-dev libgmock-dev libbenchmark-dev gettext clang libclang-rt-14-dev
BUILD    ?= build
JOBS     ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?=
SECONDS  ?= 60
FUZZ_TARGETS := fuzz_json fuzz_blocklist fuzz_pathrules fuzz_format
KILLS    ?= 200
STRESS_SECONDS ?= 60
# Any ThreadSanitizer report ends the run with a failure.
TSAN_OPTIONS_RUN := TSAN_OPTIONS="halt_on_error=1 exitcode=66 second_deadlock_stack=1"

# The Windows build: mingw-w64 compilers, Wine to run the programs, Debian's sqlite3 source
# package (dpkg-source, tclsh and the host compiler make its amalgamation), GoogleTest's
# sources from the googletest package.
WINDOWS_PACKAGES := build-essential cmake gettext googletest g++-mingw-w64-x86-64-posix \
                    gcc-mingw-w64-x86-64-posix wine wine64 dpkg-dev tcl
WINDOWS_BUILD    ?= build-windows
WINDOWS_DEPS     := $(WINDOWS_BUILD)/deps
SQLITE_PACKAGE   := $(WINDOWS_DEPS)/sqlite3-package
WINE             := $(shell command -v wine || command -v wine-stable || echo /usr/lib/wine/wine64)
WINE_ENV         := WINEPREFIX=$(abspath $(WINDOWS_BUILD))/wineprefix WINEDEBUG=-all \
                    WINEDLLOVERRIDES=mscoree,mshtml=
DEB_SRC_LIST     := /etc/apt/sources.list.d/docmgr-deb-src.sources

.PHONY: all deps configure build test demo bench sanitize-test crash-test tsan-test fuzz clean \
        windows-deps windows-build windows-test windows-demo

all: build

deps:
	@missing=""; \
	for p in $(PACKAGES); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" = "0" ]; then \
	    echo "Installing:$$missing"; \
	    apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y $$missing; \
	  else \
	    echo "Missing packages. Run:"; \
	    echo "  sudo apt-get update && sudo DEBIAN_FRONTEND=noninteractive apt-get install -y$$missing"; \
	    exit 1; \
	  fi; \
	fi

configure: deps
	cmake -S . -B $(BUILD) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

demo: build
	@rm -rf $(BUILD)/demo-root
	$(BUILD)/bin/docmgr-cli demo $(BUILD)/demo-root

bench: deps
	cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DDOCMGR_BUILD_BENCH=ON -DDOCMGR_BUILD_TESTS=OFF
	cmake --build build-bench -j $(JOBS)
	cd build-bench && ./bin/docmgr-bench
	cd build-bench && ./bin/docmgr-scan-ratio ./bin/docmgr-cli ./bin/docmgr-scan-baseline 10000 100000

sanitize-test:
	$(MAKE) test BUILD=build-asan CMAKE_FLAGS="-DDOCMGR_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug $(CMAKE_FLAGS)"

# Each target starts from its seeds in fuzz/corpus/<target>/ and keeps what it finds in
# build-fuzz/corpus/<target>/; a crash leaves its input in build-fuzz/artifacts/.
fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B build-fuzz -DDOCMGR_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS)
	cmake --build build-fuzz -j $(JOBS) --target fuzz_targets
	@mkdir -p build-fuzz/artifacts
	@for t in $(FUZZ_TARGETS); do \
	  mkdir -p build-fuzz/corpus/$$t; \
	  echo "== $$t for $(SECONDS) s"; \
	  build-fuzz/bin/$$t -max_total_time=$(SECONDS) -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
	    -artifact_prefix=build-fuzz/artifacts/$$t- build-fuzz/corpus/$$t fuzz/corpus/$$t || exit 1; \
	done

crash-test: build
	cmake --build $(BUILD) -j $(JOBS) --target docmgr-crash-harness
	$(BUILD)/bin/docmgr-crash-harness $(KILLS)

tsan-test: deps
	cmake -S . -B build-tsan -DDOCMGR_TSAN=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS)
	cmake --build build-tsan -j $(JOBS)
	cmake --build build-tsan -j $(JOBS) --target docmgr-stress-harness
	cd build-tsan && $(TSAN_OPTIONS_RUN) ctest --output-on-failure -j $(JOBS)
	$(TSAN_OPTIONS_RUN) build-tsan/bin/docmgr-stress-harness $(STRESS_SECONDS)

# Debian's sqlite3 source package, fetched once into the build folder (a deb-src entry for
# the system's own suites is added when apt has none).
windows-deps:
	$(MAKE) deps PACKAGES="$(WINDOWS_PACKAGES)"
	@if [ -f $(WINDOWS_DEPS)/sqlite-amalgamation/sqlite3.c ] || ls $(SQLITE_PACKAGE)/*.dsc >/dev/null 2>&1; then \
	  exit 0; \
	fi; \
	if ! apt-get source --print-uris sqlite3 >/dev/null 2>&1; then \
	  if [ "$$(id -u)" != "0" ]; then echo "Add a deb-src entry for your Debian suite (see $(DEB_SRC_LIST) in the Makefile)"; exit 1; fi; \
	  printf 'Types: deb-src\nURIs: http://deb.debian.org/debian\nSuites: %s %s-updates\nComponents: main\nSigned-By: /usr/share/keyrings/debian-archive-keyring.gpg\n' \
	    "$$(. /etc/os-release && echo $$VERSION_CODENAME)" "$$(. /etc/os-release && echo $$VERSION_CODENAME)" > $(DEB_SRC_LIST); \
	  apt-get update; \
	fi; \
	mkdir -p $(SQLITE_PACKAGE) && cd $(SQLITE_PACKAGE) && apt-get source --download-only sqlite3

# Wine's prefix lives in the build folder; it is made once, before the build runs the test
# programs to list their tests.
windows-build: windows-deps
	@[ -f $(WINDOWS_BUILD)/wineprefix/system.reg ] || $(WINE_ENV) $(WINE) wineboot -i
	cmake -S . -B $(WINDOWS_BUILD) -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
	  -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS_RELEASE="-O1 -DNDEBUG" -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
	  -DDOCMGR_SQLITE_DSC=$$(ls $(abspath $(SQLITE_PACKAGE))/sqlite3_*.dsc 2>/dev/null | head -n1) $(CMAKE_FLAGS)
	cmake --build $(WINDOWS_BUILD) -j $(JOBS)

windows-test: windows-build
	cd $(WINDOWS_BUILD) && ctest --output-on-failure -j $(JOBS)

windows-demo: windows-build
	@rm -rf $(WINDOWS_BUILD)/demo-root
	$(WINE_ENV) $(WINE) $(WINDOWS_BUILD)/bin/docmgr-cli.exe demo Z:$(abspath $(WINDOWS_BUILD))/demo-root

clean:
	rm -rf build build-asan build-bench build-tsan build-fuzz build-windows
