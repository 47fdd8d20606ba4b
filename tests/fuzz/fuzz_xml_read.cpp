// Fuzz target: arbitrary bytes read through OPEN, READ, START, READ NEXT and
// CLOSE of an XML-enabled file, against a small fixed set of record layouts.
// The first bytes choose the layout, the source (data item or a stream read
// in chunks of a chosen size), options and the calls; the rest is the text.
// Every call must leave a status of the known set.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "record_layout.h"

namespace {

struct Layout {
    const char *text;
    const char *key;  // the key item's path
};

const Layout kLayouts[] = {
    {R"(01 orders
          05 order occurs=2
            10 id attrs pic=X(3)
            10 item occurs=3 pic=X(4)
            10 - pic=X(4)
          05 total pic=S9(3)V9 usage=packed)",
     "order"},
    {R"(01 msg ns=urn:a
          05 - getname namelen=8 pic=X(8)
          05 - getns nslen=8 pic=X(8)
          05 - pic=X(3)
          05 - attrs anyname occurs=2
            10 - getname namelen=4 pic=X(4)
            10 - pic=X(4)
          05 - pi pic=X(10)
          05 - pic=X(5)
          05 part anyname occurs=3
            10 n pic=9(4) usage=comp5
            10 f pic=N(2))",
     "part"},
    {R"(01 r
          05 g
            10 k pic=X occurs=4
            10 id attrs pic=X(2)
          05 k pic=S9(3) sign=2)",
     "id"},
};

// A stream over the fuzzer's text, read in chunks of at most `chunk` bytes.
struct MemoryStream {
    cblxml_stream base;
    std::string text;
    size_t at;
    uint32_t chunk;
};

int32_t stream_close(cblxml_stream *stream)
{
    delete reinterpret_cast<MemoryStream *>(stream);
    return 0;
}

int64_t stream_read(cblxml_stream *stream, void *buffer, uint32_t length)
{
    auto *s = reinterpret_cast<MemoryStream *>(stream);
    const size_t n = std::min({s->text.size() - s->at, size_t{length}, size_t{s->chunk}});
    std::memcpy(buffer, s->text.data() + s->at, n);
    s->at += n;
    return static_cast<int64_t>(n);
}

const cblxml_stream_ops kOps = {stream_close, nullptr, nullptr, nullptr, nullptr, stream_read};

bool known_status(int32_t status) { return status >= -15 && status <= 2; }

void check(int32_t status)
{
    if (!known_status(status))
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    cblxml_fuzz::Input input(data, size);
    const uint8_t setup = input.byte();
    const uint8_t calls = input.byte();
    const uint8_t occurrence = input.byte();
    const uint32_t chunk = 1u + input.byte() * 37u;
    const Layout &layout = kLayouts[setup % (sizeof kLayouts / sizeof kLayouts[0])];
    const std::string text = input.rest();

    cblxml::layout::File file{layout.text};
    file.use_document(text, setup & 0x20 ? text.size() + 7 : 0);
    file.fcb().key_item = file.record(1).item(layout.key);
    if (setup & 0x40)
        file.fcb().flags |= XMLIO_VALIDATE_READ;
    check(file.open(XMLIO_INPUT));
    if ((setup & 0x10) == 0) {
        // The text comes from a stream instead of the data item; CLOSE
        // closes it.
        file.fcb().flags &= ~uint32_t{XMLIO_IN_MEMORY};
        file.fcb().stream = &(new MemoryStream{{&kOps, 0}, text, 0, chunk})->base;
    }
    check(file.call(XMLIO_OP_READ));
    for (int i = 0; i < 8; ++i) {
        const int call = (calls >> (i % 4 * 2)) & 3;
        if (call == 0) {
            file.fcb().key_occurrence = occurrence % 5;
            check(file.call(XMLIO_OP_START));
        } else {
            check(file.call(call == 3 ? XMLIO_OP_READ : XMLIO_OP_READ_NEXT));
        }
    }
    check(file.close());
    return 0;
}
