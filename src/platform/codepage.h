// The code page in which a program keeps its alphanumeric data, with the
// conversions between it and UTF-8 that the data map needs.
#ifndef CBLXML_PLATFORM_CODEPAGE_H
#define CBLXML_PLATFORM_CODEPAGE_H

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace cblxml::platform {

class CodePage {
public:
    virtual ~CodePage() = default;

    // Appends the code-page form of UTF-8 text to `out`. A character the code
    // page lacks, or a malformed UTF-8 sequence, becomes the substitute byte.
    virtual void encode(const char *utf8, size_t length, std::string &out) = 0;
    // Appends the UTF-8 form of code-page bytes to `out`; a byte that the
    // code page does not define becomes U+FFFD.
    virtual void decode(const unsigned char *bytes, size_t length, std::string &out) = 0;
    // Length of the longest prefix of `encoded`, at most `room` bytes, that
    // does not end inside a character.
    virtual size_t fit(const std::string &encoded, size_t room) const = 0;

    bool is_ebcdic() const { return ebcdic_; }
    // True when ASCII text is its own code-page form (the native page), so
    // that it needs no conversion.
    bool keeps_ascii() const { return !ebcdic_; }
    unsigned char substitute() const { return substitute_; }
    // The code-page byte of a printable ASCII character (digits, signs,
    // space, punctuation); every code page we open has all of them.
    unsigned char byte_of(char ascii) const
    {
        return ascii_bytes_[static_cast<unsigned char>(ascii) & 0x7F];
    }
    unsigned char space() const { return byte_of(' '); }

protected:
    CodePage(bool ebcdic, unsigned char substitute) : ebcdic_(ebcdic), substitute_(substitute) {}
    std::array<unsigned char, 128> ascii_bytes_{};

private:
    bool ebcdic_;
    unsigned char substitute_;
};

// Native data: UTF-8, so ASCII bytes are themselves. Substitute '?'.
std::unique_ptr<CodePage> open_native_code_page();

// An EBCDIC code page through iconv, named as a COBOL run-time would name it
// ("IBM-1140", "IBM037", "CP1140", "CCSID-037" ...). Substitute 0x3F.
// Returns null when iconv has no such code page or it lacks a printable
// ASCII character. The result is not safe for concurrent use.
std::unique_ptr<CodePage> open_ebcdic_code_page(const std::string &name);

}  // namespace cblxml::platform

#endif
