// UTF-8 <-> UTF-16, the platform's multibyte conversions. Malformed input is
// replaced (U+FFFD towards UTF-16, '?' towards UTF-8), never refused.
#include "platform/unicode.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "platform/platform.h"

namespace cblxml::platform {
namespace {

bool is_continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

struct LeadForm {
    unsigned char first;      // first lead byte of the range
    unsigned char last;       // last lead byte of the range
    unsigned char trailing;   // continuation bytes that follow
    unsigned char bits_mask;  // payload bits of the lead byte
    unsigned char second_lo;  // allowed range of the second byte: excludes
    unsigned char second_hi;  // overlong forms, surrogates and > U+10FFFF
};

constexpr LeadForm kLeadForms[] = {
    {0xC2, 0xDF, 1, 0x1F, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0x0F, 0xA0, 0xBF},
    {0xE1, 0xEC, 2, 0x0F, 0x80, 0xBF}, {0xED, 0xED, 2, 0x0F, 0x80, 0x9F},
    {0xEE, 0xEF, 2, 0x0F, 0x80, 0xBF}, {0xF0, 0xF0, 3, 0x07, 0x90, 0xBF},
    {0xF1, 0xF3, 3, 0x07, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x07, 0x80, 0x8F},
};

const LeadForm *lead_form(unsigned char lead)
{
    for (const LeadForm &form : kLeadForms)
        if (lead >= form.first && lead <= form.last)
            return &form;
    return nullptr;
}

bool is_high_surrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool is_low_surrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

}  // namespace

char32_t decode_utf8(const unsigned char *text, size_t length, size_t &position)
{
    const unsigned char lead = text[position++];
    if (lead < 0x80)
        return lead;
    const LeadForm *form = lead_form(lead);
    if (form == nullptr)
        return kInvalidCodePoint;
    char32_t code_point = lead & form->bits_mask;
    for (unsigned i = 0; i < form->trailing; ++i) {
        if (position >= length)
            return kInvalidCodePoint;
        const unsigned char byte = text[position];
        const bool allowed =
            i == 0 ? (byte >= form->second_lo && byte <= form->second_hi) : is_continuation(byte);
        if (!allowed)
            return kInvalidCodePoint;
        code_point = (code_point << 6) | (byte & 0x3F);
        ++position;
    }
    return code_point;
}

void append_utf8(std::string &out, char32_t code_point)
{
    if (code_point < 0x80) {
        out += static_cast<char>(code_point);
    } else if (code_point < 0x800) {
        out += static_cast<char>(0xC0 | (code_point >> 6));
        out += static_cast<char>(0x80 | (code_point & 0x3F));
    } else if (code_point < 0x10000) {
        out += static_cast<char>(0xE0 | (code_point >> 12));
        out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code_point & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code_point >> 18));
        out += static_cast<char>(0x80 | ((code_point >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code_point & 0x3F));
    }
}

size_t utf16_units_of_utf8(const char *text, size_t length)
{
    if (text == nullptr)
        return 0;
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    size_t units = 0;
    for (size_t position = 0; position < length;) {
        const char32_t code_point = decode_utf8(bytes, length, position);
        units += (code_point != kInvalidCodePoint && code_point > 0xFFFF) ? 2 : 1;
    }
    return units;
}

size_t narrow_ascii(const char16_t *text, size_t count, char *out)
{
    size_t i = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i high = _mm_set1_epi16(static_cast<short>(0xFF80));
    for (; i + 16 <= count; i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + i + 8));
        // A unit is ASCII when it has no bit above 0x7F and is not zero.
        const __m128i okA = _mm_andnot_si128(_mm_cmpeq_epi16(a, zero),
                                             _mm_cmpeq_epi16(_mm_and_si128(a, high), zero));
        const __m128i okB = _mm_andnot_si128(_mm_cmpeq_epi16(b, zero),
                                             _mm_cmpeq_epi16(_mm_and_si128(b, high), zero));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + i), _mm_packus_epi16(a, b));
        const int ok = _mm_movemask_epi8(_mm_packs_epi16(okA, okB));
        if (ok != 0xFFFF)
            return i + static_cast<size_t>(__builtin_ctz(~static_cast<unsigned>(ok)));
    }
#endif
    for (; i < count && text[i] != 0 && text[i] < 0x80; ++i)
        out[i] = static_cast<char>(text[i]);
    return i;
}

size_t utf8_to_utf16_into(const char *text, size_t length, char16_t *out)
{
    if (text == nullptr)
        return 0;
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    size_t units = 0;
    for (size_t position = 0; position < length;) {
        // ASCII, the bulk of most documents, needs no decoding: it is
        // widened sixteen bytes at a time up to the first byte with its high
        // bit set. A step may write units past that byte; they are written
        // over next, and stay within the output (never more units than
        // bytes have been read).
#if defined(__SSE2__)
        const __m128i zero = _mm_setzero_si128();
        while (position + 16 <= length) {
            const __m128i block =
                _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + position));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(out + units),
                             _mm_unpacklo_epi8(block, zero));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(out + units + 8),
                             _mm_unpackhi_epi8(block, zero));
            const int high = _mm_movemask_epi8(block);
            if (high != 0) {
                const auto ascii = static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(high)));
                units += ascii;
                position += ascii;
                break;
            }
            units += 16;
            position += 16;
        }
#endif
        while (position < length && bytes[position] < 0x80)
            out[units++] = bytes[position++];
        if (position >= length)
            break;
        // Two-byte sequences (Latin-1 and most alphabets) need no table.
        const unsigned char lead = bytes[position];
        if (lead >= 0xC2 && lead <= 0xDF && position + 1 < length &&
            is_continuation(bytes[position + 1])) {
            out[units++] =
                static_cast<char16_t>(((lead & 0x1F) << 6) | (bytes[position + 1] & 0x3F));
            position += 2;
            continue;
        }
        char32_t code_point = decode_utf8(bytes, length, position);
        if (code_point == kInvalidCodePoint)
            code_point = kReplacementCharacter;
        if (code_point > 0xFFFF) {
            code_point -= 0x10000;
            out[units++] = static_cast<char16_t>(0xD800 | (code_point >> 10));
            out[units++] = static_cast<char16_t>(0xDC00 | (code_point & 0x3FF));
        } else {
            out[units++] = static_cast<char16_t>(code_point);
        }
    }
    return units;
}

std::u16string utf8_to_utf16(const char *text, size_t length)
{
    std::u16string out(length, u'\0');
    out.resize(utf8_to_utf16_into(text, length, out.data()));
    return out;
}

std::string utf16_to_utf8(const char16_t *text, size_t units)
{
    std::string out;
    if (text == nullptr)
        return out;
    out.reserve(units);
    for (size_t i = 0; i < units; ++i) {
        if (text[i] != 0 && text[i] < 0x80) {
            // A run of ASCII is narrowed as it is, a chunk at a time.
            char chunk[256];
            size_t run = 0;
            do {
                const size_t take = units - i < sizeof chunk ? units - i : sizeof chunk;
                run = narrow_ascii(text + i, take, chunk);
                out.append(chunk, run);
                i += run;
            } while (run == sizeof chunk && i < units);
            --i;
            continue;
        }
        const char16_t unit = text[i];
        if (is_high_surrogate(unit) && i + 1 < units && is_low_surrogate(text[i + 1])) {
            const char32_t code_point =
                0x10000 + ((static_cast<char32_t>(unit - 0xD800) << 10) | (text[i + 1] - 0xDC00));
            append_utf8(out, code_point);
            ++i;
        } else if (is_high_surrogate(unit) || is_low_surrogate(unit)) {
            out += '?';
        } else {
            append_utf8(out, unit);
        }
    }
    return out;
}

}  // namespace cblxml::platform
