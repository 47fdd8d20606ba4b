#include "xexml/parse_session.h"

#include <cstddef>
#include <cstring>
#include <new>

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>

#include "XmlParseErr/event_record.h"
#include "XmlParseErr/exception_codes.h"
#include "XmlParseErr/pending_record.h"
#include "xexml/parser_init.h"
#include "xexml/reader_setup.h"

namespace cblxml {

namespace {

// The anchor's name: no record built by new_event or a pool has its name
// here, so a state item's record is known for an anchor by this address.
const char kAnchorName[CBLXML_EVENT_NAME_LEN] = {};

}  // namespace

ParseSession::ParseSession(uint32_t optionWord) : flags(optionWord)
{
    anchorSlot.record.event_name = const_cast<char *>(kAnchorName);
    anchorSlot.session = this;
}

ParseSession::~ParseSession()
{
    closeParser();
    freePending();
    kvt_xe_xmlparse_delete_info(outOfMemory);
}

ParseSession *ParseSession::fromAnchor(xd_parse_info *record)
{
    static_assert(offsetof(Anchor, record) == 0, "the anchor record opens the anchor");
    if (record == nullptr || record->event_name != kAnchorName)
        return nullptr;  // a record of a list that the caller built
    return reinterpret_cast<Anchor *>(record)->session;
}

std::unique_ptr<ParseSession> ParseSession::start(const void *document, uint32_t length,
                                                  uint32_t flags)
{
    std::unique_ptr<ParseSession> session(new ParseSession(flags));
    PendingRecord prepared(new_event("EXCEPTION"));
    prepared->code = kGenericExceptionCode;
    prepared->text = copy_text(nullptr, 0, 2);
    session->outOfMemory = prepared.release();
    try {
        session->open(document, length);
    } catch (const std::bad_alloc &) {
        session->stopForMemory();
    } catch (const xercesc::OutOfMemoryException &) {
        session->stopForMemory();
    } catch (...) {
        // An unexpected parser failure while starting: the events made so
        // far stay, and the parse counts as failed.
        session->outcome = 3;
        session->scanning = false;
        session->closeParser();
    }
    return session;
}

void ParseSession::open(const void *document, uint32_t length)
{
    if (!ensure_parser_initialised()) {
        outcome = 1;
        return;
    }
    if (document == nullptr)
        length = 0;
    reader = std::make_unique<ErrorRecordingReader>(&memory);
    set_features(*reader, flags);
    guard = std::make_unique<EntityGuard>(*reader, flags);  // no external fetches
    // The private copy is made first and the handler reads it too: it stays
    // in place until the handler goes, so the handler may make its UTF-16
    // copy as the call-backs need it. National documents go through the
    // data map, which makes the parser's text itself.
    const bool copyFirst = document != nullptr && (flags & CBLXML_OPT_NATIONAL) == 0;
    if (copyFirst)
        buffer.assign(static_cast<const char *>(document), length);
    handler = std::make_unique<XmlDomHandlers>(copyFirst ? buffer.data() : document, length,
                                               &listHead, nullptr, flags, copyFirst);
    guard->reportDeclarationsTo(handler.get());
    if (handler->getSawErrors()) {
        closeParser();  // the document was refused before parsing
        return;
    }
    register_handler(*reader, *handler, flags);
    // A restart needs the document as it was; a national document that the
    // data map converted without loss is its UTF-16 text already.
    originalIsText = handler->getMPH() != nullptr && handler->isNational() &&
                     size_t{handler->getDocTextLen()} * 2 == length &&
                     std::memcmp(handler->getDocText(), document, length) == 0;
    if (handler->getMPH() != nullptr && !originalIsText) {
        if (copyFirst)
            original = std::move(buffer);
        else
            original.assign(static_cast<const char *>(document), length);
    }
    if (handler->getMPH() != nullptr || !copyFirst)
        buffer = parse_buffer(*handler, document, length);
    source = std::make_unique<xercesc::MemBufInputSource>(
        reinterpret_cast<const XMLByte *>(buffer.data()), buffer.size(), "prodInfo", false,
        &memory);
    source->setCopyBufToStream(false);  // the buffer is private already
    if (handler->getMPH() != nullptr)
        source->setEncoding(u"UTF-8");  // the buffer holds the data map's UTF-8

    if (flags & (CBLXML_OPT_VALIDATE | CBLXML_OPT_VALIDATE_ONLY)) {
        // Validation ends with checks over the whole document (references
        // between identifiers): a validating parse runs to its end at once.
        reader->parse(*source);
        outcome = reader->getErrorCount() > 0 ? 3 : 0;
        closeParser();
        return;
    }
    handler->setEventPool(&pool);
    scanning = true;
    if (!step(true))
        endScan();
}

bool ParseSession::step(bool first)
{
    try {
        return first ? reader->parseFirst(*source, token) : reader->parseNext(token);
    } catch (const xercesc::XMLErrs::Codes &) {
        // A call-back ended the parse quietly where the scanner does not
        // catch it (the start of the document): the parse is over.
        return false;
    } catch (const xercesc::XMLValid::Codes &) {
        return false;
    } catch (const std::bad_alloc &) {
        stopForMemory();
        return false;
    } catch (const xercesc::OutOfMemoryException &) {
        stopForMemory();
        return false;
    } catch (...) {
        // The scanner let through an exception that the whole-document parse
        // would have turned into an error event (an entity that ends inside
        // markup, a source that cannot be opened). The events delivered so
        // far are the same on both ways; the rest is taken from a parse of
        // the whole document.
        restartWhole();
        return false;
    }
}

bool ParseSession::nextIsComplete() const
{
    // The handler appends behind the last record, so the first record is the
    // handler's newest exactly when nothing follows it.
    return sentinel.next != nullptr && (handler == nullptr || sentinel.next->next != nullptr);
}

xd_parse_info *ParseSession::next()
{
    while (scanning && !nextIsComplete()) {
        if (!step(false))
            endScan();
    }
    xd_parse_info *record = sentinel.next;
    if (record == nullptr)
        return failed ? failure() : nullptr;
    sentinel.next = record->next;
    if (record->next != nullptr)
        record->next->prev = &sentinel;
    record->next = nullptr;
    record->prev = nullptr;
    ++delivered;
    return record;
}

xd_parse_info *ParseSession::failure()
{
    failed = true;
    outcome = 3;
    closeParser();
    freePending();
    xd_parse_info *record = outOfMemory;
    outOfMemory = nullptr;
    return record;
}

void ParseSession::stopForMemory()
{
    failed = true;
    outcome = 3;
    xd_parse_info *tail = handler != nullptr ? handler->getEventTail() : nullptr;
    if (tail != nullptr && tail != &sentinel && tail->prev != nullptr) {
        tail->prev->next = nullptr;
        release_event(&pool, tail);
    }
    closeParser();
}

void ParseSession::endScan()
{
    if (!scanning)
        return;
    scanning = false;
    if (outcome == 0 && reader != nullptr && reader->getErrorCount() > 0)
        outcome = 3;
    closeParser();  // the text, the parser and its buffers go as soon as possible
}

void ParseSession::restartWhole()
{
    scanning = false;
    std::string document;
    if (handler != nullptr && originalIsText)
        document.assign(reinterpret_cast<const char *>(handler->getDocText()),
                        size_t{handler->getDocTextLen()} * 2);
    else if (handler != nullptr && handler->getMPH() != nullptr)
        document = std::move(original);
    else
        document = buffer;
    closeParser();
    freePending();

    xd_parse_info whole{};
    try {
        outcome = parse_whole_events(&whole, document.data(),
                                     static_cast<uint32_t>(document.size()), flags);
    } catch (const std::bad_alloc &) {
        EventChainDeleter()(whole.next);  // the events from here on are not whole
        failed = true;
        outcome = 3;
        return;
    }
    xd_parse_info *record = whole.next;
    for (uint64_t skipped = 0; skipped < delivered && record != nullptr; ++skipped) {
        xd_parse_info *following = record->next;
        kvt_xe_xmlparse_delete_info(record);
        record = following;
    }
    sentinel.next = record;
    if (record != nullptr)
        record->prev = &sentinel;
}

void ParseSession::closeParser()
{
    if (scanning && reader != nullptr) {
        try {
            reader->parseReset(token);
        } catch (...) {
            // The reader is deleted next whatever state it is in.
        }
        scanning = false;
    }
    // The order of the whole-document parse: the input, its buffer, the
    // handler, the guard (which takes itself off the reader), the reader.
    source.reset();
    std::string().swap(buffer);
    if (guard != nullptr)
        guard->reportDeclarationsTo(nullptr);
    handler.reset();
    guard.reset();
    reader.reset();
    std::string().swap(original);
}

void ParseSession::freePending()
{
    xd_parse_info *record = sentinel.next;
    sentinel.next = nullptr;
    while (record != nullptr) {
        xd_parse_info *following = record->next;
        release_event(&pool, record);
        record = following;
    }
}

}  // namespace cblxml
