// Test support for XML-enabled files: the records of a document as READ and
// READ NEXT give them back.
#ifndef CBLXML_TESTS_XMLIO_READ_BACK_H
#define CBLXML_TESTS_XMLIO_READ_BACK_H

#include <string>
#include <vector>

#include "record_layout.h"

namespace cblxml_test {

// The bytes of the first occurrence of `path` in the record area.
inline std::string occurrence_bytes(cblxml::layout::Record &record, const char *path)
{
    const IDESC *item = record.item(path);
    const auto &area = record.area();
    return std::string(area.begin() + item->offset, area.begin() + item->offset + item->length);
}

// Opens `text` (a data item) for input with the key item `key` and reads it:
// READ, then READ NEXT until it fails. The bytes of the key item's first
// occurrence after each successful read; `end` receives the failing status.
inline std::vector<std::string> read_back(const char *layout, const char *key,
                                          const std::string &text, int32_t &end)
{
    cblxml::layout::File file({layout});
    file.use_document(text);
    file.fcb().key_item = file.record(1).item(key);
    std::vector<std::string> records;
    end = file.open(XMLIO_INPUT);
    if (end != 0)
        return records;
    for (end = file.call(XMLIO_OP_READ); end >= 0; end = file.call(XMLIO_OP_READ_NEXT))
        records.push_back(occurrence_bytes(file.record(1), key));
    file.close();
    return records;
}

}  // namespace cblxml_test

#endif
