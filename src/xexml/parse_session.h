// One XML PARSE in progress. The document is parsed as the program asks for
// events, not all at once: the session holds the reader, the handler and the
// private parse buffer between calls, and keeps only the events that the
// parser has reported and the program has not yet received. The program's
// state item points at the session's anchor record while the parse runs.
#ifndef CBLXML_XEXML_PARSE_SESSION_H
#define CBLXML_XEXML_PARSE_SESSION_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/event_pool.h"
#include "xexml/entity_guard.h"
#include "xexml/error_reader.h"
#include "xexml/parse_memory.h"

namespace cblxml {

class ParseSession {
public:
    // Starts the parse of the document (the first call of an XML PARSE):
    // the handler examines the document, the parser reads the prolog.
    static std::unique_ptr<ParseSession> start(const void *document, uint32_t length,
                                               uint32_t flags);
    ~ParseSession();
    ParseSession(const ParseSession &) = delete;
    ParseSession &operator=(const ParseSession &) = delete;

    // The record that stands for the session in the program's state item,
    // and the session that a state item's record stands for (null for a
    // record of a list that the caller built with kvt_xe_xmlparse).
    xd_parse_info *anchor() { return &anchorSlot.record; }
    static ParseSession *fromAnchor(xd_parse_info *record);

    // The next event, taken off the list, or null when there is none. The
    // parse is moved on first until the next event is complete: the
    // call-backs may still change the latest event (the document type
    // declaration's text) or read it (the classification of an error), so
    // that one is handed out only when another follows it or the parse is
    // over.
    xd_parse_info *next();
    // Frees an event that next() handed out.
    void release(xd_parse_info *record) { release_event(&pool, record); }
    // The text handed to the program by this call (null for none). It is
    // the program's until its next call, and stays the program's if the
    // parse is abandoned: the session never frees it on its own.
    void lend(char *text) { lent = text; }
    // The program's previous text, passed back on its next call: when it is
    // the one lent, its block is kept for later texts; any other is freed.
    void takeBack(void *text)
    {
        if (text != nullptr && text == lent)
            pool.keepText(lent);
        else
            std::free(text);
        lent = nullptr;
    }
    // True when next() has nothing more to give.
    bool exhausted() const
    {
        return !scanning && sentinel.next == nullptr && (!failed || outOfMemory == nullptr);
    }
    // Ends the parse for want of memory: the events not yet delivered go,
    // and the EXCEPTION 201 made when the parse started is returned (to be
    // freed by release); null when it was handed out already. Allocates
    // nothing.
    xd_parse_info *failure();
    // What the whole-document parse would have returned: 0 success, 1 the
    // parser could not be initialised, 3 a failed parse.
    int32_t result() const { return outcome; }

private:
    struct Anchor {
        xd_parse_info record;  // first: the record's address is the anchor's
        ParseSession *session;
    };

    explicit ParseSession(uint32_t optionWord);
    void open(const void *document, uint32_t length);
    bool nextIsComplete() const;
    // Runs one step of the parser; false when the parse is over.
    bool step(bool first);
    void endScan();
    void restartWhole();
    void closeParser();
    void freePending();
    // Out of memory during a step: the parse stops, the latest event goes
    // (the call-backs may not have finished it), those before it stay.
    void stopForMemory();

    Anchor anchorSlot{};
    const uint32_t flags;
    xd_parse_info sentinel{};  // heads the list the handler appends to
    // The event that tells of an allocation failure: made first, so that
    // delivering it needs no memory.
    xd_parse_info *outOfMemory = nullptr;
    bool failed = false;
    xd_parse_info *listHead = &sentinel;
    EventPool pool;
    ParseMemory memory;  // before the reader: it outlives the parser's objects
    std::unique_ptr<ErrorRecordingReader> reader;
    std::unique_ptr<EntityGuard> guard;
    std::unique_ptr<XmlDomHandlers> handler;
    std::string buffer;           // what the parser reads
    std::string original;         // the document itself, when the buffer is a conversion
    bool originalIsText = false;  // ... unless the handler's UTF-16 text is the document
    std::unique_ptr<xercesc::MemBufInputSource> source;
    xercesc::XMLPScanToken token;
    bool scanning = false;
    int32_t outcome = 0;
    uint64_t delivered = 0;
    char *lent = nullptr;  // the program's current text, when it is a block of ours
};

}  // namespace cblxml

#endif
