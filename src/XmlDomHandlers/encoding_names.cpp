#include "XmlDomHandlers/encoding_names.h"

namespace cblxml {
namespace {

struct NameRow {
    const char16_t *accepted;
    const char16_t *canonical;
};

// Tried top to bottom; the comparison is exact on the upper-cased name.
constexpr NameRow kNames[] = {
    {u"UTF16", u"UTF-16"},      {u"UTF-16", u"UTF-16"},        {u"IBM1200", u"UTF-16"},
    {u"IBM-1200", u"UTF-16"},   {u"UCS2", u"UTF-16"},          {u"UTF-16 (BE)", u"UTF-16BE"},
    {u"UTF-16BE", u"UTF-16BE"}, {u"UTF-16 (LE)", u"UTF-16LE"}, {u"UTF-16LE", u"UTF-16LE"},
    {u"UTF8", u"UTF-8"},        {u"UTF-8", u"UTF-8"},          {u"UCS4", u"UCS-4"},
    {u"UCS-4", u"UCS-4"},       {u"UCS_4", u"UCS-4"},          {u"UCS-4 (BE)", u"UCS-4BE"},
    {u"UCS-4BE", u"UCS-4BE"},   {u"UCS-4 (LE)", u"UCS-4LE"},   {u"UCS-4LE", u"UCS-4LE"},
    {u"IBM037", u"IBM037"},     {u"EBCDIC-CP-US", u"IBM037"},  {u"CP037", u"IBM037"},
    {u"CP-037", u"IBM037"},     {u"CP_037", u"IBM037"},        {u"IBM-037", u"IBM037"},
    {u"CCSID-037", u"IBM037"},  {u"CCSID_037", u"IBM037"},     {u"IBM1140", u"IBM1140"},
    {u"IBM01140", u"IBM1140"},  {u"CCSID01140", u"IBM1140"},   {u"CP01140", u"IBM1140"},
    {u"IBM-1140", u"IBM1140"},  {u"CP1140", u"IBM1140"},       {u"CP-1140", u"IBM1140"},
    {u"CP_1140", u"IBM1140"},   {u"CCSID-1140", u"IBM1140"},   {u"CCSID_1140", u"IBM1140"},
};

}  // namespace

std::u16string normalise_encoding_name(const std::u16string &upperName)
{
    for (const NameRow &row : kNames) {
        if (upperName == row.accepted)
            return row.canonical;
    }
    return upperName;
}

bool is_transcoder_name(const std::u16string &name)
{
    if (name.empty() || name.size() >= kMaxEncodingName)
        return false;
    for (char16_t c : name) {
        if (c < 0x20 || c > 0x7E)
            return false;
    }
    return true;
}

}  // namespace cblxml
