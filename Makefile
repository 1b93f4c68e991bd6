# docmgr: set-up, build, demo and tests on Debian 12.
#   make demo   install what is missing, build, run the tool's demo on a sample sync root
#   make test   install what is missing, build, run every test
#   make bench  build and run the benchmarks (Release): ratios to raw SQLite, then the scan ratios

PACKAGES := build-essential cmake pkg-config libsqlite3-dev libnspr4-dev googletest \
            libgtest-dev libgmock-dev libbenchmark-dev gettext
BUILD    ?= build
JOBS     ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?=

.PHONY: all deps configure build test demo bench sanitize-test clean

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
	cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DDOCMGR_BENCH=ON
	cmake --build build-bench -j $(JOBS)
	cd build-bench && ./bin/docmgr-bench
	cd build-bench && ./bin/docmgr-scan-ratio ./bin/docmgr-cli ./bin/docmgr-scan-baseline 10000 100000

sanitize-test:
	$(MAKE) test BUILD=build-asan CMAKE_FLAGS="-DDOCMGR_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug $(CMAKE_FLAGS)"

clean:
	rm -rf build build-asan build-bench
