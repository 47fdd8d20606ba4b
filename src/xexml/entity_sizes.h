// The length of every internal entity's replacement text once the general
// entities it references are expanded too, worked out as the declarations
// arrive: how a parse learns, before any expansion, that an entity would
// grow past what it is willing to produce.
#ifndef CBLXML_XEXML_ENTITY_SIZES_H
#define CBLXML_XEXML_ENTITY_SIZES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

#include <xercesc/util/XercesDefs.hpp>

namespace cblxml {

class EntitySizes {
public:
    // Records general entity `name` with its replacement text `value` (as
    // the parser holds it: character references already replaced, entity
    // references still written out) and returns its expanded length in
    // UTF-16 units. References to entities not declared yet count nothing;
    // lengths stop growing at kSaturated.
    uint64_t declare(const XMLCh *name, const XMLCh *value);

    static constexpr uint64_t kSaturated = uint64_t{1} << 48;

private:
    uint64_t referenced(const XMLCh *name, size_t length) const;

    std::unordered_map<std::u16string, uint64_t> sizes;
};

}  // namespace cblxml

#endif
