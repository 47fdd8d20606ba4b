#include "XmlDomHandlers/decl_scan.h"

namespace cblxml {

bool quote_copy(const char16_t *text, size_t end, size_t &pos, std::u16string &value)
{
    while (pos < end && text[pos] != 0 && is_decl_space(text[pos]))
        ++pos;
    if (pos >= end || (text[pos] != u'"' && text[pos] != u'\''))
        return false;
    const char16_t quote = text[pos++];
    while (pos < end && text[pos] != 0) {
        if (text[pos] == quote) {
            ++pos;
            return true;
        }
        value.push_back(text[pos++]);
    }
    return false;
}

size_t find_decl_end(const char16_t *text, size_t end, size_t from)
{
    for (size_t i = from; i + 1 < end; ++i) {
        if (text[i] == u'?' && text[i + 1] == u'>')
            return i;
    }
    return end;
}

size_t find_word(const char16_t *text, size_t end, const char16_t *word)
{
    size_t n = std::char_traits<char16_t>::length(word);
    size_t limit = 0;
    while (limit < end && text[limit] != 0)
        ++limit;
    for (size_t i = 0; i + n <= limit; ++i) {
        if (std::char_traits<char16_t>::compare(text + i, word, n) == 0)
            return i;
    }
    return std::u16string::npos;
}

DeclaredEncoding declared_encoding(const char16_t *decl, size_t end)
{
    DeclaredEncoding result;
    const size_t at = find_word(decl, end, u"encoding");
    if (at == std::u16string::npos)
        return result;
    result.found = true;
    size_t pos = at + 8;
    while (pos < end && decl[pos] != u'=')
        ++pos;
    result.adjacent = pos == at + 8 && pos < end;
    ++pos;
    quote_copy(decl, end, pos, result.value);
    return result;
}

bool starts_with(const char16_t *text, size_t end, const char16_t *prefix)
{
    size_t n = std::char_traits<char16_t>::length(prefix);
    return n <= end && std::char_traits<char16_t>::compare(text, prefix, n) == 0;
}

}  // namespace cblxml
