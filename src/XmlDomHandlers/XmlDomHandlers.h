// The handler object that the SAX2 reader calls back during one parse. The
// constructor detects the document's encoding, may refuse it, and keeps a
// UTF-16 copy of the document that the call-backs read to recover what the
// parser does not report (the XML declaration, the raw text of attribute
// values and references). Each call-back is passed on to the sink of the
// parse's mode: EventSink appends XML PARSE event records behind the
// caller's sentinel, TreeSink builds document-tree nodes.
#ifndef CBLXML_XMLDOMHANDLERS_XMLDOMHANDLERS_H
#define CBLXML_XMLDOMHANDLERS_XMLDOMHANDLERS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/TransService.hpp>

#include "XmlDomHandlers/line_index.h"
#include "XmlParseErr/xml_perr_op_table.h"
#include "cblxml.h"

namespace cblxml {

class EventPool;
class EventSink;
class HandlerSink;

// The code and domain of the error the parser is reporting, recorded by the
// reader before it calls the handler's error call-backs.
struct ParserError {
    unsigned code = 0;
    const XMLCh *domain = nullptr;
};

class XmlDomHandlers : public xercesc::DefaultHandler, public TextConverter {
public:
    // out: event mode, xd_parse_info ** holding the sentinel; tree mode,
    // xd_dom_node_t ** that receives the document node (may be null).
    // errorRecord: tree mode, the caller's error record (cleared here).
    // documentStays: the document's bytes stay as they are, at that
    // address, for as long as the handler lives; an event-mode UTF-8
    // document then has its UTF-16 copy made as the call-backs first need
    // it rather than all at once.
    XmlDomHandlers(const void *document, uint32_t length, void *out,
                   xd_dom_parse_err_t **errorRecord, uint32_t flags, bool documentStays = false);
    ~XmlDomHandlers() override;
    XmlDomHandlers(const XmlDomHandlers &) = delete;
    XmlDomHandlers &operator=(const XmlDomHandlers &) = delete;

    bool getSawErrors() const { return sawErrors; }
    dm_item_desc *getIdesc() { return &idesc; }
    void *getMPH() const { return mapHandle; }
    void setIdescLen(int32_t length) { idesc.length = static_cast<uint32_t>(length); }
    xercesc::XMLTranscoder *getTranscoder() const { return transcoder; }
    // The document as the data map converted it (UTF-8), when the handler
    // holds a data-map handle: what the parser reads. Handed over once.
    std::string takeMappedText() { return std::move(mappedText); }

    // Where the reader records the error it is about to report.
    void setErrorSource(const ParserError *source) { parserError = source; }
    const ParserError *getErrorSource() const { return parserError; }

    // Event mode: records of a progressive parse come from `pool` (null:
    // every record is built by new_event, as the list handed to
    // kvt_xe_xmlparse's caller must be). Tree mode: ignored.
    void setEventPool(EventPool *pool);
    // Event mode: the last record of the list (null in tree mode).
    xd_parse_info *getEventTail() const;

    // Converts `count` UTF-16 units into the program's representation,
    // writing into `out` (zero-filled by the caller, at least
    // cobolTextRoom(count) bytes). The length is read back from the
    // terminator. Unconvertible characters are replaced; running out of
    // memory throws std::bad_alloc (`out` then holds a part of the text at
    // most).
    void WCharToCOBOL1(xercesc::XMLTranscoder *t, const XMLCh *source, char *out, int32_t count,
                       int32_t national);

    // Bytes a caller must zero-fill for WCharToCOBOL1 of `count` units,
    // terminator included.
    static size_t cobolTextRoom(size_t count);

    // A new zero-terminated buffer (malloc) holding `count` units of source
    // converted by WCharToCOBOL1 with the handler's transcoder. Owned by the
    // caller (normally handed to an event record).
    char *cobolText(const XMLCh *source, size_t count, int32_t national) override;
    // The same text in the handler's reused conversion area, followed by a
    // zero byte (two for national text): valid until the next conversion.
    std::string_view cobolView(const XMLCh *source, size_t count, int32_t national);

    // True when conversion writes ASCII characters as themselves (UTF-8
    // without a data map).
    bool keepsAscii() const { return asciiTranscoder && mapHandle == nullptr; }

    // `count` units copied as they are and a zero unit, in a block as
    // cobolText makes them (the text of a national-character event).
    char *unitText(const XMLCh *source, size_t count);

    // The UTF-16 copy of the document and its length in units (the copy is
    // completed first when it is made as it is read).
    const XMLCh *getDocText() const
    {
        if (lazyBytes != nullptr)
            convertUpTo(SIZE_MAX);
        return docText;
    }
    uint32_t getDocTextLen() const
    {
        if (lazyBytes != nullptr)
            convertUpTo(SIZE_MAX);
        return docTextLen;
    }
    // For call-backs that read only a prefix of the copy: makes at least its
    // first `units` units (all of them when it is shorter) and returns how
    // many are made, which is the length once the copy is complete. The
    // units made are read at getDocTextStart().
    size_t prepareDocText(size_t units) const
    {
        if (lazyBytes != nullptr && units > readyUnits)
            convertUpTo(units);
        return lazyBytes != nullptr ? readyUnits : docTextLen;
    }
    const XMLCh *getDocTextStart() const { return docText; }
    bool docTextComplete() const { return lazyBytes == nullptr; }
    // True when the copy is empty (known without completing it).
    bool docTextEmpty() const { return lazyBytes == nullptr && docTextLen == 0; }
    bool isNational() const { return national; }
    const xercesc::Locator *getLocator() const { return locator; }
    // An error call-back recorded an exception.
    void markErrors() { sawErrors = true; }

    // A general entity that the document declares (told by whoever watches
    // the declarations), and whether one of that name was declared. A
    // reference to any other name, the predefined ones aside, is one the
    // parser skipped: its declaration would be in the DTD subset that is
    // not read.
    void entityDeclared(const XMLCh *name);
    bool isDeclaredEntity(std::u16string_view name) const;

    // The character offset in docText of a parser line and column: start of
    // the line + column - 1.
    int64_t locatorOffset(uint64_t line, uint64_t column);
    // The locator's offset within the text (0 without a locator or text).
    int64_t clampedPosition();
    // The offset of the first "&" of the document text, or a value not
    // below its length when it holds none: text before it holds no
    // reference, so the call-backs need not look for one there. Found on
    // first use.
    int64_t firstAmpersand();
    // True when the text holds no "&" (so none when it is empty); known
    // without completing a copy made as it is read. Once the first "&" is
    // found, either there is none (INT64_MAX) or the copy is complete.
    bool ampersandFree()
    {
        const int64_t first = ampersandAt >= 0 ? ampersandAt : firstAmpersand();
        return first >= static_cast<int64_t>(docTextLen);
    }

    // SAX2 content call-backs.
    void setDocumentLocator(const xercesc::Locator *const locator) override;
    void startDocument() override;
    void endDocument() override;
    void startElement(const XMLCh *const uri, const XMLCh *const localname,
                      const XMLCh *const qname, const xercesc::Attributes &attrs) override;
    void endElement(const XMLCh *const uri, const XMLCh *const localname,
                    const XMLCh *const qname) override;
    void characters(const XMLCh *const chars, const XMLSize_t length) override;
    void processingInstruction(const XMLCh *const target, const XMLCh *const data) override;

    // Lexical call-backs.
    void startDTD(const XMLCh *const name, const XMLCh *const publicId,
                  const XMLCh *const systemId) override;
    void endDTD() override;
    void startEntity(const XMLCh *const name) override;
    void endEntity(const XMLCh *const name) override;
    void comment(const XMLCh *const chars, const XMLSize_t length) override;
    void startCDATA() override;
    void endCDATA() override;

    // Error call-backs.
    void warning(const xercesc::SAXParseException &exc) override;
    void error(const xercesc::SAXParseException &exc) override;
    void fatalError(const xercesc::SAXParseException &exc) override;
    void resetErrors() override;

private:
    void constructEventMode(const unsigned char *doc, uint32_t length, uint32_t flags);
    void constructTreeMode(const unsigned char *doc, uint32_t length);
    // Event mode: the encoding the leading bytes give, or a refusal.
    std::u16string detectEncoding(const unsigned char *doc, uint32_t length, uint32_t flags);
    void convertThroughDataMap(const unsigned char *doc, uint32_t length, uint32_t flags);
    // Reads the XML declaration's encoding; true when it replaced the transcoder.
    bool examineDeclaration(const XMLCh *work, uint32_t workLen, const std::u16string &detected,
                            const unsigned char *doc, uint32_t length, uint32_t flags);
    void refuse(int32_t code, const unsigned char *doc, uint32_t length);
    // The UTF-16 conversion routine: a new buffer of length + 1 units;
    // length becomes the number of units made.
    XMLCh *toUtf16(const unsigned char *source, uint32_t &length);
    // A UTF-8 document whose bytes stay: the declaration is examined from
    // its first bytes and the copy is made later, as it is read. False
    // when the document does not allow it (nothing is then changed).
    bool deferUtf8Text(const unsigned char *doc, uint32_t length, const std::u16string &detected,
                       uint32_t flags);
    // Converts the deferred document's bytes until `units` units are made
    // (or all of them), in steps that end between two characters.
    void convertUpTo(size_t units) const;

    bool sawErrors = false;
    bool national = false;
    bool bytesStay = false;  // see the constructor's documentStays
    XMLCh *docText = nullptr;
    mutable uint32_t docTextLen = 0;  // 0 until a deferred copy is complete
    // A deferred copy: the bytes still to convert (null once all are made),
    // and how far the conversion has come in bytes and in units.
    mutable const unsigned char *lazyBytes = nullptr;
    uint32_t lazyLength = 0;
    mutable uint32_t readyBytes = 0;
    mutable uint32_t readyUnits = 0;
    xercesc::XMLTranscoder *transcoder = nullptr;
    void *mapHandle = nullptr;
    dm_item_desc idesc{};
    std::string mappedText;  // see takeMappedText

    // Fills asciiBytes when the transcoder is a single-byte EBCDIC page.
    bool buildAsciiTable();
    // A block for a text of `bytes` bytes: from the event pool when there is
    // one, else from malloc. Throws std::bad_alloc.
    char *textBlock(size_t bytes);
    // Gives back a block from textBlock that did not become a text.
    void dropText(char *text);
    EventPool *textPool = nullptr;

    std::unique_ptr<HandlerSink> sink;  // the mode's call-backs
    EventSink *events = nullptr;        // the sink in event mode, else null
    bool asciiTranscoder = false;       // the transcoder writes ASCII as it is (UTF-8)
    // A single-byte page's bytes for the ASCII characters, made on first use
    // from the transcoder (-1 not yet asked, 0 not such a page, 1 made).
    int8_t asciiTable = -1;
    char asciiBytes[0x80] = {};
    const xercesc::Locator *locator = nullptr;
    const ParserError *parserError = nullptr;
    LineIndex lines;           // extended as the parse moves on
    int64_t ampersandAt = -1;  // firstAmpersand, -1 until asked
    // National text ends with a zero unit, other text with a zero byte.
    bool nationalText(int32_t nationalFlag) const;
    // The text converted by WCharToCOBOL1 into the scratch area, up to its
    // terminator.
    std::string_view convertedView(const XMLCh *source, size_t count, int32_t nationalFlag);

    std::vector<char> scratch;                            // conversion area reused by cobolText
    std::unordered_set<std::u16string> declaredEntities;  // general entities
    // The parser reads UTF-8 that starts with a byte-order mark: it counts no
    // column for the mark (it does count a UTF-16 mark).
    bool bomUncounted = false;
};

}  // namespace cblxml

#endif
