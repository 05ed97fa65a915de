# The two commands that every newcomer needs, and what else is done often. Each installs what it lacks.
#   make demo    build, and show the library's main job on real XML
#   make test    build, and run all tests
#   make docs    the pages and the reference, in build/docs/html/index.html
SHELL := /bin/sh
PRESET ?= default

.PHONY: demo test build setup docs format clean

demo: build
	./build/$(PRESET)/examples/demo /usr/share/X11/xkb/rules/base.xml build/demo_result.xml

test: build
	ctest --preset $(PRESET)

build: setup
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET)

setup:
	tools/install_packages

docs:
	tools/install_packages doxygen
	mkdir -p build/docs
	KALV_VERSION=$$(sed -n 's/^#define KH_VERSION_TEXT "\(.*\)"/\1/p' include/kalv/version.h) doxygen docs/Doxyfile
	tools/check_reference build/docs/reference.tag tools/exported_symbols.txt include/kalv/status.h

# Formats all sources.
format:
	git ls-files '*.h' '*.cc' '*.c' | xargs clang-format -i

clean:
	rm -rf build
