// Construction, destruction, the shared plumbing of the handler object and
// the call-backs, each passed on to the sink of the parse's mode.
#include "XmlDomHandlers/XmlDomHandlers.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <xercesc/util/XMLString.hpp>

#include "XmlDomHandlers/event_pool.h"
#include "XmlDomHandlers/event_sink.h"
#include "XmlDomHandlers/text_units.h"
#include "XmlDomHandlers/tree_sink.h"

namespace cblxml {

XmlDomHandlers::XmlDomHandlers(const void *document, uint32_t length, void *out,
                               xd_dom_parse_err_t **errorRecordOut, uint32_t flags,
                               bool documentStays)
    : bytesStay(documentStays)
{
    idesc.class_code = DM_CLASS_ALPHANUMERIC;
    idesc.usage_code = DM_USAGE_DISPLAY;
    const auto *doc = static_cast<const unsigned char *>(document);
    // A missing document is parsed as an empty one rather than read through.
    if (doc == nullptr)
        length = 0;
    try {
        if (flags & CBLXML_OPT_TREE) {
            sink = std::make_unique<TreeSink>(*this, out, errorRecordOut);
            constructTreeMode(doc, length);
        } else {
            xd_parse_info *tail = out != nullptr ? *static_cast<xd_parse_info **>(out) : nullptr;
            auto eventSink = std::make_unique<EventSink>(*this, tail);
            events = eventSink.get();
            sink = std::move(eventSink);
            constructEventMode(doc, length, flags);
        }
        asciiTranscoder = transcoder != nullptr &&
                          xercesc::XMLString::equals(transcoder->getEncodingName(), u"UTF-8");
    } catch (...) {
        // The destructor does not run for a constructor that throws.
        std::free(docText);
        delete transcoder;
        if (mapHandle != nullptr)
            DMTerm(mapHandle);
        throw;
    }
}

XmlDomHandlers::~XmlDomHandlers()
{
    std::free(docText);
    delete transcoder;
    if (mapHandle != nullptr)
        DMTerm(mapHandle);
}

void XmlDomHandlers::setEventPool(EventPool *pool)
{
    if (events != nullptr)
        events->setEventPool(pool);
    textPool = events != nullptr ? pool : nullptr;
}

char *XmlDomHandlers::unitText(const XMLCh *source, size_t count)
{
    char *text = textBlock(count * 2 + 2);
    if (count > 0)
        std::memcpy(text, source, count * 2);
    text[count * 2] = text[count * 2 + 1] = 0;
    return text;
}

void XmlDomHandlers::dropText(char *text)
{
    if (textPool != nullptr)
        textPool->keepText(text);
    else
        std::free(text);
}

char *XmlDomHandlers::textBlock(size_t bytes)
{
    if (textPool != nullptr)
        return textPool->textBlock(bytes);
    auto *text = static_cast<char *>(std::malloc(bytes));
    if (text == nullptr)
        throw std::bad_alloc();
    return text;
}

xd_parse_info *XmlDomHandlers::getEventTail() const
{
    return events != nullptr ? events->tail() : nullptr;
}

int64_t XmlDomHandlers::locatorOffset(uint64_t line, uint64_t column)
{
    if (!lines.built()) {
        const XMLCh *text = getDocText();
        lines.reset(text, docTextLen, bomUncounted ? 1u : 0u);
    }
    int64_t col = column > 0 ? static_cast<int64_t>(column) : 1;
    return static_cast<int64_t>(lines.lineStart(line)) + col - 1;
}

int64_t XmlDomHandlers::clampedPosition()
{
    if (locator == nullptr || getDocTextLen() == 0)
        return 0;
    int64_t pos = locatorOffset(locator->getLineNumber(), locator->getColumnNumber());
    const auto last = static_cast<int64_t>(getDocTextLen()) - 1;
    return pos > last ? last : pos < 0 ? 0 : pos;
}

int64_t XmlDomHandlers::firstAmpersand()
{
    // A deferred copy is not completed for this: an "&" unit comes only
    // from an "&" byte, so without one no unit is an "&".
    if (ampersandAt < 0 && lazyBytes != nullptr &&
        std::memchr(lazyBytes, '&', lazyLength) == nullptr)
        ampersandAt = INT64_MAX;
    if (ampersandAt < 0) {
        const XMLCh *text = getDocText();
        ampersandAt = static_cast<int64_t>(find_either(text, 0, docTextLen, u'&', u'&'));
    }
    return ampersandAt;
}

void XmlDomHandlers::entityDeclared(const XMLCh *name)
{
    if (name != nullptr && name[0] != u'%')
        declaredEntities.emplace(name);
}

bool XmlDomHandlers::isDeclaredEntity(std::u16string_view name) const
{
    return declaredEntities.count(std::u16string(name)) != 0;
}

void XmlDomHandlers::setDocumentLocator(const xercesc::Locator *const newLocator)
{
    locator = newLocator;
}

void XmlDomHandlers::startDocument() { sink->startDocument(); }

void XmlDomHandlers::endDocument() { sink->endDocument(); }

void XmlDomHandlers::startElement(const XMLCh *const uri, const XMLCh *const localname,
                                  const XMLCh *const qname, const xercesc::Attributes &attrs)
{
    sink->startElement(uri, localname, qname, attrs);
}

void XmlDomHandlers::endElement(const XMLCh *const, const XMLCh *const, const XMLCh *const qname)
{
    sink->endElement(qname);
}

void XmlDomHandlers::characters(const XMLCh *const chars, const XMLSize_t length)
{
    if (chars == nullptr)
        return;
    // The text is taken up to its terminator, which the parser always writes
    // at `length`; the length bounds the read should it ever not.
    const size_t units = find_either(chars, 0, length, 0, 0);
    // An empty call (an empty CDATA section) carries no text and no event.
    if (units > 0)
        sink->characters(chars, units);
}

void XmlDomHandlers::processingInstruction(const XMLCh *const target, const XMLCh *const data)
{
    sink->processingInstruction(target, data);
}

void XmlDomHandlers::startDTD(const XMLCh *const, const XMLCh *const publicId,
                              const XMLCh *const systemId)
{
    sink->startDTD(publicId, systemId);
}

void XmlDomHandlers::endDTD() { sink->endDTD(); }

void XmlDomHandlers::startEntity(const XMLCh *const) { sink->startEntity(); }

void XmlDomHandlers::endEntity(const XMLCh *const) { sink->endEntity(); }

void XmlDomHandlers::comment(const XMLCh *const chars, const XMLSize_t length)
{
    sink->comment(chars, length);
}

void XmlDomHandlers::startCDATA() { sink->startCDATA(); }

void XmlDomHandlers::endCDATA() { sink->endCDATA(); }

void XmlDomHandlers::warning(const xercesc::SAXParseException &exc) { sink->warning(exc); }

void XmlDomHandlers::error(const xercesc::SAXParseException &exc) { sink->error(exc); }

void XmlDomHandlers::fatalError(const xercesc::SAXParseException &exc) { sink->fatalError(exc); }

void XmlDomHandlers::resetErrors() { sawErrors = false; }

}  // namespace cblxml
