// The record-layout builder: turns a readable description of a record into
// the bytes a COBOL compiler produces for an XML-enabled file (the IDESC
// sequence, the record entry, the count array and the record area), and sets
// up a file control block around them. Used by tests and tools; not part of
// the library's exported interface.
//
// The text form has one item per line: level, name, then attributes.
//
//     01 order
//        05 id       pic=9(5)
//        05 line     occurs=3
//           10 sku   pic=X(4)
//           10 qty   pic=S99 usage=comp len=2
//        05 -        pic=X(10)          (unnamed: receives content)
//
// Name "-" is an unnamed item (name_len 0). Attributes:
//   ns=URI  at=OFFSET  len=N  occurs=N  pic=TEXT (the third string)
//   class=N|numeric|alnum|alpha|numedit|national|dbcs|alnumedit
//   usage=N|display|comp1|comp2|packed|binary|comp|comp5|comp6|compx|national
//   sign=N  digits=N  scale=N  subscript=N  flags=N (ORed in)
//   namelen=N  nslen=N   a name or namespace length without its string (the
//                        width of a name or namespace receiver); sets
//                        anyname or anyns, which leave the string out
//   attrs signed anyname anyns getname getns pi nocount wide   (flag words)
// Offsets are laid out in order (an item starts where the one before it
// ended, a group spans its items, a table its occurrences) unless at= or
// len= says otherwise. The length of an elementary item comes from its
// PICTURE and usage when len= is absent; so do its digits, scale, class and
// sign flag. Lines that are empty or start with '*' or '#' are skipped.
#ifndef CBLXML_TOOLS_RECORD_LAYOUT_H
#define CBLXML_TOOLS_RECORD_LAYOUT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cblxml.h"

namespace cblxml::layout {

// One item of a record description.
struct Item {
    uint8_t level = 1;
    std::string name;  // empty: unnamed (name_len 0)
    std::string ns;    // namespace URI; empty: any namespace
    std::optional<uint32_t> offset;
    std::optional<uint32_t> length;
    uint32_t occurs = 0;
    uint32_t flags = 0;
    std::string picture;  // the third string
    std::optional<uint8_t> class_source;
    std::optional<uint8_t> usage_source;
    uint8_t sign_position = 0;
    std::optional<uint8_t> digits;
    std::optional<uint8_t> scale;
    uint32_t subscript = 0;
    std::optional<uint32_t> name_len;       // namelen=: no name string
    std::optional<uint32_t> namespace_len;  // nslen=: no namespace string
};

// Parses the text form; throws std::invalid_argument naming the line.
std::vector<Item> parse_items(std::string_view text);

// One compiled record layout: the descriptor sequence in an allocation of
// exactly its size (so that reading past it is caught by ASan), its count
// array and its record area. Move-only; moving keeps every address.
class Record {
public:
    explicit Record(std::string_view text);
    explicit Record(std::vector<Item> items);

    // The descriptor of an item by dotted path of names ("line.sku") or by a
    // name alone (its first occurrence). "-" names an unnamed item, and
    // "name#k" the k-th match ("mixed.-#2"). Throws std::out_of_range.
    IDESC *item(std::string_view path) const;
    IDESC *item_at(size_t index) const;
    size_t size() const { return starts_.size(); }
    const std::vector<Item> &items() const { return items_; }

    // Stores `bytes` into the record area at the item's occurrence: one
    // 1-based number per table on the item's chain (the item itself
    // included), outermost first; tables not given take occurrence 1. The
    // bytes are cut or padded with spaces to the item's length.
    void set(std::string_view path, std::string_view bytes, std::vector<uint32_t> occurrence = {});

    // A record entry as the compiler lays it out: root, counts, data and the
    // descriptor count; not linked.
    xml_rec_entry_t entry();
    std::vector<uint32_t> &counts() { return counts_; }
    std::vector<unsigned char> &area() { return area_; }
    // The compiled sequence.
    const unsigned char *image() const { return image_.get(); }
    size_t image_size() const { return image_size_; }

    // Cuts the sequence to its first `k` descriptors, in an allocation of
    // exactly their size (for walks that must stop at the count). Call before
    // the record is linked.
    void keep_first(size_t k);

private:
    void compile();
    size_t index_of(std::string_view path) const;

    std::vector<Item> items_;
    std::unique_ptr<unsigned char[]> image_;
    size_t image_size_ = 0;
    std::vector<size_t> starts_;
    std::vector<uint32_t> counts_;
    std::vector<unsigned char> area_;
};

// A file control block with its records: entry n (1-based) is record n.
// The destructor closes the file if the library still holds anything.
class File {
public:
    explicit File(std::vector<Record> records);
    File(std::initializer_list<std::string_view> record_texts);
    ~File();
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    xmlio_fcb &fcb() { return fcb_; }
    Record &record(size_t n) { return records_.at(n - 1); }
    xml_rec_entry_t *entries() { return entries_.data(); }

    // The file is named `name` (not terminated; trailing spaces kept).
    void use_file(std::string name);
    // The document is held in a data item of max(room, text size) bytes,
    // padded with spaces (flag XMLIO_IN_MEMORY).
    void use_document(std::string_view text, size_t room = 0);
    std::string document() const { return std::string(item_.begin(), item_.end()); }

    // One call of CBL_XMLIO_INTERFACE; returns the status.
    int32_t call(uint8_t opcode, const char *arg2 = nullptr);
    int32_t open(uint8_t mode);
    int32_t close() { return call(XMLIO_OP_CLOSE); }

private:
    std::vector<Record> records_;
    std::vector<xml_rec_entry_t> entries_;
    std::string name_;
    std::vector<char> item_;
    xmlio_fcb fcb_{};
};

}  // namespace cblxml::layout

#endif
