// Leak check around a stretch of code, by the means the build offers: the
// leak sanitizer when it is linked in, else a count of live heap blocks
// (plain builds), else none (thread sanitizer builds).
#ifndef CBLXML_CONFORMANCE_LEAK_CHECK_H
#define CBLXML_CONFORMANCE_LEAK_CHECK_H

#include <string>

namespace conformance {

// Remembers the heap as it is now.
void mark_heap();

// "" when nothing allocated since the mark is left, else what is left.
// Cheap; "" where the build cannot tell.
std::string leaks_since_mark();

// "" when every heap block of the process is still reachable, else what
// is not. Costly: meant for the end of a batch of documents; "" where the
// build cannot tell.
std::string unreachable_blocks();

}  // namespace conformance

#endif
