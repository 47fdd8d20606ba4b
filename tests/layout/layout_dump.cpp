// The builder's side of the layout tests: reads a copybook as cblxml-layout
// does, compiles its records with the record-layout builder, links them with
// the library and prints them as the COBOL test program prints its own
// (dump.c).
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "copybook.h"

extern "C" void layout_dump(const xml_rec_entry_t *entries, const uint32_t *count);

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fputs("usage: layout_dump COPYBOOK [--free]\n", stderr);
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    try {
        const auto book = cblxml::copybook::read_copybook(text, argc > 2);
        std::vector<cblxml::layout::Record> records;
        std::vector<xml_rec_entry_t> entries;
        entries.reserve(book.records.size());
        for (size_t r = 0; r < book.records.size(); ++r)
            records.emplace_back(cblxml::copybook::record_items(book, r));
        for (auto &record : records)
            entries.push_back(record.entry());
        const auto count = static_cast<uint32_t>(entries.size());
        kvt_xe_xml_rec_link(entries.data(), count);
        layout_dump(entries.data(), &count);
    } catch (const cblxml::copybook::Error &e) {
        std::fprintf(stderr, "%s:%u:%u: %s\n", argv[1], e.line, e.column, e.what());
        return 2;
    }
    return 0;
}
