// Parses on many threads at once: every thread must get exactly the events
// a single-threaded run gives for the same document. Built under
// ThreadSanitizer by scripts/test-tsan.sh.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "cblxml.h"
#include "datamap.h"
#include "parse_events.h"

using cblxml_test::Event;

namespace {

constexpr int kThreads = 8;
constexpr int kParsesPerThread = 1000;

struct Job {
    std::string document;  // in the form the option word says
    uint32_t options;
};

// Documents that take different paths through the library: every event
// kind, errors and their classification, the three document forms, the
// data map, validation and the entity guard.
std::vector<Job> jobs()
{
    const std::vector<std::string> texts = {
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><r a=\"1&lt;2\">t&amp;u<![CDATA[c]]>"
        "<!--k--><?p d?><e/></r>",
        "<!DOCTYPE r [<!ENTITY e \"hello\">]><r>&e; &unknown;</r>",
        "<!DOCTYPE r [<!ENTITY e SYSTEM \"/etc/hostname\">]><r>a&e;</r>",
        "<a><b></a>",
        "<a x=\"1\" x=\"2\"/>",
        "<r>caf\xC3\xA9 \xE4\xB8\xAD</r>",
        "<r>\r\nline\rtwo\n<s k='v'/></r>",
        "<a>text",
        "<?xml version=\"1.0\" standalone=\"yes\"?><r>&#65;&#x42;</r>",
        "<!DOCTYPE r [<!ELEMENT r (c)><!ELEMENT c EMPTY>]><r><d/></r>",
    };
    const uint32_t forms[] = {0, CBLXML_OPT_NATIONAL, CBLXML_OPT_EBCDIC_DATA, CBLXML_OPT_VALIDATE,
                              CBLXML_OPT_VALIDATE_ONLY | CBLXML_OPT_NATIONAL};
    std::vector<Job> out;
    for (const std::string &text : texts) {
        for (uint32_t options : forms) {
            out.push_back({cblxml_test::in_form(text, options), options});
        }
    }
    return out;
}

TEST(ConcurrencyTest, ThreadsGetTheEventsOfASingleThreadedRun)
{
    const std::vector<Job> all = jobs();
    std::vector<std::vector<Event>> expected;
    expected.reserve(all.size());
    for (const Job &job : all)
        expected.push_back(cblxml_test::parse_events(job.document, job.options));

    std::atomic<int> mismatches{0};
    std::atomic<int> firstBad{-1};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kParsesPerThread; ++i) {
                // Threads walk the documents with different strides, so that
                // different documents are parsed at the same moment.
                const size_t index =
                    (static_cast<size_t>(t) * 7 + static_cast<size_t>(i) * (2 * t + 1)) %
                    all.size();
                const Job &job = all[index];
                if (cblxml_test::parse_events(job.document, job.options) != expected[index]) {
                    ++mismatches;
                    int none = -1;
                    firstBad.compare_exchange_strong(none, static_cast<int>(index));
                }
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(mismatches.load(), 0) << "first differing document: " << firstBad.load();
}

TEST(ConcurrencyTest, TreesAndDataMapsOnManyThreads)
{
    const std::string document = "<r a=\"1\"><c>x &amp; y</c><d/></r>";
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    // Even threads share one handle, odd ones open their own.
    void *shared = DMInit(3, 0, 0, 0, 0);
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            void *map = (t & 1) ? DMInit(1 | (t & 2), 0, 0, 0, 0) : shared;
            for (int i = 0; i < kParsesPerThread / 10; ++i) {
                const cblxml_test::TreeParse tree(document);
                if (tree.result != 0 || tree.doc == nullptr)
                    ++failures;
                const dm_item_desc desc =
                    cblxml_test::describe(DM_CLASS_NUMERIC, DM_USAGE_PACKED, 4, 7, 2, true);
                const std::string value = "-" + std::to_string(t * 1000 + i) + ".25";
                int32_t status = 0;
                const std::string item = cblxml_test::store(map, desc, value, &status);
                if (status != 0 ||
                    cblxml_test::fetch(map, desc, item, DM_FORM_UTF8, &status) != value ||
                    status != 0)
                    ++failures;
            }
            if (map != shared)
                DMTerm(map);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    DMTerm(shared);
    EXPECT_EQ(failures.load(), 0);
}

}  // namespace
