// Code-page conversions: native UTF-8 checked by hand, EBCDIC through iconv.
#include "platform/codepage.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <iconv.h>
#include <string_view>
#include <vector>

#include "platform/unicode.h"

namespace cblxml::platform {
namespace {

constexpr std::string_view kReplacementUtf8 = "\xEF\xBF\xBD";
constexpr unsigned char kEbcdicSubstitute = 0x3F;
constexpr char kNativeSubstitute = '?';
const iconv_t kNoConversion = reinterpret_cast<iconv_t>(-1);

// What to do with input that iconv refuses: the bytes to skip and the text
// that stands for them in the output.
struct Replacement {
    size_t skip;
    std::string_view text;
};

// Runs iconv over the whole input, appending to `out` and growing it
// geometrically; refused input is handed to `replace`, so the conversion
// always reaches the end of the input.
template <typename Replace>
void convert(iconv_t cd, const char *input, size_t length, std::string &out, Replace replace)
{
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    char *in = const_cast<char *>(input);
    size_t in_left = length;
    size_t used = out.size();
    out.resize(used + length + 16);
    bool flushing = false;
    for (;;) {
        char *out_ptr = out.data() + used;
        size_t out_left = out.size() - used;
        const size_t result = flushing ? iconv(cd, nullptr, nullptr, &out_ptr, &out_left)
                                       : iconv(cd, &in, &in_left, &out_ptr, &out_left);
        used = static_cast<size_t>(out_ptr - out.data());
        if (result != static_cast<size_t>(-1)) {
            if (flushing)
                break;
            flushing = true;  // a stateful code page may owe a shift back
            continue;
        }
        if (errno == E2BIG) {
            out.resize(out.size() * 2 + 16);
            continue;
        }
        if (flushing || in_left == 0)
            break;
        const Replacement replacement =
            replace(reinterpret_cast<const unsigned char *>(in), in_left);
        if (out.size() - used < replacement.text.size())
            out.resize(out.size() * 2 + replacement.text.size());
        std::memcpy(out.data() + used, replacement.text.data(), replacement.text.size());
        used += replacement.text.size();
        in += replacement.skip;
        in_left -= replacement.skip;
    }
    out.resize(used);
}

// Appends UTF-8 text to `out` as it is, with `bad` for each malformed
// sequence; a run of ASCII bytes goes in one piece.
void append_checked_utf8(const unsigned char *bytes, size_t length, std::string &out,
                         std::string_view bad)
{
    const auto *text = reinterpret_cast<const char *>(bytes);
    out.reserve(out.size() + length);
    for (size_t position = 0; position < length;) {
        const size_t start = position;
        while (position < length && bytes[position] < 0x80)
            ++position;
        if (position > start) {
            out.append(text + start, position - start);
            continue;
        }
        if (decode_utf8(bytes, length, position) == kInvalidCodePoint)
            out += bad;
        else
            out.append(text + start, position - start);
    }
}

class NativeCodePage final : public CodePage {
public:
    NativeCodePage() : CodePage(false, kNativeSubstitute)
    {
        for (size_t i = 0; i < ascii_bytes_.size(); ++i)
            ascii_bytes_[i] = static_cast<unsigned char>(i);
    }

    void encode(const char *utf8, size_t length, std::string &out) override
    {
        append_checked_utf8(reinterpret_cast<const unsigned char *>(utf8), length, out,
                            std::string_view(&kNativeSubstitute, 1));
    }

    void decode(const unsigned char *bytes, size_t length, std::string &out) override
    {
        append_checked_utf8(bytes, length, out, kReplacementUtf8);
    }

    size_t fit(const std::string &encoded, size_t room) const override
    {
        if (room >= encoded.size())
            return encoded.size();
        size_t end = room;
        while (end > 0 && (static_cast<unsigned char>(encoded[end]) & 0xC0) == 0x80)
            --end;
        return end;
    }
};

class IconvCodePage final : public CodePage {
public:
    IconvCodePage(iconv_t to_page, iconv_t from_page)
        : CodePage(true, kEbcdicSubstitute), to_page_(to_page), from_page_(from_page)
    {}
    ~IconvCodePage() override
    {
        iconv_close(to_page_);
        iconv_close(from_page_);
    }
    IconvCodePage(const IconvCodePage &) = delete;
    IconvCodePage &operator=(const IconvCodePage &) = delete;

    // Fills the ASCII table; false when a printable character has no
    // single-byte form (not a code page that COBOL data can live in).
    bool learn_ascii()
    {
        std::string encoded;
        for (char c = ' '; c <= '~'; ++c) {
            encoded.clear();
            encode(&c, 1, encoded);
            if (encoded.size() != 1)
                return false;
            ascii_bytes_[static_cast<unsigned char>(c)] = static_cast<unsigned char>(encoded[0]);
        }
        return true;
    }

    void encode(const char *utf8, size_t length, std::string &out) override
    {
        convert(to_page_, utf8, length, out, [](const unsigned char *in, size_t left) {
            size_t skip = 0;
            decode_utf8(in, left, skip);
            return Replacement{skip, std::string_view(&kSubstituteText, 1)};
        });
    }

    void decode(const unsigned char *bytes, size_t length, std::string &out) override
    {
        convert(from_page_, reinterpret_cast<const char *>(bytes), length, out,
                [](const unsigned char *, size_t) {
                    return Replacement{1, kReplacementUtf8};
                });
    }

    // EBCDIC code pages that hold COBOL data are single-byte.
    size_t fit(const std::string &encoded, size_t room) const override
    {
        return room < encoded.size() ? room : encoded.size();
    }

private:
    static constexpr char kSubstituteText = static_cast<char>(kEbcdicSubstitute);
    iconv_t to_page_;
    iconv_t from_page_;
};

// The spellings under which iconv may know a code page: the name as given,
// then for IBM-nnn, CP-nnn and CCSID-nnn forms the IBMnnn, CPnnn and IBM-nnn
// spellings, with the number padded to three digits and without padding.
std::vector<std::string> iconv_spellings(const std::string &name)
{
    std::vector<std::string> spellings{name};
    std::string upper;
    for (char c : name)
        upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    static const char *const kPrefixes[] = {"CCSID", "IBM", "CP"};
    for (const char *prefix : kPrefixes) {
        const size_t prefix_length = std::strlen(prefix);
        if (upper.compare(0, prefix_length, prefix) != 0)
            continue;
        size_t digits_at = prefix_length;
        if (digits_at < upper.size() && (upper[digits_at] == '-' || upper[digits_at] == '_'))
            ++digits_at;
        std::string number = upper.substr(digits_at);
        if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos)
            break;
        number.erase(0, number.find_first_not_of('0'));
        if (number.empty())
            break;
        const std::string padded =
            number.size() < 3 ? std::string(3 - number.size(), '0') + number : number;
        for (const std::string &form :
             {"IBM" + padded, "IBM" + number, "CP" + padded, "IBM-" + number, upper})
            spellings.push_back(form);
        break;
    }
    return spellings;
}

}  // namespace

std::unique_ptr<CodePage> open_native_code_page() { return std::make_unique<NativeCodePage>(); }

std::unique_ptr<CodePage> open_ebcdic_code_page(const std::string &name)
{
    for (const std::string &spelling : iconv_spellings(name)) {
        const iconv_t to_page = iconv_open(spelling.c_str(), "UTF-8");
        if (to_page == kNoConversion)
            continue;
        const iconv_t from_page = iconv_open("UTF-8", spelling.c_str());
        if (from_page == kNoConversion) {
            iconv_close(to_page);
            continue;
        }
        std::unique_ptr<IconvCodePage> page;
        try {
            page = std::make_unique<IconvCodePage>(to_page, from_page);
        } catch (...) {
            iconv_close(to_page);  // the page would have closed them
            iconv_close(from_page);
            throw;
        }
        if (page->learn_ascii())
            return page;
        return nullptr;
    }
    return nullptr;
}

}  // namespace cblxml::platform
