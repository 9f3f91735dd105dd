# Two commands do everything on a fresh Debian 12: `make run` shows the main job, `make test` runs all tests. Both install
# what is missing first. As another user than root, packages and the model are installed through sudo.

PACKAGES = g++ cmake ninja-build pkg-config libyang2-dev libpugixml-dev libcli11-dev libexpected-dev libsafec-dev \
           nlohmann-json3-dev libgtest-dev libbenchmark-dev xsltproc
FORMAT_PACKAGES = clang-format
MODEL = /pkg/yang/openconfig-macsec.yang
SUDO := $(if $(filter 0,$(shell id -u)),,sudo)
SOURCES = $(shell git ls-files '*.cpp' '*.h')

.PHONY: all run test sanitize bench docs setup model format check-format lint clean

all: setup
	cmake --preset default
	cmake --build --preset default

run: all model
	examples/run.sh

test: all model
	ctest --preset default

sanitize: setup model
	cmake --preset sanitize
	cmake --build --preset sanitize
	ctest --preset sanitize

bench: all model
	@command -v /usr/bin/time >/dev/null || $(MAKE) setup PACKAGES=time
	bench/run.sh

# The page that is made by running the mapping. A test fails while it is not the tool's.
docs: all model
	build/ocmap tree --markdown > docs/mapping.md.new
	mv docs/mapping.md.new docs/mapping.md

# Installs the packages that are missing, and asks the package index only when there are some.
setup:
	@missing=$$(for package in $(PACKAGES); do \
	    dpkg-query -W -f='$${Status}' $$package 2>/dev/null | grep -q 'ok installed' || echo $$package; done); \
	if [ -n "$$missing" ]; then \
	    $(SUDO) apt-get update -q && \
	    $(SUDO) env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $$missing; \
	fi

# The plug-in registers its trees only on a system that has the model.
model:
	@cmp -s yang/openconfig-macsec.yang $(MODEL) || $(SUDO) install -D -m 644 yang/openconfig-macsec.yang $(MODEL)

format:
	clang-format -i $(SOURCES)

check-format:
	@command -v clang-format >/dev/null || $(MAKE) setup PACKAGES='$(FORMAT_PACKAGES)'
	clang-format --dry-run --Werror $(SOURCES)

lint: all
	@command -v clang-tidy >/dev/null || $(MAKE) setup PACKAGES=clang-tidy
	git ls-files '*.cpp' | grep -v '^tests/' | xargs -n 1 -P $$(nproc) clang-tidy -p build --quiet

clean:
	rm -rf build build-sanitize
