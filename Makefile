# The front door: `make demo` runs the main job, `make test` builds and passes the tests. CMake does the work.
.PHONY: all build packages program everything test demo sanitize tsan fuzz tidy format rooms rules bench consumer clean
.DEFAULT_GOAL := build

packages:
	@tools/install-packages

# A goal of its own, so that packages are installed before anything else under `make -j`.
build/%/build.ninja: packages CMakeLists.txt CMakePresets.json
	@cmake --preset $* >/dev/null || cmake --preset $*

all build: build/release/build.ninja
	@cmake --build --preset release

test: everything
	@ctest --preset program

# Program and tests in the folder of `make program`, in half the time that `make build` takes.
everything: build/program/build.ninja
	@cmake --build --preset tests

# The program alone.
program: build/program/build.ninja
	@cmake --build --preset program

# A simulated flight with known errors, from strips to adjusted strips, and compared with its truth.
demo: program
	@build/program/host/velorn simulate build/demo --points 3000000 --overwrite
	@build/program/host/velorn init build/demo/flight.velorn --overwrite --strips 'build/demo/strip_*.kx' \
	  --trajectory build/demo/trajectory.kx --ground-truth build/demo/ground_truth.kx --root build/demo/run
	@build/program/host/velorn run build/demo/flight.velorn
	@build/program/host/velorn compare build/demo build/demo/run

sanitize: build/dev/build.ninja
	@cmake --build --preset dev
	@ctest --preset dev

tsan: build/tsan/build.ninja
	@cmake --build --preset tsan
	@ctest --preset tsan

# Seconds of each fuzzer.
FUZZ_SECONDS ?= 7
fuzz: build/dev/build.ninja
	@cmake --build --preset fuzz
	@tests/fuzz/run build/dev/tests/fuzz $(FUZZ_SECONDS)

# clang-tidy over every source, which takes most of an hour; `tools/check-tidy` alone looks at what changed.
tidy: packages
	@tools/check-tidy --all

# The picture of the rooms, from tools/rooms.py.
rooms:
	@tools/draw-rooms

rules: packages
	@tools/check-includes
	@tools/draw-rooms --check
	@tools/check-links
	@tools/check-format

format: packages
	@tools/check-format --fix

bench: build
	@bench/run

consumer: everything
	@tests/consumer/run build/program

clean:
	@rm -rf build
