# The two commands that every newcomer needs, and what else is done often. Each installs what it lacks.
#   make demo    build, and show the library's main job on real XML
#   make test    build, and run all tests
SHELL := /bin/sh
PRESET ?= default

.PHONY: demo test build setup format clean

demo: build
	./build/$(PRESET)/examples/demo /usr/share/X11/xkb/rules/base.xml build/demo_result.xml

test: build
	ctest --preset $(PRESET)

build: setup
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET)

setup:
	tools/install_packages

# Formats all sources.
format:
	git ls-files '*.h' '*.cc' '*.c' | xargs clang-format -i

clean:
	rm -rf build
