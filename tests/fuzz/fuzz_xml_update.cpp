// Fuzz target: random sequences of file operations (every opcode, open
// modes, START occurrences, position modes and record bytes) against one
// fixed record layout on a document held in a data item. Every call must
// leave a status of the known set, and nothing may leak or crash.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_input.h"
#include "record_layout.h"

namespace {

const char *kLayout = R"(01 orders
  05 order occurs=4
    10 id attrs pic=X(3)
    10 line occurs=2
      15 sku pic=X(3)
    10 - pic=X(4)
  05 - pi pic=X(8)
  05 total pic=S9(3) usage=packed)";

const char *kDocument = R"(<orders><?fmt a?><order id="1"><line><sku>A</sku></line>t</order>)"
                        R"(<order id="2"/><order id="3"><line><sku>B</sku></line></order>)"
                        R"(<total>7</total></orders>)";

const char *kKeys[] = {"order", "line", "sku", "id", "total"};

void check(int32_t status)
{
    // -15 to -1, 0, READ's record number 1 and write-document's counts.
    if (status < -15)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    cblxml_fuzz::Input input(data, size);
    const uint8_t setup = input.byte();
    cblxml::layout::File file{kLayout};
    // A data item with room for what write-document produces.
    file.use_document(setup & 1 ? kDocument : "", 2048);
    if (setup & 2)
        file.fcb().flags |= XMLIO_COMPACT;
    if (setup & 4)
        file.fcb().flags |= XMLIO_SCHEMA | XMLIO_NO_XSI;
    check(file.open(static_cast<uint8_t>(1 + (setup >> 4) % 3)));
    for (int calls = 0; calls < 64; ++calls) {
        const uint8_t op = input.byte();
        if (op == 0 && calls > 0)
            break;
        const uint8_t arg = input.byte();
        xmlio_fcb &fcb = file.fcb();
        fcb.key_item = file.record(1).item(kKeys[arg % 5]);
        fcb.key_occurrence = arg >> 5;
        if (fcb.doc != nullptr && (arg & 0x10))
            fcb.doc->position_mode = static_cast<uint32_t>(static_cast<int8_t>(arg) >> 6);
        const std::string bytes = input.block(64);
        auto &area = file.record(1).area();
        for (size_t i = 0; i < bytes.size() && i < area.size(); ++i)
            area[i] = static_cast<unsigned char>(bytes[i]);
        fcb.arg2_len = static_cast<uint32_t>(bytes.size());
        const uint8_t opcode = op % 15;
        if (opcode == XMLIO_OP_OPEN)
            check(file.open(static_cast<uint8_t>(arg % 5)));
        else
            check(file.call(opcode, bytes.data()));
    }
    check(file.close());
    return 0;
}
