#pragma once
// FAULT_VECTOR_CLONES before a function that runs a vector loop builds it twice, for
// processors with AVX2 and FMA and for any x86-64, the better one chosen when the
// library loads: the library itself is compiled for the baseline instruction set, and
// the attribute's inner loops run about twice as fast on the wider registers. Not under
// the sanitizers: the choice is made while the library is being relocated, before their
// runtime is ready, and ThreadSanitizer's instrumented chooser crashes there.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define FAULT_VECTOR_CLONES __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define FAULT_VECTOR_CLONES
#endif
