// The record-layout builder (see record_layout.h for the text form).
#include "record_layout.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>
#include <functional>
#include <sstream>
#include <stdexcept>

namespace cblxml::layout {
namespace {

[[noreturn]] void bad_line(size_t line, const std::string &why)
{
    throw std::invalid_argument("record layout line " + std::to_string(line) + ": " + why);
}

uint32_t number(size_t line, const std::string &text)
{
    try {
        size_t used = 0;
        const unsigned long value = std::stoul(text, &used, 0);
        if (used == text.size() && value <= 0xFFFFFFFFul)
            return static_cast<uint32_t>(value);
    } catch (const std::exception &) {
    }
    bad_line(line, "not a number: " + text);
}

uint8_t byte_number(size_t line, const std::string &text)
{
    const uint32_t value = number(line, text);
    if (value > 255)
        bad_line(line, "more than one byte: " + text);
    return static_cast<uint8_t>(value);
}

struct Named {
    const char *name;
    uint32_t value;
};

// Flag words, and the class and usage bytes a compiler writes (the class
// byte 1 is numeric display; usage 1 is DISPLAY, 12 NATIONAL).
const Named kFlagWords[] = {
    {"attrs", IDESC_ATTRIBUTES},   {"signed", IDESC_SIGNED},     {"anyname", IDESC_NO_NAME},
    {"anyns", IDESC_NO_NAMESPACE}, {"getname", IDESC_GETS_NAME}, {"getns", IDESC_GETS_NAMESPACE},
    {"pi", IDESC_GETS_PI},         {"nocount", IDESC_NO_COUNT},  {"wide", 0x100},
};
const Named kClasses[] = {{"numeric", 1},  {"alnum", 2}, {"alpha", 4},    {"numedit", 5},
                          {"national", 6}, {"dbcs", 7},  {"alnumedit", 8}};
const Named kUsages[] = {{"display", 1}, {"comp1", 2},  {"comp2", 3},    {"packed", 4},
                         {"comp3", 4},   {"binary", 5}, {"comp", 5},     {"comp5", 6},
                         {"comp6", 7},   {"compx", 8},  {"national", 12}};

template <size_t N>
const Named *find(const Named (&table)[N], const std::string &name)
{
    for (const Named &entry : table) {
        if (name == entry.name)
            return &entry;
    }
    return nullptr;
}

template <size_t N>
uint8_t named_byte(size_t line, const Named (&table)[N], const std::string &text)
{
    const Named *entry = find(table, text);
    return entry != nullptr ? static_cast<uint8_t>(entry->value) : byte_number(line, text);
}

Item parse_line(size_t line, const std::string &text)
{
    std::istringstream words(text);
    std::string level;
    std::string name;
    words >> level >> name;
    if (name.empty())
        bad_line(line, "needs a level and a name");
    Item item;
    item.level = byte_number(line, level);
    item.name = name == "-" ? "" : name;
    std::string word;
    while (words >> word) {
        const size_t eq = word.find('=');
        if (eq == std::string::npos) {
            const Named *flag = find(kFlagWords, word);
            if (flag == nullptr)
                bad_line(line, "unknown word: " + word);
            item.flags |= flag->value;
            continue;
        }
        const std::string key = word.substr(0, eq);
        const std::string value = word.substr(eq + 1);
        if (key == "ns")
            item.ns = value;
        else if (key == "at")
            item.offset = number(line, value);
        else if (key == "len")
            item.length = number(line, value);
        else if (key == "occurs")
            item.occurs = number(line, value);
        else if (key == "pic")
            item.picture = value;
        else if (key == "class")
            item.class_source = named_byte(line, kClasses, value);
        else if (key == "usage")
            item.usage_source = named_byte(line, kUsages, value);
        else if (key == "sign")
            item.sign_position = byte_number(line, value);
        else if (key == "digits")
            item.digits = byte_number(line, value);
        else if (key == "scale")
            item.scale = byte_number(line, value);
        else if (key == "subscript")
            item.subscript = number(line, value);
        else if (key == "flags")
            item.flags |= number(line, value);
        else if (key == "namelen") {
            item.name_len = number(line, value);
            item.flags |= IDESC_NO_NAME;
        } else if (key == "nslen") {
            item.namespace_len = number(line, value);
            item.flags |= IDESC_NO_NAMESPACE;
        } else
            bad_line(line, "unknown attribute: " + key);
    }
    return item;
}

// "S9(3)V99" -> "S999V99".
std::string expand_picture(const std::string &picture)
{
    std::string out;
    for (size_t i = 0; i < picture.size(); ++i) {
        const char c = picture[i];
        if (c == '(' && !out.empty()) {
            const size_t close = picture.find(')', i);
            if (close == std::string::npos)
                break;
            const unsigned long times = std::stoul(picture.substr(i + 1, close - i - 1));
            out.append(times - 1, out.back());
            i = close;
            continue;
        }
        out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return out;
}

// What a compiler derives from an elementary item's PICTURE and usage:
// digits, scale, sign flag, class and storage length, as GnuCOBOL does with
// its default options. Digit positions are 9, Z, *, P and every symbol of a
// floating insertion string (+, - or $ repeated) but its first; binary sizes
// go by the 9s alone.
void derive_from_picture(Item &item)
{
    const std::string pic = expand_picture(item.picture);
    uint32_t digits = 0, nines = 0, scale = 0, chars = 0;
    bool after_point = false, numeric = !pic.empty(), national = false, alpha = !pic.empty();
    bool alnum = false, edit_alnum = false, edit_num = false;
    char floating = 0;
    for (const char c : pic) {
        const bool floats = (c == '+' || c == '-' || c == '$') && floating == c;
        if (c == '9' || c == 'Z' || c == '*' || c == 'P' || floats) {
            ++digits;
            scale += after_point ? 1 : 0;
        }
        if (c == '+' || c == '-' || c == '$')
            floating = c;
        nines += c == '9' ? 1 : 0;
        if (c == 'V' || c == '.')
            after_point = true;
        if (c == 'S')
            item.flags |= IDESC_SIGNED;
        if (c != 'S' && c != 'V' && c != 'P')
            ++chars;
        numeric = numeric && std::strchr("9SVP", c) != nullptr;
        alpha = alpha && c == 'A';
        national = national || c == 'N';
        alnum = alnum || c == 'X' || c == 'A';
        edit_alnum = edit_alnum || c == 'B' || c == '0' || c == '/';
        edit_num = edit_num || std::strchr("Z*+-$.,CRD", c) != nullptr;
    }
    if (!item.digits)
        item.digits = static_cast<uint8_t>(digits);
    if (!item.scale)
        item.scale = static_cast<uint8_t>(scale);
    if (!item.class_source) {
        const bool edited = edit_alnum || edit_num;
        item.class_source = numeric    ? 1
                            : national ? 6
                            : alpha    ? 4
                            : alnum    ? (edited ? 8 : 2)
                            : edited   ? 5
                                       : 2;
    }
    if (!item.usage_source)
        item.usage_source = national ? 12 : 1;
    if (item.length)
        return;
    const uint32_t n = *item.digits;
    // Binary sizes by the 9s of the PICTURE (an explicit digits= stands).
    const uint32_t binary_digits = digits == *item.digits ? nines : n;
    switch (*item.usage_source) {
    case 2:
        item.length = 4;
        break;
    case 3:
        item.length = 8;
        break;
    case 4:
        item.length = n / 2 + 1;
        break;
    case 5:
    case 6:
        item.length = binary_digits <= 2 ? 1 : binary_digits <= 4 ? 2 : binary_digits <= 9 ? 4 : 8;
        break;
    case 7:
        item.length = (n + 1) / 2;
        break;
    case 8:
        item.length = numeric ? (n * 10 + 23) / 24 : chars;  // ceil(n * log2(10) / 8)
        break;
    case 12:
        item.length = 2 * chars;
        break;
    default:
        // Separate signs (sign bytes 3 and 4) take a byte of their own.
        item.length = chars + (item.sign_position == 3 || item.sign_position == 4 ? 1 : 0);
    }
}

size_t padded(size_t length)
{
    return length == 0 ? 0 : ((length - 1) / IDESC_STRING_UNIT + 1) * IDESC_STRING_UNIT;
}

template <typename T>
void put(unsigned char *desc, size_t offset, T value)
{
    std::memcpy(desc + offset, &value, sizeof value);
}

bool emits_name(const Item &item)
{
    return (item.flags & IDESC_NO_NAME) == 0 && !item.name.empty();
}

bool emits_namespace(const Item &item)
{
    return (item.flags & IDESC_NO_NAMESPACE) == 0 && !item.ns.empty();
}

size_t desc_size(const Item &item)
{
    const size_t head = (item.flags & IDESC_WIDE_FLAGS) ? IDESC_WIDE_HEAD_SIZE : IDESC_HEAD_SIZE;
    return head + (emits_name(item) ? padded(item.name.size()) : 0) +
           (emits_namespace(item) ? padded(item.ns.size()) : 0) + padded(item.picture.size());
}

}  // namespace

std::vector<Item> parse_items(std::string_view text)
{
    std::vector<Item> items;
    std::istringstream lines{std::string(text)};
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        const size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string::npos || line[first] == '*' || line[first] == '#')
            continue;
        items.push_back(parse_line(number, line));
    }
    if (items.empty())
        throw std::invalid_argument("record layout: no items");
    return items;
}

Record::Record(std::string_view text) : Record(parse_items(text)) {}

Record::Record(std::vector<Item> items) : items_(std::move(items)) { compile(); }

void Record::compile()
{
    // Each item belongs to the nearest item before it with a lower level.
    const size_t n = items_.size();
    std::vector<std::vector<size_t>> children(n);
    std::vector<size_t> open;
    for (size_t i = 1; i < n; ++i) {
        open.push_back(i - 1);
        while (open.size() > 1 && items_[open.back()].level >= items_[i].level)
            open.pop_back();
        children[open.back()].push_back(i);
    }
    // Offsets, lengths and spans, depth first; returns the item's length.
    std::vector<uint32_t> spans(n, 0);
    std::function<uint32_t(size_t, uint32_t)> lay_out = [&](size_t i, uint32_t at) {
        Item &item = items_[i];
        item.offset = item.offset.value_or(at);
        if (children[i].empty()) {
            derive_from_picture(item);
            return *item.length;
        }
        uint32_t pos = *item.offset;
        for (const size_t c : children[i]) {
            const uint32_t length = lay_out(c, pos);
            const uint32_t times = items_[c].occurs != 0 ? items_[c].occurs : 1;
            pos = *items_[c].offset + length * times;
            spans[i] += 1 + spans[c] * times;
        }
        item.length = item.length.value_or(pos - *item.offset);
        return *item.length;
    };
    lay_out(0, 0);

    starts_.clear();
    image_size_ = 0;
    for (const Item &item : items_) {
        starts_.push_back(image_size_);
        image_size_ += desc_size(item);
    }
    image_.reset(new unsigned char[image_size_]());
    for (size_t i = 0; i < n; ++i) {
        const Item &item = items_[i];
        unsigned char *desc = image_.get() + starts_[i];
        put<uint32_t>(desc, offsetof(IDESC, offset), *item.offset);
        put<uint32_t>(desc, offsetof(IDESC, length), *item.length);
        put<uint32_t>(desc, offsetof(IDESC, occurs_max), item.occurs);
        put<uint32_t>(desc, offsetof(IDESC, flags), item.flags);
        put<uint32_t>(desc, offsetof(IDESC, subscript), item.subscript);
        put<uint32_t>(desc, offsetof(IDESC, namespace_len),
                      item.namespace_len.value_or(static_cast<uint32_t>(item.ns.size())));
        put<uint32_t>(desc, offsetof(IDESC, name_len),
                      item.name_len.value_or(static_cast<uint32_t>(item.name.size())));
        put<uint32_t>(desc, offsetof(IDESC, third_len), static_cast<uint32_t>(item.picture.size()));
        desc[offsetof(IDESC, level)] = item.level;
        desc[offsetof(IDESC, digits)] = item.digits.value_or(0);
        desc[offsetof(IDESC, scale)] = item.scale.value_or(0);
        desc[offsetof(IDESC, sign_position)] = item.sign_position;
        desc[offsetof(IDESC, class_source)] = item.class_source.value_or(0);
        desc[offsetof(IDESC, usage_source)] = item.usage_source.value_or(0);
        unsigned char *pos =
            desc + ((item.flags & IDESC_WIDE_FLAGS) ? IDESC_WIDE_HEAD_SIZE : IDESC_HEAD_SIZE);
        const std::string *strings[] = {emits_name(item) ? &item.name : nullptr,
                                        emits_namespace(item) ? &item.ns : nullptr, &item.picture};
        for (const std::string *s : strings) {
            if (s != nullptr && !s->empty()) {
                std::memcpy(pos, s->data(), s->size());
                pos += padded(s->size());
            }
        }
    }
    counts_.assign(spans[0] + 1, 0);
    area_.assign(*items_[0].offset + *items_[0].length, ' ');
}

IDESC *Record::item_at(size_t index) const
{
    return reinterpret_cast<IDESC *>(image_.get() + starts_.at(index));
}

IDESC *Record::item(std::string_view path) const { return item_at(index_of(path)); }

void Record::set(std::string_view path, std::string_view bytes, std::vector<uint32_t> occurrence)
{
    const size_t index = index_of(path);
    // The item's chain of tables, innermost first.
    std::vector<size_t> tables;
    uint8_t level = 0xFF;
    for (size_t j = index + 1; j-- > 0;) {
        if (items_[j].level < level || j == index) {
            level = items_[j].level;
            if (items_[j].occurs != 0)
                tables.push_back(j);
        }
    }
    size_t at = *items_[index].offset;
    for (size_t t = 0; t < tables.size(); ++t) {
        const size_t k = tables.size() - 1 - t;  // outermost first in `occurrence`
        const uint32_t n = k < occurrence.size() ? occurrence[k] : 1;
        at += size_t{n - 1} * *items_[tables[t]].length;
    }
    const size_t length = *items_[index].length;
    if (at + length > area_.size())
        throw std::out_of_range("record layout: occurrence past the record");
    std::memset(area_.data() + at, ' ', length);
    std::memcpy(area_.data() + at, bytes.data(), std::min(length, bytes.size()));
}

size_t Record::index_of(std::string_view path) const
{
    // Match the path's names against each item's chain of named ancestors.
    std::vector<std::string_view> names;
    for (size_t pos = 0;;) {
        const size_t dot = path.find('.', pos);
        names.push_back(path.substr(pos, dot - pos));
        if (dot == std::string_view::npos)
            break;
        pos = dot + 1;
    }
    // "-" names an unnamed item; a last name ending in "#k" takes the k-th
    // item that matches ("mixed.-#2").
    size_t skip = 0;
    if (const size_t hash = names.back().find('#'); hash != std::string_view::npos) {
        skip = std::stoul(std::string(names.back().substr(hash + 1))) - 1;
        names.back() = names.back().substr(0, hash);
    }
    for (std::string_view &name : names) {
        if (name == "-")
            name = {};
    }
    for (size_t i = 0; i < items_.size(); ++i) {
        if (items_[i].name != names.back())
            continue;
        size_t want = names.size() - 1;
        uint8_t level = items_[i].level;
        for (size_t j = i; want > 0 && j-- > 0;) {
            if (items_[j].level < level) {
                level = items_[j].level;
                if (items_[j].name == names[want - 1])
                    --want;
            }
        }
        if (want == 0 && skip-- == 0)
            return i;
    }
    throw std::out_of_range("record layout: no item " + std::string(path));
}

xml_rec_entry_t Record::entry()
{
    xml_rec_entry_t entry{};
    entry.root = item_at(0);
    entry.counts = counts_.data();
    entry.data = area_.data();
    entry.desc_count = static_cast<uint32_t>(starts_.size());
    return entry;
}

void Record::keep_first(size_t k)
{
    if (k >= starts_.size())
        return;
    const size_t size = k == 0 ? desc_size(items_[0]) : starts_[k];
    std::unique_ptr<unsigned char[]> cut(new unsigned char[size]);
    std::memcpy(cut.get(), image_.get(), size);
    image_ = std::move(cut);
    image_size_ = size;
    starts_.resize(k == 0 ? 1 : k);
    items_.resize(starts_.size());
}

File::File(std::vector<Record> records) : records_(std::move(records))
{
    for (Record &record : records_)
        entries_.push_back(record.entry());
    fcb_.records = entries_.data();
    fcb_.rec_count = static_cast<uint32_t>(entries_.size());
    fcb_.rec_no = 1;
}

static std::vector<Record> compile_all(std::initializer_list<std::string_view> texts)
{
    std::vector<Record> records;
    for (const std::string_view text : texts)
        records.emplace_back(text);
    return records;
}

File::File(std::initializer_list<std::string_view> record_texts) : File(compile_all(record_texts))
{}

File::~File()
{
    if ((fcb_.flags & XMLIO_INITIALISED) != 0 &&
        (fcb_.stream != nullptr || fcb_.doc != nullptr || fcb_.dm_handle != nullptr ||
         fcb_.read_buf != nullptr))
        close();
}

void File::use_file(std::string name)
{
    name_ = std::move(name);
    fcb_.name = name_.data();
    fcb_.name_len = static_cast<uint32_t>(name_.size());
    fcb_.flags &= ~uint32_t{XMLIO_IN_MEMORY};
}

void File::use_document(std::string_view text, size_t room)
{
    item_.assign(std::max(room, text.size()), ' ');
    if (!text.empty())
        std::memcpy(item_.data(), text.data(), text.size());
    fcb_.name = item_.data();
    fcb_.name_len = static_cast<uint32_t>(item_.size());
    fcb_.flags |= XMLIO_IN_MEMORY;
}

int32_t File::call(uint8_t opcode, const char *arg2)
{
    fcb_.opcode = opcode;
    CBL_XMLIO_INTERFACE(&fcb_, arg2);
    return fcb_.status;
}

int32_t File::open(uint8_t mode)
{
    fcb_.open_mode = mode;
    return call(XMLIO_OP_OPEN);
}

}  // namespace cblxml::layout
