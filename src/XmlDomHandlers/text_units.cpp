#include "XmlDomHandlers/text_units.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace cblxml {

size_t find_either_long(const char16_t *text, size_t from, size_t to, char16_t a, char16_t b)
{
    size_t i = from;
#if defined(__SSE2__)
    const __m128i wantA = _mm_set1_epi16(static_cast<short>(a));
    const __m128i wantB = _mm_set1_epi16(static_cast<short>(b));
    for (; i + 8 <= to; i += 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + i));
        const __m128i hit =
            _mm_or_si128(_mm_cmpeq_epi16(units, wantA), _mm_cmpeq_epi16(units, wantB));
        const int mask = _mm_movemask_epi8(hit);
        if (mask != 0)
            return i + static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(mask))) / 2;
    }
#endif
    for (; i < to; ++i) {
        if (text[i] == a || text[i] == b)
            return i;
    }
    return to;
}

int64_t find_last_either_long(const char16_t *text, int64_t from, int64_t to, char16_t a,
                              char16_t b)
{
    int64_t end = to;  // units at and past `end` are known to hold neither
#if defined(__SSE2__)
    const __m128i wantA = _mm_set1_epi16(static_cast<short>(a));
    const __m128i wantB = _mm_set1_epi16(static_cast<short>(b));
    for (; end - 8 >= from; end -= 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + end - 8));
        const __m128i hit =
            _mm_or_si128(_mm_cmpeq_epi16(units, wantA), _mm_cmpeq_epi16(units, wantB));
        const int mask = _mm_movemask_epi8(hit);
        if (mask != 0)
            return end - 8 + (31 - __builtin_clz(static_cast<unsigned>(mask))) / 2;
    }
#endif
    for (int64_t i = end - 1; i >= from; --i) {
        if (text[i] == a || text[i] == b)
            return i;
    }
    return from - 1;
}

}  // namespace cblxml
