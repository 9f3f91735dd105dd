# Two commands do everything on a fresh Debian 12: `make run` builds what it takes and shows the main job, `make test` builds
# and runs all tests. Both install what is missing first. As another user than root, packages and the model are installed
# through sudo. `make install` installs below PREFIX, or for a package below DESTDIR.

PACKAGES = g++ cmake ninja-build pkg-config libyang2-dev libpugixml-dev libcli11-dev libexpected-dev libsafec-dev \
           nlohmann-json3-dev rapidjson-dev
TEST_PACKAGES = libgtest-dev chromium chromium-driver python3-selenium
BENCH_PACKAGES = python3 valgrind
PEER_PACKAGES = xsltproc libxml2-utils libyang2-tools time
FORMAT_PACKAGES = clang-format
MODEL = /pkg/yang/openconfig-macsec.yang
EXTENSIONS = /pkg/yang/tarvex-extensions.yang
DEVIATIONS = yang/tarvex-openconfig-macsec-deviations.yang
DESTDIR =
PREFIX = /usr/local
SUDO := $(if $(filter 0,$(shell id -u)),,sudo)
SOURCES = $(shell git ls-files '*.c' '*.cpp' '*.h')

say = @printf '\n==== %s\n'

.PHONY: all run test sanitize bench bench-check bench-update bench-programs docs install uninstall check-prefix setup model format check-format check-style lint \
        tool clean

all: tool

run: tool model
	$(say) 'examples/run.sh: edits and reads of policies, a key chain and an interface'
	@examples/run.sh

# The tool and the plug-in.
tool: setup
	$(say) 'Configuring in build/'
	cmake --preset default
	$(say) 'Building the tool and the plug-in; their tests are built by "make test"'
	cmake --build --preset default --target ocmap

# Tests need no model in /pkg, nor who can put it there.
test: PACKAGES += $(TEST_PACKAGES)
test: setup $(if $(SUDO),,model)
	$(say) 'Building everything in build/'
	cmake --preset default -DOC_MACSEC_TESTS=ON
	cmake --build --preset default
	$(say) 'Running all tests'
	ctest --preset default

sanitize: PACKAGES += libgtest-dev
sanitize: setup
	$(say) 'Building everything in build-sanitize/, with ASan and UBSan, and running the tests'
	cmake --preset sanitize -DOC_MACSEC_TESTS=ON
	cmake --build --preset sanitize
	ctest --preset sanitize

# Takes a quarter of an hour. WRITE=docs/performance.md puts the table there, too.
bench: PACKAGES += $(BENCH_PACKAGES) $(PEER_PACKAGES)
bench: bench-programs
	bench/run.py $(if $(WRITE),--write '$(WRITE)')

# Fails where the tool needs more instructions than bench/instructions.txt says, by more than 10 %. When that is on purpose,
# the second writes the file anew.
bench-check bench-update: PACKAGES += $(BENCH_PACKAGES)
bench-check bench-update: bench-%: bench-programs
	$(say) 'Counting instructions'
	@bench/run.py $*

bench-programs: setup model
	cmake --preset default -DOC_MACSEC_BENCH=ON
	cmake --build --preset default --target ocmap read_policy print_xml

# The page and the module that are made by running the mapping. A test fails while they are not the tool's.
docs: tool model
	build/ocmap tree --markdown > docs/mapping.md.new
	mv docs/mapping.md.new docs/mapping.md
	build/ocmap deviations > $(DEVIATIONS).new
	mv $(DEVIATIONS).new $(DEVIATIONS)

# A prefix of its own makes a build of its own, as the tool knows where the rest lies from it. The files are noted for
# uninstall; the model is outside the prefix, and stays when the rest goes, as other plug-ins may read it.
install: check-prefix setup
	cmake --preset default -DCMAKE_INSTALL_PREFIX='$(PREFIX)'
	cmake --build --preset default --target ocmap oc_macsec_manual
	$(MAKE) model DESTDIR='$(DESTDIR)'
	umask 022 && DESTDIR='$(DESTDIR)' cmake --install build --strip
	cp build/install_manifest.txt build/installed_files.txt

uninstall:
	@test -f build/installed_files.txt || { echo 'error: nothing was installed from this build' >&2; exit 1; }
	@while read -r file || [ -n "$$file" ]; do \
	    file='$(DESTDIR)'$$file; \
	    rm -fv -- "$$file" || exit; \
	    while file=$$(dirname "$$file"); do \
	        case $$file in */oc-macsec | */oc-macsec/*) rmdir "$$file" 2>/dev/null || break;; *) break;; esac; \
	    done; \
	done < build/installed_files.txt

# Said before the build, not after it.
check-prefix:
	@case '$(PREFIX)' in /*) ;; *) echo "error: PREFIX must be an absolute path, not '$(PREFIX)'" >&2; exit 1;; esac
	@for place in bin include lib share; do \
	    place='$(DESTDIR)$(PREFIX)'/$$place; \
	    while [ ! -e "$$place" ]; do place=$$(dirname "$$place"); done; \
	    if [ ! -d "$$place" ] || [ ! -w "$$place" ]; then \
	        echo "error: cannot install to $(DESTDIR)$(PREFIX): '$$place' is not a directory that you can write to;" \
	            "choose another PREFIX, or install as a user who can" >&2; exit 1; \
	    fi; \
	done

# Installs the packages that are missing, and asks the package index only when there are some.
setup:
	@missing=$$(for package in $(PACKAGES); do \
	    dpkg-query -W -f='$${Status}' $$package 2>/dev/null | grep -q 'ok installed' || echo $$package; done); \
	if [ -n "$$missing" ]; then \
	    printf '\n==== Installing packages: %s\n' "$$(echo $$missing)"; \
	    $(SUDO) apt-get update -q && \
	    $(SUDO) env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $$missing; \
	fi

# The plug-in registers its trees only on a system that has the model, which imports the other.
model:
	@umask 022; for file in $(MODEL) $(EXTENSIONS); do \
	    cmp -s yang/$${file##*/} "$(DESTDIR)$$file" || \
	    $(if $(DESTDIR),,$(SUDO)) install -D -m 644 yang/$${file##*/} "$(DESTDIR)$$file" || exit; done

format:
	clang-format -i $(SOURCES)

check-format:
	@command -v clang-format >/dev/null || $(MAKE) setup PACKAGES='$(FORMAT_PACKAGES)'
	@clang-format --dry-run --Werror $(SOURCES)

# What no formatter looks after: the length of a file, and that each includes its own header first.
check-style:
	.ci/check-style

lint: PACKAGES += libgtest-dev clang-tidy
lint: setup
	cmake --preset default -DOC_MACSEC_TESTS=ON -DOC_MACSEC_BENCH=ON
	git ls-files '*.cpp' | xargs -n 1 -P $$(nproc) sh -c 'found=$$(clang-tidy -p build --quiet "$$1" 2>&1) || \
	    { printf "%s\n" "$$found" | grep -v "warnings generated"; exit 1; }' lint

clean:
	rm -rf build build-sanitize
