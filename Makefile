# The two commands that every newcomer needs, and what else is done often. Each installs what it lacks.
#   make demo    build, and show the library's main job on a product file and on real XML
#   make test    build, and run all tests
#   make bench   compare the speed with what users would pick instead; ARGS=--quick for a short run
#   make python-bench   the same for the Python package
#   make abi     compare what programs were built on with what was agreed; make abi-update agrees to a change
#   make package-test   build the Debian packages, install them into a bare folder and use them there
#   make torture try to break the library; MINUTES=n for how long, MINUTES= for as long as all takes,
#                PROGRAMS=threads for a part of it
#   make fuzz    feed the library with what libFuzzer makes up; ARGS="1000000 paths": runs or seconds, targets
#   make coverage  which lines and branches of the library run in tests and torture, and why the others do not
#   make valgrind  run the tests under Valgrind; ARGS=--short for a minute
#   make docs    the pages and the reference, in build/docs/html/index.html
SHELL := /bin/sh
PRESET ?= default

.PHONY: demo test coverage valgrind torture python-bench bench build setup docs abi abi-update package-test fuzz format clean

demo: build
	cd build/$(PRESET)/examples && \
	./demo demo_products && ./demo_c demo_c_products && \
	./registry /usr/share/X11/xkb/rules/base.xml registry_result.xml && \
	PATH=$(CURDIR)/build/$(PRESET)/tools/kh:$$PATH sh $(CURDIR)/examples/operator.sh \
	    $(CURDIR)/examples/products/QK1*.EOF $(CURDIR)/examples/products/sea_heights.xsd operator

test: build
	ctest --preset $(PRESET)

build: setup
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET)

setup:
	tools/install_packages

MINUTES ?= 4
torture:
	tests/torture/run $(PRESET) '$(MINUTES)' $(PROGRAMS)

coverage:
	tools/install_packages clang llvm libclang-rt-dev
	cmake --preset coverage
	cmake --build --preset coverage --target all torture_locks torture_files torture_allocations
	tools/measure_coverage build/coverage torture/torture_locks torture/torture_files torture/torture_allocations

valgrind: build
	tools/install_packages valgrind
	tools/run_valgrind build/$(PRESET) $(ARGS)

docs:
	tools/install_packages doxygen
	tools/make_docs

abi abi-update: build
	tools/install_packages abigail-tools
	tools/compare_abi $(if $(findstring update,$@),--update) build/$(PRESET)

package-test:
	tools/install_packages debhelper dh-python doxygen lintian pybind11-dev python3-dev python3-numpy
	tests/package/packages . build/packages

python-bench: build
	PYTHONPATH=build/$(PRESET)/python /usr/bin/python3 python/bench/compare.py \
		--program build/$(PRESET)/python/bench/kalv_python_bench $(ARGS)

BENCH := build/$(PRESET)/bench
bench:
	tools/install_packages libbenchmark-dev libpugixml-dev libtinyxml2-dev valgrind
	cmake --preset $(PRESET) -D KALV_BENCH=ON
	cmake --build --preset $(PRESET) --target allocations command compare instructions kh
	$(BENCH)/allocations
	$(BENCH)/compare $(ARGS)
	$(BENCH)/command build/$(PRESET)/tools/kh/kh $(if $(findstring quick,$(ARGS)),3,100)

fuzz:
	fuzz/run $(ARGS)

# Formats all sources.
format:
	git ls-files '*.h' '*.cc' '*.c' | xargs clang-format -i

clean:
	rm -rf build
