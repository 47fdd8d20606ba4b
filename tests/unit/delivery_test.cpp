// Event delivery through the XML PARSE entries: buffers, lengths, codes, the
// clean-up call, and the wrapper for callers that own the text area.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "XmlParseErr/event_record.h"
#include "parse_events.h"

using cblxml_test::Event;
using cblxml_test::parse_events;

namespace {

// One program's parse state, driven call by call.
struct Parse {
    std::string document;
    uint32_t options = 0;
    xd_parse_info *state = nullptr;
    void *docAddress = nullptr;
    void *text = nullptr;
    uint32_t docLength = 0;
    uint32_t textLength = 0xDEADBEEF;
    unsigned char code[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    char name[CBLXML_EVENT_NAME_LEN];

    explicit Parse(std::string doc, uint32_t opts = 0) : document(std::move(doc)), options(opts)
    {
        docAddress = document.data();
        docLength = static_cast<uint32_t>(document.size());
    }
    ~Parse()
    {
        CBL_XMLPARSE_INTERFACE(&state, nullptr, &text, nullptr, nullptr, nullptr, nullptr, nullptr);
        std::free(text);
    }
    std::string next()
    {
        CBL_XMLPARSE_INTERFACE(&state, &docAddress, &text, &docLength, &textLength, code, name,
                               &options);
        std::string n(name, sizeof name);
        return n.erase(n.find_last_not_of(' ') + 1);
    }
};

// The document's text and the event names, codes and texts are pinned by
// the events and differential tests; here what they cannot see: the first
// text is the caller's own copy, names are padded with blanks.
TEST(DeliveryTest, FirstTextIsACopyAndNamesArePadded)
{
    Parse p("<a/>");
    EXPECT_EQ(p.next(), "START-OF-DOCUMENT");
    EXPECT_NE(p.text, p.docAddress) << "a copy, owned by the caller";
    while (p.state != nullptr)
        p.next();
    EXPECT_EQ(std::string(p.name, sizeof p.name),
              "END-OF-DOCUMENT" + std::string(CBLXML_EVENT_NAME_LEN - 15, ' '));
}

TEST(DeliveryTest, ChangingTheDocumentDuringTheParseChangesNoEvent)
{
    // The parse reads the document as the program asks for events, but from
    // the copy taken on the first call.
    const std::string doc = "<r><a k=\"v\">text</a><b>more</b></r>";
    const std::vector<Event> expected = parse_events(doc);
    Parse p(doc);
    std::vector<std::string> got;
    do {
        const std::string name = p.next();
        got.push_back(
            name + "|" +
            std::string(static_cast<char *>(p.text ? p.text : p.name), p.text ? p.textLength : 0));
        if (got.size() == 2)
            std::memset(p.document.data(), 'X', p.document.size());
    } while (p.state != nullptr && got.size() < 50);
    ASSERT_EQ(got.size(), expected.size());
    for (size_t i = 0; i < got.size(); ++i)
        EXPECT_EQ(got[i], expected[i].name + "|" + expected[i].text) << i;
}

TEST(DeliveryTest, CleanUpAtEveryPointOfAParse)
{
    // Abandoning a parse after any number of events frees all it holds (the
    // sanitizer build checks that nothing leaks) but the caller's last buffer.
    const std::string doc = "<!DOCTYPE r [<!ENTITY e 'x'>]><r a='&lt;'>&e;<!--c--><?p d?></r>";
    const size_t total = parse_events(doc).size();
    for (size_t stop = 1; stop < total; ++stop) {
        Parse p(doc);
        for (size_t i = 0; i < stop; ++i)
            p.next();
        ASSERT_NE(p.state, nullptr) << stop;
        void *last = p.text;
        CBL_XMLPARSE_INTERFACE(&p.state, nullptr, &p.text, nullptr, nullptr, nullptr, nullptr,
                               nullptr);
        EXPECT_EQ(p.state, nullptr) << stop;
        EXPECT_EQ(p.text, last) << "the caller still owns its last buffer";
    }
}

// A list built by hand, as the delivery sees it: records with no text, an
// empty text, a name that merely begins with a compared name, and the
// terminal record with code -1.
TEST(DeliveryTest, HandBuiltRecordsAreDeliveredSafely)
{
    auto record = [](const char *name, const char *text, int32_t code) {
        xd_parse_info *r = cblxml::new_event(name);
        r->code = code;
        if (text != nullptr)
            r->text = cblxml::copy_text(text, std::strlen(text), 2);
        return r;
    };
    xd_parse_info *list[] = {
        record("CONTENT-CHARACTERS", "", 0),
        record("ATTRIBUTE-CHARACTER", nullptr, 0),
        record("END-OF-DOCUMENTX", nullptr, 0),
        record("EXCEPTION", "abc", -1),
    };
    for (size_t i = 0; i + 1 < 4; ++i) {
        list[i]->next = list[i + 1];
        list[i + 1]->prev = list[i];
    }
    xd_parse_info *state = list[0];
    void *text = nullptr;
    uint32_t length = 99;
    unsigned char code[4];
    char name[CBLXML_EVENT_NAME_LEN];
    uint32_t options = 0;
    void *doc = nullptr;

    CBL_XMLPARSE_INTERFACE(&state, &doc, &text, &length, &length, code, name, &options);
    EXPECT_EQ(length, 0u);
    ASSERT_NE(text, nullptr) << "an empty text still gets a one-byte buffer";
    EXPECT_EQ(static_cast<char *>(text)[0], 0);

    CBL_XMLPARSE_INTERFACE(&state, &doc, &text, &length, &length, code, name, &options);
    EXPECT_EQ(length, 0u) << "a record without text delivers an empty one";

    CBL_XMLPARSE_INTERFACE(&state, &doc, &text, &length, &length, code, name, &options);
    EXPECT_EQ(text, nullptr) << "names are compared by prefix";
    EXPECT_EQ(length, 0u);

    CBL_XMLPARSE_INTERFACE(&state, &doc, &text, &length, &length, code, name, &options);
    EXPECT_EQ(cblxml_test::big_endian_code(code), -1);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(state, nullptr) << "the caller never keeps a freed record";
    std::free(text);
}

TEST(DeliveryTest, WrapperCopiesIntoTheCallersArea)
{
    const std::string area = "xxxx<r a='1'>t</r>";
    std::vector<char> text(64, '#');
    char events[40];
    std::memset(events, '.', sizeof events);
    xd_parse_info *state = nullptr;
    uint32_t length = 0;
    unsigned char code[4];
    std::vector<std::string> seen;
    do {
        std::fill(text.begin(), text.end(), '#');
        CBL_XMLPARSE_INTERFACE_WRAP(&state, const_cast<char *>(area.data()), 4,
                                    static_cast<uint32_t>(area.size() - 4), text.data(), &length,
                                    code, events, 5, 0);
        seen.push_back(std::string(events + 5, CBLXML_EVENT_NAME_LEN));
        if (seen.size() == 1) {
            ASSERT_EQ(length, area.size() - 4);
            EXPECT_EQ(std::string(text.data(), length), area.substr(4));
            EXPECT_EQ(text[length], '#') << "exactly the document's length is copied";
        }
    } while (state != nullptr);
    EXPECT_EQ(seen.back().substr(0, 15), "END-OF-DOCUMENT");
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(text[0], '#') << "END-OF-DOCUMENT leaves the area untouched";
    EXPECT_EQ(std::string(events, 5), ".....");
}

TEST(DeliveryTest, ExceptionEntriesSequenceTheHooks)
{
    static std::vector<std::string> calls;
    calls.clear();
    cblxml_services services{};
    services.size = sizeof services;
    services.exception_begin = [](void *service, intptr_t a, intptr_t b) -> void * {
        calls.push_back(service != nullptr && a == 0 && b == 0 ? "begin" : "bad begin");
        return &calls;
    };
    services.exception_resume = [](void *handle) {
        calls.push_back(handle == &calls ? "resume" : "bad resume");
    };
    ASSERT_EQ(cblxml_register_services(&services), 0);
    CBL_XMLPARSE_EXCEPTION(0);
    CBL_XMLPARSE_EXCEPTION(1);
    cblxml_register_services(nullptr);
    CBL_XMLIO();
    EXPECT_EQ(calls, (std::vector<std::string>{"begin", "begin", "resume"}));
}

// COBOL items sit wherever the record puts them: none of the entry's
// arguments need be aligned for its type (the sanitizer build checks this).
TEST(DeliveryTest, ItemsNeedNotBeAligned)
{
    std::string doc = "<a>x</a>";
    alignas(8) unsigned char area[128] = {};
    unsigned char *state = area + 1;
    unsigned char *docPointer = area + 11;
    unsigned char *text = area + 21;
    unsigned char *docLength = area + 31;
    unsigned char *textLength = area + 37;
    unsigned char *code = area + 43;
    unsigned char *options = area + 49;
    char *name = reinterpret_cast<char *>(area + 55);
    void *address = doc.data();
    uint32_t length = static_cast<uint32_t>(doc.size());
    std::memcpy(docPointer, &address, sizeof address);
    std::memcpy(docLength, &length, sizeof length);
    std::vector<std::string> names;
    xd_parse_info *head = nullptr;
    do {
        CBL_XMLPARSE_INTERFACE(
            reinterpret_cast<xd_parse_info **>(state), reinterpret_cast<void **>(docPointer),
            reinterpret_cast<void **>(text), reinterpret_cast<uint32_t *>(docLength),
            reinterpret_cast<uint32_t *>(textLength), code, name,
            reinterpret_cast<uint32_t *>(options));
        names.emplace_back(name, 17);
        std::memcpy(&head, state, sizeof(xd_parse_info *));
    } while (head != nullptr && names.size() < 10);
    void *last = nullptr;
    std::memcpy(&last, text, sizeof last);
    std::free(last);
    EXPECT_EQ(names.size(), 5u);
    EXPECT_EQ(names.front(), "START-OF-DOCUMENT");
}

}  // namespace
