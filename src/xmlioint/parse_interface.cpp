// The XML PARSE delivery entry: starts the parse on the first call, then
// hands out one event per call and frees it. The parse moves on as the
// program asks for events, so the document is never held as events.
#include <cstdlib>
#include <cstring>

#include <memory>
#include <new>

#include "XmlParseErr/event_record.h"
#include "XmlParseErr/exception_codes.h"
#include "XmlParseErr/pending_record.h"
#include "xexml/parse_session.h"
#include "xmlioint/text_length.h"

namespace cblxml {
namespace {

// A zero-length text still reaches the program as an address: a one-byte
// buffer holding zero.
char *empty_text()
{
    char *buffer = static_cast<char *>(std::malloc(1));
    if (buffer != nullptr)
        buffer[0] = 0;
    return buffer;
}

// START-OF-DOCUMENT hands over a copy of the whole document.
char *document_copy(const void *document, size_t size)
{
    if (size == 0 || document == nullptr)
        return empty_text();
    char *buffer = static_cast<char *>(std::malloc(size));
    if (buffer != nullptr)
        std::memcpy(buffer, document, size);
    return buffer;
}

// A parse that left nothing behind (a validating parse without content
// events reports only errors) still ends the program's parse: with
// END-OF-DOCUMENT when it succeeded, else with an exception.
xd_parse_info *closing_record(int32_t result)
{
    xd_parse_info *record = new_event(result == 0 ? "END-OF-DOCUMENT" : "EXCEPTION");
    if (result != 0) {
        record->code = kGenericExceptionCode;
        record->text = copy_text(nullptr, 0, 2);
    }
    return record;
}

// The program's items need not be aligned for their type: every value
// passes through memcpy.
template <typename T>
T load(const void *item)
{
    T value{};
    if (item != nullptr)
        std::memcpy(&value, item,
                    sizeof(T));  // NOLINT(bugprone-sizeof-expression): T may be a pointer
    return value;
}

template <typename T>
void store(void *item, T value)
{
    if (item != nullptr)
        std::memcpy(item, &value,
                    sizeof(T));  // NOLINT(bugprone-sizeof-expression): T may be a pointer
}

// Writes the record's name, text length and code into the program's items
// and returns the text buffer for the program. The record's own text is
// handed over: it holds exactly the text, and its terminator lies beyond the
// length the program is given. Throws bad_alloc when the text the program
// must receive cannot be made (nothing is then taken from the record).
char *hand_over(xd_parse_info *record, bool first, const void *document, const void *documentLength,
                uint32_t flags, void *textLength, void *code, char *eventName)
{
    if (eventName != nullptr)
        std::memcpy(eventName, record->event_name, CBLXML_EVENT_NAME_LEN);
    uint32_t size = 0;
    char *text = nullptr;
    if (first && event_is(record, "START-OF-DOCUMENT")) {
        size = load<uint32_t>(documentLength);
        text = document_copy(document, document != nullptr ? size : 0);
    } else if (event_is(record, "END-OF-DOCUMENT") && record->code != -1) {
        size = 0;
    } else {
        size = event_text_length(record, flags);
        text = record->text != nullptr ? record->text : empty_text();
        if (text == nullptr)
            throw std::bad_alloc();
        record->text = nullptr;
    }
    if (first && text == nullptr && event_is(record, "START-OF-DOCUMENT"))
        throw std::bad_alloc();
    store(textLength, size);
    if (code != nullptr)
        kvt_put4ws(code, static_cast<uint32_t>(record->code));
    return text;
}

// The exception event of an allocation failure, when not even its record
// could be made: the name and code are written, the text is empty and
// absent, and the state item is null (the parse is over).
void deliver_out_of_memory(void *state, void *textHolder, void *textLength, void *code,
                           char *eventName)
{
    if (eventName != nullptr) {
        std::memset(eventName, ' ', CBLXML_EVENT_NAME_LEN);
        std::memcpy(eventName, "EXCEPTION", 9);
    }
    store<void *>(textHolder, nullptr);
    store<uint32_t>(textLength, 0);
    if (code != nullptr)
        kvt_put4ws(code, static_cast<uint32_t>(kGenericExceptionCode));
    store<xd_parse_info *>(state, nullptr);
}

void deliver(void *state, void *textHolder, void *textLength, void *code, char *eventName,
             const void *document, const void *documentLength, uint32_t flags)
{
    xd_parse_info *head = load<xd_parse_info *>(state);
    void *previousText = load<void *>(textHolder);

    if (code == nullptr && eventName == nullptr) {
        // The clean-up call: the caller's last buffer stays the caller's.
        // A session goes with its records; a list the caller built is freed.
        ParseSession *session = ParseSession::fromAnchor(head);
        if (session == nullptr)
            EventChainDeleter()(head);
        delete session;
        store<xd_parse_info *>(state, nullptr);
        return;
    }

    const bool first = head == nullptr;
    std::unique_ptr<ParseSession> session;
    if (first) {
        // An event list cannot hold a tree: the tree-mode bit of a program's
        // option word is not passed on, so the parse always produces events.
        try {
            session = ParseSession::start(document, load<uint32_t>(documentLength),
                                          flags & ~static_cast<uint32_t>(CBLXML_OPT_TREE));
        } catch (const std::bad_alloc &) {
            // Not even the parse's own exception event could be made: the
            // program still learns of the failure, with an empty text (no
            // buffer to hand over) and the parse ended.
            deliver_out_of_memory(state, textHolder, textLength, code, eventName);
            return;
        }
    } else {
        session.reset(ParseSession::fromAnchor(head));
        // The only place where a buffer handed to the caller is freed (or
        // kept by the session for the texts to come).
        if (session != nullptr)
            session->takeBack(previousText);
        else
            std::free(previousText);
        if (previousText != nullptr)
            store<void *>(textHolder, nullptr);
    }

    char *text = nullptr;
    if (session == nullptr) {
        // A list of records built by the caller (through kvt_xe_xmlparse):
        // delivered and freed one record per call.
        text = hand_over(head, first, document, documentLength, flags, textLength, code, eventName);
        xd_parse_info *following = head->next;
        kvt_xe_xmlparse_delete_info(head);
        if (following != nullptr)
            following->prev = nullptr;
        store(state, following);
    } else {
        xd_parse_info *record = nullptr;
        try {
            record = session->next();
            if (record == nullptr)
                record = closing_record(first ? session->result() : 0);
            text = hand_over(record, first, document, documentLength, flags, textLength, code,
                             eventName);
        } catch (const std::bad_alloc &) {
            // From here on the program receives the exception event made when
            // the parse started, and then the parse is over.
            if (record != nullptr)
                session->release(record);
            record = session->failure();
            if (record == nullptr) {
                store<xd_parse_info *>(state, nullptr);
                throw;
            }
            text = hand_over(record, false, document, documentLength, flags, textLength, code,
                             eventName);
        } catch (...) {
            // The session goes with the failure: the state item must not
            // keep pointing at it.
            store<xd_parse_info *>(state, nullptr);
            throw;
        }
        session->release(record);
        if (textHolder != nullptr)
            session->lend(text);
        // After the last event the state item is null again: the next call
        // starts a new parse.
        if (session->exhausted()) {
            session.reset();
            store<xd_parse_info *>(state, nullptr);
        } else {
            store(state, session.release()->anchor());
        }
    }
    if (textHolder != nullptr)
        store<void *>(textHolder, text);
    else
        std::free(text);
}

}  // namespace
}  // namespace cblxml

extern "C" void CBL_XMLPARSE_INTERFACE(xd_parse_info **state, void **document, void **text,
                                       uint32_t *document_length, uint32_t *text_length, void *code,
                                       char *event_name, uint32_t *flags)
{
    try {
        cblxml::deliver(state, text, text_length, code, event_name, cblxml::load<void *>(document),
                        document_length, cblxml::load<uint32_t>(flags));
    } catch (...) {
        // Nothing crosses into the program; an allocation failure while
        // delivering leaves the list as it was.
    }
}

extern "C" void kvt_xe_xmlparse_delete_info(xd_parse_info *record)
{
    if (record == nullptr)
        return;
    std::free(record->event_name);
    std::free(record->text);
    std::free(record);
}

extern "C" void kvt_put4ws(void *destination, uint32_t value)
{
    if (destination == nullptr)
        return;
    auto *bytes = static_cast<unsigned char *>(destination);
    bytes[0] = static_cast<unsigned char>(value >> 24);
    bytes[1] = static_cast<unsigned char>(value >> 16);
    bytes[2] = static_cast<unsigned char>(value >> 8);
    bytes[3] = static_cast<unsigned char>(value);
}
