// UTF-8 <-> UTF-16, the platform's multibyte conversions. Malformed input is
// replaced (U+FFFD towards UTF-16, '?' towards UTF-8), never refused.
#include "platform/unicode.h"

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

size_t utf8_to_utf16_into(const char *text, size_t length, char16_t *out)
{
    if (text == nullptr)
        return 0;
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    size_t units = 0;
    for (size_t position = 0; position < length;) {
        // ASCII, the bulk of most documents, needs no decoding: it is
        // widened sixteen bytes at a time while no byte has its high bit set.
        while (position + 16 <= length) {
            unsigned char any = 0;
            for (size_t k = 0; k < 16; ++k)
                any |= bytes[position + k];
            if (any & 0x80)
                break;
            for (size_t k = 0; k < 16; ++k)
                out[units + k] = bytes[position + k];
            units += 16;
            position += 16;
        }
        if (position >= length)
            break;
        if (bytes[position] < 0x80) {
            out[units++] = bytes[position++];
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
        // A run of ASCII is narrowed as it is.
        size_t run = i;
        while (run < units && text[run] < 0x80)
            ++run;
        if (run > i) {
            const size_t at = out.size();
            out.resize(at + (run - i));
            for (size_t k = i; k < run; ++k)
                out[at + (k - i)] = static_cast<char>(text[k]);
            i = run - 1;
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
