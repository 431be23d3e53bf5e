#pragma once
// Visits the labelled samples (values >= 1) of a row of a label volume in order. Label
// volumes are mostly unlabelled, so the row is tested eight samples at a time and only the
// labelled ones are handed over: a pass over a volume then runs at the speed of reading it.
#include <cstdint>

#if defined(__SSE2__) && defined(__GNUC__)
#include <emmintrin.h>
#define KORVALITH_LABELLED_SSE2 1
#else
#define KORVALITH_LABELLED_SSE2 0
#endif

namespace fault {

// Calls visit(x, label) for every x in [begin, end) whose row[x] is at least 1, in
// increasing x, until visit returns false. Returns false when a visit did.
template <class Visit>
bool forEachLabelled(const int* row, int begin, int end, Visit&& visit)
{
    int x = begin;
#if KORVALITH_LABELLED_SSE2
    const __m128i zero = _mm_setzero_si128();
    for (; x + 8 <= end; x += 8) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + x));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + x + 4));
        unsigned labelled =
            static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(low, zero)))) |
            static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(high, zero)))) << 4;
        for (; labelled != 0; labelled &= labelled - 1) {
            const int at = x + __builtin_ctz(labelled);
            if (!visit(at, row[at])) return false;
        }
    }
#endif
    for (; x < end; ++x)
        if (row[x] >= 1 && !visit(x, row[x])) return false;
    return true;
}

} // namespace fault
