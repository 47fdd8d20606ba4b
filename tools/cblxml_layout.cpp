// cblxml-layout: compiles a COBOL record description (a copybook) into the
// item descriptors of an XML file and writes them as two copybooks for a
// GnuCOBOL program (docs/layout.md):
//     NAME.cpy        WORKING-STORAGE: the file's control block, the
//                     descriptor bytes, record entries and count arrays
//     NAME-setup.cpy  PROCEDURE DIVISION: the paragraph PREFIX-SETUP
// --list prints every named item's offset and length; --probe writes a COBOL
// program that prints the same as GnuCOBOL lays the copybook out.
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "copybook.h"
#include "record_layout.h"

namespace {

using cblxml::copybook::Copybook;
using cblxml::copybook::Error;
using cblxml::copybook::Field;

const char kUsage[] = "usage: cblxml-layout [--free] [--prefix NAME] [-o FILE.cpy] COPYBOOK\n"
                      "       cblxml-layout [--free] (--list | --probe) COPYBOOK\n";

int fail(const std::string &message)
{
    std::fprintf(stderr, "cblxml-layout: %s\n", message.c_str());
    return 2;
}

std::string upper(std::string text)
{
    for (char &c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string cat(std::initializer_list<std::string_view> parts)
{
    std::string out;
    for (const std::string_view part : parts)
        out += part;
    return out;
}

std::string stem(const std::string &path)
{
    const size_t slash = path.find_last_of('/');
    std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    const size_t dot = name.find('.');
    return name.substr(0, dot);
}

// COBOL text that compiles in fixed and in free format: code from column 8
// to column 72, comments as "*>" in column 7.
class Cobol {
public:
    void comment(const std::string &text)
    {
        out_ << "      *>" << (text.empty() ? "" : " ") << text << '\n';
    }
    // Words from `indent` (columns from 8), wrapped before column 73.
    void words(unsigned indent, const std::vector<std::string> &list)
    {
        std::string line(7 + indent, ' ');
        const size_t first = line.size();
        for (const std::string &w : list) {
            if (line.size() > first && line.size() + 1 + w.size() > 72) {
                out_ << line << '\n';
                line.assign(first + 4, ' ');
            }
            if (line.size() > first && line.back() != ' ')
                line += ' ';
            line += w;
        }
        out_ << line << '\n';
    }
    void code(unsigned indent, const std::string &text) { words(indent, split(text)); }
    std::string str() const { return out_.str(); }

private:
    static std::vector<std::string> split(const std::string &text)
    {
        std::vector<std::string> list;
        std::istringstream in(text);
        for (std::string w; in >> w;)
            list.push_back(w);
        return list;
    }
    std::ostringstream out_;
};

struct Compiled {
    std::vector<cblxml::layout::Record> records;
    std::vector<std::vector<size_t>> fields;  // the copybook field of each item
};

Compiled compile(const Copybook &book)
{
    Compiled out;
    out.fields.resize(book.records.size());
    for (size_t r = 0; r < book.records.size(); ++r)
        out.records.emplace_back(cblxml::copybook::record_items(book, r, &out.fields[r]));
    return out;
}

// Descriptor item names: PREFIX-DATANAME when the data name is unique in the
// copybook and short enough, else PREFIX-D<record>-<n>.
std::vector<std::vector<std::string>> descriptor_names(const Compiled &c, const Copybook &book,
                                                       const std::string &prefix)
{
    std::map<std::string, int> seen;
    for (const Field &f : book.fields)
        ++seen[upper(f.name)];
    std::vector<std::vector<std::string>> names(c.records.size());
    for (size_t r = 0; r < c.records.size(); ++r) {
        const auto &items = c.records[r].items();
        for (size_t i = 0; i < items.size(); ++i) {
            const std::string name = upper(book.fields[c.fields[r][i]].name);
            const std::string wanted = cat({prefix, "-", name});
            const bool cobol_word =
                !name.empty() && name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-") ==
                                     std::string::npos;
            if (cobol_word && seen[name] == 1 && wanted.size() <= 30)
                names[r].push_back(wanted);
            else
                names[r].push_back(prefix + "-D" + std::to_string(r + 1) + "-" +
                                   std::to_string(i + 1));
        }
    }
    return names;
}

std::string hex(const unsigned char *bytes, size_t n)
{
    static const char kDigits[] = "0123456789ABCDEF";
    std::string out;
    for (size_t i = 0; i < n; ++i) {
        out += kDigits[bytes[i] >> 4];
        out += kDigits[bytes[i] & 15];
    }
    return out;
}

std::string data_copybook(const Copybook &book, Compiled &c, const std::string &prefix,
                          const std::string &source)
{
    const auto names = descriptor_names(c, book, prefix);
    Cobol cob;
    cob.comment("Written by cblxml-layout from " + source + "; do not edit.");
    cob.comment("The XML file " + prefix + ": its control block, the item");
    cob.comment("descriptors of its records, their record entries and");
    cob.comment("count arrays. COPY it into WORKING-STORAGE, and PERFORM");
    cob.comment(prefix + "-SETUP (the -setup copybook) before the OPEN.");
    cob.code(0, "COPY cblxml-file REPLACING LEADING ==CBLXML-== BY ==" + prefix + "-==.");
    for (size_t r = 0; r < c.records.size(); ++r) {
        auto &record = c.records[r];
        const std::string n = std::to_string(r + 1);
        cob.code(0, cat({"01 ", prefix, "-DESC-", n, "."}));
        for (size_t i = 0; i < record.size(); ++i) {
            const auto &item = record.items()[i];
            const size_t start =
                reinterpret_cast<const unsigned char *>(record.item_at(i)) - record.image();
            const size_t end =
                i + 1 < record.size()
                    ? reinterpret_cast<const unsigned char *>(record.item_at(i + 1)) -
                          record.image()
                    : record.image_size();
            cob.comment(cat({std::to_string(item.level), " ",
                             item.name.empty() ? std::string_view("(unnamed)") : item.name, " at ",
                             std::to_string(*item.offset), ", ", std::to_string(*item.length),
                             " bytes", item.occurs != 0 ? ", occurs " : "",
                             item.occurs != 0 ? std::to_string(item.occurs) : ""}));
            cob.code(3,
                     cat({"05 ", names[r][i], " PIC X(", std::to_string(end - start), ") VALUE"}));
            const std::string bytes = hex(record.image() + start, end - start);
            for (size_t at = 0; at < bytes.size(); at += 48) {
                const bool last = at + 48 >= bytes.size();
                cob.code(at == 0 ? 8 : 6,
                         cat({at == 0 ? "" : "& ", "X\"", std::string_view(bytes).substr(at, 48),
                              "\"", last ? "." : ""}));
            }
        }
        cob.code(0, cat({"01 ", prefix, "-COUNTS-", n, " PIC X(",
                         std::to_string(4 * record.counts().size()), ") VALUE LOW-VALUES."}));
    }
    cob.code(0, "01 " + prefix + "-RECORDS.");
    for (size_t r = 0; r < c.records.size(); ++r) {
        const std::string n = std::to_string(r + 1);
        cob.comment(cat({"record ", n, ": ", book.fields[book.records[r]].name}));
        cob.code(3, cat({"05 ", prefix, "-ENTRY-", n, "."}));
        cob.code(6, cat({"10 ", prefix, "-ROOT-", n, " USAGE POINTER."}));
        cob.code(6, "10 FILLER USAGE POINTER.");
        cob.code(6, cat({"10 ", prefix, "-COUNTS-AT-", n, " USAGE POINTER."}));
        cob.code(6, cat({"10 ", prefix, "-DATA-", n, " USAGE POINTER."}));
        cob.code(6, "10 FILLER BINARY-LONG UNSIGNED VALUE 0.");
        cob.code(6, cat({"10 ", prefix, "-DESC-COUNT-", n, " BINARY-LONG UNSIGNED VALUE ",
                         std::to_string(c.records[r].size()), "."}));
        cob.code(6, cat({"10 ", prefix, "-LINK-FLAGS-", n, " BINARY-LONG UNSIGNED VALUE 0."}));
        cob.code(6, "10 FILLER PIC X(20) VALUE LOW-VALUES.");
    }
    return cob.str();
}

std::string setup_copybook(const Copybook &book, const Compiled &c, const std::string &prefix,
                           const std::string &source)
{
    Cobol cob;
    cob.comment("Written by cblxml-layout from " + source + "; do not edit.");
    cob.comment("The paragraph " + prefix + "-SETUP: COPY it into the");
    cob.comment("PROCEDURE DIVISION where no paragraph runs into it, and");
    cob.comment("PERFORM it once before the OPEN. It points the record");
    cob.comment("entries at the descriptors, count arrays and records,");
    cob.comment("hangs them on the control block and links them.");
    cob.code(0, prefix + "-SETUP.");
    for (size_t r = 0; r < c.records.size(); ++r) {
        const std::string n = std::to_string(r + 1);
        cob.code(4, cat({"SET ", prefix, "-ROOT-", n, " TO ADDRESS OF ", prefix, "-DESC-", n}));
        cob.code(4,
                 cat({"SET ", prefix, "-COUNTS-AT-", n, " TO ADDRESS OF ", prefix, "-COUNTS-", n}));
        cob.code(4, cat({"SET ", prefix, "-DATA-", n, " TO ADDRESS OF ",
                         book.fields[book.records[r]].name}));
    }
    cob.code(4, "SET " + prefix + "-FCB-RECORDS TO ADDRESS OF " + prefix + "-RECORDS");
    cob.code(4, "MOVE " + std::to_string(c.records.size()) + " TO " + prefix + "-FCB-REC-COUNT");
    cob.code(4, "IF " + prefix + "-FCB-REC-NO = 0");
    cob.code(8, "MOVE 1 TO " + prefix + "-FCB-REC-NO");
    cob.code(4, "END-IF");
    cob.comment("Linking twice does no harm: a linked entry is skipped.");
    cob.code(4, "CALL \"kvt_xe_xml_rec_link\" USING " + prefix + "-RECORDS BY VALUE " + prefix +
                    "-FCB-REC-COUNT RETURNING OMITTED.");
    return cob.str();
}

std::string list(const Copybook &book)
{
    std::string out;
    for (const size_t r : book.records) {
        for (size_t f = r; f < book.fields.size() && (f == r || book.fields[f].level != 1); ++f) {
            const Field &field = book.fields[f];
            if (field.name.empty())
                continue;
            char line[64];
            std::snprintf(line, sizeof line, " %09u %09u\n", field.offset - book.fields[r].offset,
                          field.length);
            out += field.name + line;
        }
    }
    return out;
}

std::string probe(const Copybook &book, const std::string &copybook)
{
    Cobol cob;
    cob.comment("Prints the offset and length of every named item of");
    cob.comment(copybook + " as GnuCOBOL lays it out.");
    cob.code(0, "IDENTIFICATION DIVISION.");
    cob.code(0, "PROGRAM-ID. LAYOUT-PROBE.");
    cob.code(0, "DATA DIVISION.");
    cob.code(0, "WORKING-STORAGE SECTION.");
    cob.code(0, "01 PROBE-BASE USAGE POINTER.");
    cob.code(0, "01 PROBE-BASE-N REDEFINES PROBE-BASE BINARY-DOUBLE UNSIGNED.");
    cob.code(0, "01 PROBE-AT USAGE POINTER.");
    cob.code(0, "01 PROBE-AT-N REDEFINES PROBE-AT BINARY-DOUBLE UNSIGNED.");
    cob.code(0, "01 PROBE-OFFSET PIC 9(9).");
    cob.code(0, "01 PROBE-LENGTH PIC 9(9).");
    cob.code(0, "COPY \"" + copybook + "\".");
    cob.code(0, "PROCEDURE DIVISION.");
    // Tables that depend on a count are measured at their maximum.
    for (const Field &f : book.fields) {
        if (!f.depending_on.empty())
            cob.code(4, "MOVE " + std::to_string(f.occurs_max) + " TO " + f.depending_on);
    }
    for (const size_t r : book.records) {
        cob.code(4, "SET PROBE-BASE TO ADDRESS OF " + book.fields[r].name);
        for (size_t f = r; f < book.fields.size() && (f == r || book.fields[f].level != 1); ++f) {
            if (book.fields[f].name.empty())
                continue;
            unsigned subscripts = 0;
            const std::string name = cblxml::copybook::qualified_name(book, f, subscripts);
            std::string subs;
            for (unsigned s = 0; s < subscripts; ++s)
                subs += s == 0 ? "(1" : " 1";
            const std::string ref = subs.empty() ? name : cat({name, " ", subs, ")"});
            cob.code(4, "SET PROBE-AT TO ADDRESS OF " + ref);
            cob.code(4, "COMPUTE PROBE-OFFSET = PROBE-AT-N - PROBE-BASE-N");
            // BYTE-LENGTH: LENGTH OF a record with a table that depends on a
            // count also counts its REDEFINES items.
            cob.code(4, "MOVE FUNCTION BYTE-LENGTH(" + ref + ") TO PROBE-LENGTH");
            cob.code(4, "DISPLAY \"" + book.fields[f].name + " \" PROBE-OFFSET \" \" PROBE-LENGTH");
        }
    }
    cob.code(4, "STOP RUN.");
    return cob.str();
}

bool write_file(const std::string &path, const std::string &text)
{
    std::ofstream out(path, std::ios::binary);
    out << text;
    return static_cast<bool>(out.flush());
}

}  // namespace

int main(int argc, char **argv)
{
    bool free_format = false;
    std::string mode, prefix, output, input;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--free") {
            free_format = true;
        } else if (arg == "--list" || arg == "--probe") {
            mode = arg;
        } else if ((arg == "--prefix" || arg == "-o") && i + 1 < argc) {
            (arg == "-o" ? output : prefix) = argv[++i];
        } else if (!arg.empty() && arg[0] != '-' && input.empty()) {
            input = arg;
        } else {
            std::fputs(kUsage, stderr);
            return 2;
        }
    }
    if (input.empty()) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    std::ifstream in(input, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof())
        return fail("cannot read " + input);
    if (!in.is_open())
        return fail("cannot open " + input);
    if (prefix.empty())
        prefix = upper(stem(input)) + "-XML";
    prefix = upper(prefix);
    if (prefix.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-") != std::string::npos ||
        prefix.size() > 20 || !std::isalpha(static_cast<unsigned char>(prefix[0])))
        return fail("the prefix " + prefix + " is not a COBOL word of up to 20 characters");
    try {
        const Copybook book = cblxml::copybook::read_copybook(text, free_format);
        for (const size_t r : book.records) {
            if (book.fields[r].name.empty())
                throw Error(book.fields[r].line, book.fields[r].column,
                            "a record needs a name: the set-up takes its address");
        }
        if (mode == "--list") {
            std::fputs(list(book).c_str(), stdout);
            return 0;
        }
        if (mode == "--probe") {
            const size_t slash = input.find_last_of('/');
            std::fputs(
                probe(book, input.substr(slash == std::string::npos ? 0 : slash + 1)).c_str(),
                stdout);
            return 0;
        }
        Compiled compiled = compile(book);
        if (output.empty())
            output = stem(input) + "-xml.cpy";
        const size_t dot = output.rfind('.');
        const size_t slash = output.rfind('/');
        const std::string setup =
            (dot == std::string::npos || (slash != std::string::npos && dot < slash)
                 ? output
                 : output.substr(0, dot)) +
            "-setup" +
            (dot == std::string::npos || (slash != std::string::npos && dot < slash)
                 ? ""
                 : output.substr(dot));
        const size_t in_slash = input.find_last_of('/');
        const std::string source = input.substr(in_slash == std::string::npos ? 0 : in_slash + 1);
        if (!write_file(output, data_copybook(book, compiled, prefix, source)) ||
            !write_file(setup, setup_copybook(book, compiled, prefix, source)))
            return fail("cannot write " + output);
    } catch (const Error &e) {
        std::fprintf(stderr, "%s:%u:%u: %s\n", input.c_str(), e.line, e.column, e.what());
        return 2;
    } catch (const std::exception &e) {
        return fail(e.what());
    }
    return 0;
}
