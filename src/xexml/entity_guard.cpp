#include "xexml/entity_guard.h"

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "platform/platform.h"

using xercesc::XMLResourceIdentifier;
using xercesc::XMLUni;

namespace cblxml {
namespace {

// What the parser reports when the guard refuses a resource or an entity:
// the message of an external entity that could not be opened, the name of
// the refused resource or entity in it. The scanner turns it into a fatal
// error at the point of the reference or declaration.
class RefusedEntity : public xercesc::XMLException {
public:
    explicit RefusedEntity(const XMLCh *name) : xercesc::XMLException(__FILE__, __LINE__)
    {
        loadExceptText(xercesc::XMLExcepts::Gen_CouldNotOpenExtEntity,
                       name != nullptr ? name : u"");
    }
    const XMLCh *getType() const override { return u"RefusedEntity"; }
};

std::string utf8(const XMLCh *text)
{
    if (text == nullptr)
        return {};
    return platform::utf16_to_utf8(text, xercesc::XMLString::stringLen(text));
}

}  // namespace

EntityGuard::EntityGuard(xercesc::SAX2XMLReaderImpl &guarded, uint32_t flags)
    : reader(guarded), validating((flags & (CBLXML_OPT_VALIDATE | CBLXML_OPT_VALIDATE_ONLY)) != 0)
{
    security.setEntityExpansionLimit(kEntityExpansionLimit);
    // Nothing is read unless this guard hands it over.
    reader.setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    reader.setFeature(XMLUni::fgXercesLoadExternalDTD, validating);
    reader.setFeature(XMLUni::fgXercesLoadSchema, validating);
    reader.setProperty(XMLUni::fgXercesSecurityManager, &security);
    reader.setXMLEntityResolver(this);
    reader.setDeclarationHandler(this);
}

EntityGuard::~EntityGuard()
{
    reader.setXMLEntityResolver(nullptr);
    reader.setDeclarationHandler(nullptr);
    try {
        reader.setProperty(XMLUni::fgXercesSecurityManager, nullptr);
    } catch (...) {
        // Only refused while a parse is in progress, which is over here.
    }
}

xercesc::InputSource *EntityGuard::resolveEntity(XMLResourceIdentifier *resource)
{
    if (resource == nullptr)
        refuse(nullptr);
    const XMLCh *systemId = resource->getSystemId();
    const auto type = resource->getResourceIdentifierType();
    if (type == XMLResourceIdentifier::ExternalEntity && systemId != nullptr &&
        generalEntities.count(systemId) != 0) {
        // Its text would become the document's content.
        refuse(systemId);
    }
    switch (type) {
    case XMLResourceIdentifier::ExternalEntity:
        // The external DTD subset or a parameter entity: declarations only.
        // A parser that does not validate may go without them.
        return validating ? grammarSource(*resource) : emptySource(systemId);
    case XMLResourceIdentifier::SchemaGrammar:
    case XMLResourceIdentifier::SchemaImport:
    case XMLResourceIdentifier::SchemaInclude:
    case XMLResourceIdentifier::SchemaRedefine:
        if (validating)
            return grammarSource(*resource);
        break;
    default:
        break;
    }
    refuse(systemId);
}

xercesc::InputSource *EntityGuard::emptySource(const XMLCh *systemId)
{
    static const XMLByte nothing[1] = {0};
    return new xercesc::MemBufInputSource(nothing, 0, systemId != nullptr ? systemId : u"", false);
}

xercesc::InputSource *EntityGuard::grammarSource(const XMLResourceIdentifier &resource)
{
    if (!directoriesRead) {
        directories = grammar_directories();
        directoriesRead = true;
    }
    auto file = std::make_unique<GrammarFile>();
    const std::string path =
        grammar_path(utf8(resource.getSystemId()), utf8(resource.getBaseURI()));
    if (!read_grammar(path, directories, *file))
        refuse(resource.getSystemId());
    // The canonical path is the file's identity: what it names in turn is
    // resolved beside it.
    const std::u16string id = platform::utf8_to_utf16(file->path.data(), file->path.size());
    auto *source =
        new xercesc::MemBufInputSource(reinterpret_cast<const XMLByte *>(file->bytes.data()),
                                       file->bytes.size(), id.c_str(), false);
    loaded.push_back(std::move(file));
    return source;
}

void EntityGuard::refuse(const XMLCh *name) { throw RefusedEntity(name); }

void EntityGuard::internalEntityDecl(const XMLCh *const name, const XMLCh *const value)
{
    if (name == nullptr)
        return;
    if (declarations != nullptr)
        declarations->entityDeclared(name);
    // Parameter entities (named with their '%') hold declarations; their
    // references inside the internal subset are not counted by the parser,
    // so their size is bounded here alone.
    const uint64_t size = name[0] == u'%'
                              ? (value != nullptr ? xercesc::XMLString::stringLen(value) : 0)
                              : sizes.declare(name, value);
    if (size > kEntityTextLimit)
        refuse(name);
}

void EntityGuard::externalEntityDecl(const XMLCh *const name, const XMLCh *const,
                                     const XMLCh *const systemId)
{
    if (declarations != nullptr && name != nullptr)
        declarations->entityDeclared(name);
    if (name != nullptr && name[0] != u'%' && systemId != nullptr)
        generalEntities.insert(systemId);
}

}  // namespace cblxml
