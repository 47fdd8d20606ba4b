// The safety set-up of every parse. A document comes from outside the
// program (CGI input, messages, partner files), so nothing it names may make
// the library read a file or open a connection, and no entity may make it
// produce text out of all proportion to the document:
//  - general external entities are refused: the parse ends in an exception;
//  - without validation, the external DTD subset and external parameter
//    entities are left empty and schema hints are ignored;
//  - a validating parse reads the grammars it is given (external DTD subset,
//    its parameter entities, schemas) from regular local files inside the
//    grammar directories only, and refuses every other one;
//  - at most kEntityExpansionLimit entity references are expanded, and no
//    internal entity may expand to more than kEntityTextLimit characters.
#ifndef CBLXML_XEXML_ENTITY_GUARD_H
#define CBLXML_XEXML_ENTITY_GUARD_H

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax2/DeclHandler.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>

#include "cblxml.h"
#include "xexml/entity_sizes.h"
#include "xexml/grammar_files.h"

namespace cblxml {

class XmlDomHandlers;

// Their product bounds the text a document can make the parser produce
// through entities (about 10 million characters), whatever it declares.
constexpr unsigned kEntityExpansionLimit = 10000;
constexpr uint64_t kEntityTextLimit = 1024;

class EntityGuard final : public xercesc::XMLEntityResolver, public xercesc::DeclHandler {
public:
    // Sets `guarded` up for one parse with option word `flags`. The guard
    // must outlive the parse; its destructor takes itself off the reader.
    EntityGuard(xercesc::SAX2XMLReaderImpl &guarded, uint32_t flags);
    ~EntityGuard() override;
    EntityGuard(const EntityGuard &) = delete;
    EntityGuard &operator=(const EntityGuard &) = delete;

    // Tells `handler` (null: nobody) of every general entity declared, so
    // that it knows the references the parser skips.
    void reportDeclarationsTo(XmlDomHandlers *handler) { declarations = handler; }

    // Every external resource the parser wants: returns what it may read
    // (an empty text or a grammar file), or throws to refuse it.
    xercesc::InputSource *resolveEntity(xercesc::XMLResourceIdentifier *resource) override;

    // Declarations, watched for entity sizes and for which system
    // identifiers name general entities.
    void internalEntityDecl(const XMLCh *const name, const XMLCh *const value) override;
    void externalEntityDecl(const XMLCh *const name, const XMLCh *const publicId,
                            const XMLCh *const systemId) override;
    void elementDecl(const XMLCh *const, const XMLCh *const) override {}
    void attributeDecl(const XMLCh *const, const XMLCh *const, const XMLCh *const,
                       const XMLCh *const, const XMLCh *const) override
    {}

private:
    xercesc::InputSource *emptySource(const XMLCh *systemId);
    xercesc::InputSource *grammarSource(const xercesc::XMLResourceIdentifier &resource);
    // Ends the parse with a fatal error naming the resource or entity.
    [[noreturn]] void refuse(const XMLCh *name);

    xercesc::SAX2XMLReaderImpl &reader;
    XmlDomHandlers *declarations = nullptr;
    const bool validating;
    xercesc::SecurityManager security;
    EntitySizes sizes;
    // System identifiers of declared general external entities.
    std::unordered_set<std::u16string> generalEntities;
    std::vector<std::string> directories;  // filled on the first grammar
    bool directoriesRead = false;
    // The texts handed to the parser, kept until the parse is over.
    std::vector<std::unique_ptr<GrammarFile>> loaded;
};

}  // namespace cblxml

#endif
