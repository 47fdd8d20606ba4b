#include "xexml/entity_sizes.h"

namespace cblxml {
namespace {

uint64_t saturating_add(uint64_t a, uint64_t b)
{
    const uint64_t sum = a + b;
    return sum < a || sum > EntitySizes::kSaturated ? EntitySizes::kSaturated : sum;
}

bool is_predefined(const std::u16string &name)
{
    return name == u"lt" || name == u"gt" || name == u"amp" || name == u"apos" || name == u"quot";
}

}  // namespace

uint64_t EntitySizes::referenced(const XMLCh *name, size_t length) const
{
    const std::u16string key(name, length);
    if (is_predefined(key))
        return 1;
    const auto found = sizes.find(key);
    return found != sizes.end() ? found->second : 0;
}

uint64_t EntitySizes::declare(const XMLCh *name, const XMLCh *value)
{
    uint64_t total = 0;
    for (const XMLCh *p = value; p != nullptr && *p != 0;) {
        if (*p == u'&') {
            const XMLCh *end = p + 1;
            while (*end != 0 && *end != u';' && *end != u'&' && *end != u' ' && *end != u'\t' &&
                   *end != u'\n' && *end != u'\r')
                ++end;
            if (*end == u';' && end > p + 1) {
                total = saturating_add(total, referenced(p + 1, static_cast<size_t>(end - p - 1)));
                p = end + 1;
                continue;
            }
        }
        total = saturating_add(total, 1);
        ++p;
    }
    if (name != nullptr)
        sizes.try_emplace(std::u16string(name), total);  // the first declaration binds
    return total;
}

}  // namespace cblxml
