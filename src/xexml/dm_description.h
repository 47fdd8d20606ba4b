// The data-map description of a record item: the one place where the
// compiler's class, usage and sign bytes become the data map's codes. The
// read side's value move and the writer's item text both use it.
#ifndef CBLXML_XEXML_DM_DESCRIPTION_H
#define CBLXML_XEXML_DM_DESCRIPTION_H

#include <string>

#include "cblxml.h"

namespace cblxml::xexml {

// Usage bytes of the floating-point items: numeric whatever the class byte
// says, and never padded as text.
constexpr uint8_t kUsageComp1 = 2;
constexpr uint8_t kUsageComp2 = 3;

// Fills the 40-byte data-map description of `item` from its compiler bytes
// (class, usage and sign tables; a byte the tables do not name leaves its
// code 0). `format` receives the terminated copy of the third string that
// desc.format points into; it must outlive desc.
void item_dm_description(const IDESC *item, dm_item_desc &desc, std::string &format);

}  // namespace cblxml::xexml

#endif
