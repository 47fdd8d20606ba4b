#include "XmlParseErr/perr_handlers.h"

#include <cstdlib>
#include <type_traits>

#include "XmlParseErr/event_record.h"
#include "XmlParseErr/pending_record.h"

namespace cblxml {

static_assert(std::is_same<XMLCh, char16_t>::value, "the handlers read XMLCh text as UTF-16 units");

namespace {

int64_t clamp_count(int64_t count, uint32_t docLen)
{
    if (count < 0)
        return 0;
    return count > static_cast<int64_t>(docLen) ? static_cast<int64_t>(docLen) : count;
}

}  // namespace

int64_t clamp_position(int32_t position, uint32_t docLen)
{
    // The scans below never look before offset 0 or past the text, whatever
    // position the parser's line and column gave.
    return clamp_count(position, docLen);
}

int64_t end_of_tag_before(DocView doc, int64_t position)
{
    const int64_t tagStart = last_at_or_before(doc, position - 1, u'<');
    if (tagStart == kNotFound)
        return kNotFound;
    return last_at_or_before(doc, tagStart - 1, u'>');
}

void finish_exception(xd_parse_info *record, DocView doc, int64_t count, int32_t code,
                      int32_t national, TextConverter &convert)
{
    char *text =
        convert.cobolText(doc.text, static_cast<size_t>(clamp_count(count, doc.length)), national);
    std::free(record->text);
    record->text = text;
    record->code = code;
    record->next = nullptr;
}

void EntityNotFound(xd_parse_info *record, const XMLCh *docText, uint32_t docLen, int32_t position,
                    int32_t national, TextConverter &convert)
{
    const DocView doc{docText, docLen};
    const int64_t at = clamp_position(position, docLen);
    const int64_t semicolon = at - 1;  // the parser stops just past the reference's ";"

    struct Placement {
        bool (*holds)(DocView doc, int64_t i);
        const char *eventName;
        int32_t exceptionCode;
    };
    static constexpr Placement kPlacements[] = {
        {in_content, "UNKNOWN-REFERENCE-IN-CONTENT", kUnknownEntityInContentCode},
        {in_attribute_value, "UNKNOWN-REFERENCE-IN-ATTRIBUTE", kUnknownEntityInAttributeCode},
    };
    const Placement *placement = nullptr;
    for (const Placement &candidate : kPlacements) {
        if (candidate.holds(doc, semicolon)) {
            placement = &candidate;
            break;
        }
    }
    if (placement == nullptr) {
        // Neither in content nor in an attribute value: the text stops just
        // before the position.
        finish_exception(record, doc, at, kGenericExceptionCode, national, convert);
        return;
    }

    // The exception after a reference event carries an empty text.
    PendingRecord exception(new_event("EXCEPTION"));
    exception->text = convert.cobolText(docText, 0, national);
    exception->code = placement->exceptionCode;

    // The entity's name: the units between the "&" and the ";".
    const int64_t ampersand = last_at_or_before(doc, semicolon, u'&');
    const int64_t nameStart = ampersand == kNotFound ? semicolon : ampersand + 1;
    char *name = convert.cobolText(docText + nameStart, static_cast<size_t>(semicolon - nameStart),
                                   national);

    std::free(record->text);
    record->text = name;
    record->code = 0;
    rename_event(record, placement->eventName);
    exception->prev = record;
    record->next = exception.release();
}

}  // namespace cblxml
