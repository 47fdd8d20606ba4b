// Recorded programs replayed: every tests/data/replay/*.case runs its script
// of file operations and its transcript (each status, every record area and
// count array after every call, the text written to the file or data item)
// must equal the recorded *.expected byte for byte. With CBLXML_REPLAY_RECORD
// set, the transcripts are written as the new expected files instead.
//
// A case is a sequence of sections:
//   layout ... end      one record description (repeat for more records)
//   input ... end       the document (lines joined with LF); "input16" gives
//                       it as UTF-16LE with a byte-order mark
//   file | item ROOM    where the document lives (default: a file)
//   flags HEX  key PATH  doctype NAME
//   ops ... end         one call a line: an operation name, then its number
//                       (OPEN's mode, START's occurrence); "set R PATH BYTES"
//                       stores into record R ('_' is a space, \xHH a byte)
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "platform/platform.h"
#include "record_layout.h"

namespace {

namespace fs = std::filesystem;
using cblxml::layout::File;
using cblxml::layout::Record;

std::string hex(const void *data, size_t size)
{
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    for (size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<const unsigned char *>(data)[i];
        out += kDigits[byte >> 4];
        out += kDigits[byte & 15];
    }
    return out;
}

std::string unescape(const std::string &text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "\\x") == 0 && i + 3 < text.size()) {
            out += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            out += text[i] == '_' ? ' ' : text[i];
        }
    }
    return out;
}

std::string slurp(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string run_case(const fs::path &path)
{
    static const std::map<std::string, uint8_t> kOps = {
        {"open", 1},  {"close", 2}, {"wdoc", 3}, {"read", 4},  {"start", 5},   {"next", 6},
        {"write", 7}, {"keep", 8},  {"pi", 9},   {"text", 10}, {"delete", 11}, {"rewrite", 12}};
    std::istringstream in(slurp(path));
    std::vector<Record> records;
    std::string input, key, doctype, line, transcript;
    std::vector<std::string> ops;
    size_t room = 0;
    bool item = false;
    uint32_t flags = 0;
    auto block = [&in, &line]() {
        std::string text;
        while (std::getline(in, line) && line != "end")
            text += (text.empty() ? "" : "\n") + line;
        return text;
    };
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == "layout") {
            records.emplace_back(block());
        } else if (word == "input" || word == "input16") {
            input = block();
            if (word == "input16") {
                const std::u16string units =
                    cblxml::platform::utf8_to_utf16(input.data(), input.size());
                input = "\xFF\xFE" +
                        std::string(reinterpret_cast<const char *>(units.data()), units.size() * 2);
            }
        } else if (word == "item") {
            item = true;
            words >> room;
        } else if (word == "flags") {
            words >> std::hex >> flags;
        } else if (word == "key") {
            words >> key;
        } else if (word == "doctype") {
            words >> doctype;
        } else if (word == "ops") {
            for (std::string op = block(); !op.empty();) {
                const size_t nl = op.find('\n');
                ops.push_back(op.substr(0, nl));
                op = nl == std::string::npos ? "" : op.substr(nl + 1);
            }
        }
    }
    const fs::path target = fs::path(::testing::TempDir()) / ("replay-" + path.stem().string());
    fs::remove(target);
    const size_t layouts = records.size();
    std::vector<std::string> shown(layouts);
    File file(std::move(records));
    if (item) {
        file.use_document(input, room);
    } else {
        if (!input.empty())
            std::ofstream(target, std::ios::binary) << input;
        file.use_file(target.string());
    }
    xmlio_fcb &fcb = file.fcb();
    fcb.flags |= flags;
    if (!key.empty())
        fcb.key_item = file.record(1).item(key);
    if (!doctype.empty()) {
        fcb.doctype_name = doctype.c_str();
        fcb.doctype_len = static_cast<uint32_t>(doctype.size());
    }
    for (const std::string &op : ops) {
        std::istringstream words(op);
        std::string name, arg;
        words >> name;
        if (name == "set") {
            size_t r = 0;
            std::string item_path, bytes;
            words >> r >> item_path >> bytes;
            file.record(r).set(item_path, unescape(bytes));
            continue;
        }
        uint32_t n = 0;
        words >> n;
        std::string text;
        std::getline(words >> std::ws, text);
        text = unescape(text);
        fcb.key_occurrence = n;
        fcb.arg2_len = static_cast<uint32_t>(text.size());
        const int32_t status = name == "open" ? file.open(static_cast<uint8_t>(n))
                                              : file.call(kOps.at(name), text.c_str());
        transcript +=
            op + " => " + std::to_string(status) + " rec " + std::to_string(fcb.rec_read) + "\n";
        // Each record area and count array, when it differs from the last shown.
        for (size_t r = 1; r <= layouts; ++r) {
            Record &record = file.record(r);
            std::string now = hex(record.area().data(), record.area().size()) + " |";
            for (const uint32_t c : record.counts())
                now += " " + std::to_string(c);
            if (now != shown[r - 1])
                transcript += "  r" + std::to_string(r) + " " + now + "\n";
            shown[r - 1] = now;
        }
    }
    file.close();
    const std::string written = item ? file.document() : slurp(target);
    transcript += "written " + std::to_string(written.size()) + "\n" + written + "\n";
    fs::remove(target);
    return transcript;
}

TEST(RecordedPrograms, ReplayUnchanged)
{
    const fs::path dir = fs::path(CBLXML_TEST_DATA) / "replay";
    const char *record = std::getenv("CBLXML_REPLAY_RECORD");
    size_t cases = 0;
    for (const auto &entry : fs::directory_iterator(dir)) {
        if (entry.path().extension() != ".case")
            continue;
        ++cases;
        SCOPED_TRACE(entry.path().filename().string());
        const std::string got = run_case(entry.path());
        fs::path expected = entry.path();
        expected.replace_extension(".expected");
        if (record != nullptr)
            std::ofstream(expected, std::ios::binary) << got;
        EXPECT_EQ(got, slurp(expected));
    }
    EXPECT_GE(cases, 12u);
}

}  // namespace
