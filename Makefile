# Set-up commands. `make test` installs what is missing, builds and runs every test;
# `make demo` installs what is missing, builds and runs `kfaults extract` on its built-in
# volume into out/demo.
BUILD_DIR      ?= build
ASAN_BUILD_DIR ?= build-asan
JOBS           ?= $(shell nproc)

.PHONY: deps configure build test test-asan bench demo studio clean

deps:
	bash scripts/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

test-asan: deps
	cmake -S . -B $(ASAN_BUILD_DIR) -DCMAKE_BUILD_TYPE=Debug -DKORVALITH_SANITIZE=ON -DKORVALITH_BUILD_BENCHMARKS=OFF
	cmake --build $(ASAN_BUILD_DIR) -j $(JOBS)
	cd $(ASAN_BUILD_DIR) && ASAN_OPTIONS=halt_on_error=1:detect_leaks=1:allocator_may_return_null=1 \
		UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
		ctest --output-on-failure -j $(JOBS)

DEMO_DIR ?= out/demo

demo: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target kfaults
	$(BUILD_DIR)/apps/kfaults/kfaults extract --out $(DEMO_DIR)
	@echo "kfaults demo: outputs in $(DEMO_DIR) (report: $(DEMO_DIR)/report.json)"

# The desktop application on the built-in volume (needs a display).
studio: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target kfaults-studio
	$(BUILD_DIR)/apps/studio/kfaults-studio --demo

bench: build
	cmake --build $(BUILD_DIR) -j $(JOBS) --target benchmarks

clean:
	rm -rf $(BUILD_DIR) $(ASAN_BUILD_DIR)
