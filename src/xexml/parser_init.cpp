#include "xexml/parser_init.h"

#include <atomic>

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "platform/platform.h"

namespace cblxml {
namespace {

// The one piece of process-wide state of the parse path.
std::atomic<bool> g_parserInitialised{false};

}  // namespace

bool ensure_parser_initialised()
{
    if (g_parserInitialised.load(std::memory_order_acquire))
        return true;
    // The lock is released on the failure path too, so that a failed
    // initialisation does not leave every later parse waiting on it.
    platform::LockGuard guard;
    if (g_parserInitialised.load(std::memory_order_relaxed))
        return true;
    try {
        xercesc::XMLPlatformUtils::Initialize();
    } catch (...) {
        return false;
    }
    g_parserInitialised.store(true, std::memory_order_release);
    return true;
}

}  // namespace cblxml
