# Set-up commands. `make test` installs what is missing, builds and runs every test;
# `make demo` installs what is missing, builds and runs `kfaults extract` on its built-in
# volume into out/demo.
BUILD_DIR      ?= build
ASAN_BUILD_DIR ?= build-asan
TSAN_BUILD_DIR ?= build-tsan
JOBS           ?= $(shell nproc)

.PHONY: deps configure build test test-asan test-tsan bench demo studio clean

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

# The tests that run threads of their own (the project browser's readers, background
# tasks and what they report through: the event bus, progress bars, message boxes and the
# frame's actions; the studio, whose reads and extractions run on worker threads) under
# ThreadSanitizer, in $(TSAN_BUILD_DIR); only their executables are built. OpenMP loops
# run on one thread here: GCC's OpenMP runtime is not instrumented, and its barriers would
# be reported as races. Qt is not instrumented either: see tests/support/tsan-qt.supp.
TSAN_TARGETS ?= zanthor_tests zanthorui_tests faultsui_tests studio_tests
TSAN_TESTS   ?= ^(EventBus|ProgressBar|Process|MessageBox|BackgroundTask|Frame|FrameProcess|GuiEventBus|MessageLog|NotificationArea|ProgressPanel|ProjectBrowser[A-Za-z]*|Studio[A-Za-z0-9]*Test|PickingTest|FaultViewer[A-Za-z]*|FaultCleaning[A-Za-z]*)\.

test-tsan: deps
	cmake -S . -B $(TSAN_BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVALITH_TSAN=ON -DKORVALITH_BUILD_BENCHMARKS=OFF
	cmake --build $(TSAN_BUILD_DIR) -j $(JOBS) --target $(TSAN_TARGETS)
	cd $(TSAN_BUILD_DIR) && OMP_NUM_THREADS=1 \
		TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(CURDIR)/tests/support/tsan-qt.supp" \
		ctest --output-on-failure -j $(JOBS) -R '$(TSAN_TESTS)'

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
	rm -rf $(BUILD_DIR) $(ASAN_BUILD_DIR) $(TSAN_BUILD_DIR)
