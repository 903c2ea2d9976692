# The front door: `make demo` runs the main job, `make test` builds and passes the tests. CMake does the work.
.PHONY: all build packages test demo sanitize tsan tidy format rules bench consumer clean
.DEFAULT_GOAL := build

packages:
	@tools/install-packages

# A goal of its own, so that packages are installed before anything else under `make -j`.
build/%/build.ninja: packages CMakeLists.txt CMakePresets.json
	@cmake --preset $* >/dev/null || cmake --preset $*

all build: build/release/build.ninja
	@cmake --build --preset release

test: build
	@ctest --preset release

# A flight of a million points with known errors: adjusted with correspondences from its own planes, and georeferenced
# with the result.
demo: build
	@build/release/host/velorn simulate build/demo --correspondences --overwrite
	@build/release/host/velorn adjust build/demo/strip_*.kx --trajectory build/demo/trajectory.kx \
	  --ground-truth build/demo/ground_truth.kx --output build/demo --suffix .txt
	@build/release/host/velorn georeference build/demo/strip_*.kx --trajectory build/demo/trajectory.kx \
	  --sections build/demo/00_parameter/Sections.txt --parameters build/demo/00_parameter/Parameter.txt \
	  --strip-ids build/demo/00_parameter/StripID.txt --output build/demo/adjusted --overwrite

sanitize: build/dev/build.ninja
	@cmake --build --preset dev
	@ctest --preset dev

tsan: build/tsan/build.ninja
	@cmake --build --preset tsan
	@ctest --preset tsan

tidy: build/tidy/build.ninja
	@cmake --build --preset tidy

rules: packages
	@tools/check-includes
	@tools/check-format

format: packages
	@tools/check-format --fix

bench: build
	@bench/run

consumer: build
	@tests/consumer/run build/release

clean:
	@rm -rf build
