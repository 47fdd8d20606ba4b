// Exception continuation and the empty entry that lets a run-time resolve
// the library by name.
#include "cblxml.h"
#include "platform/platform.h"

namespace {

// The run-time service whose address starts the continuation sequence. On
// Linux the hooks of the platform layer stand for the run-time's services;
// this marker identifies the request to them.
char g_continuation_service;

}  // namespace

extern "C" void CBL_XMLPARSE_EXCEPTION2(int32_t continue_flag)
{
    try {
        void *handle = cblxml::platform::exception_begin(&g_continuation_service, 0, 0);
        if (continue_flag != 0)
            cblxml::platform::exception_resume(handle);
    } catch (...) {
    }
}

extern "C" void CBL_XMLPARSE_EXCEPTION(int32_t continue_flag)
{
    CBL_XMLPARSE_EXCEPTION2(continue_flag);
}

extern "C" void CBL_XMLIO(void) {}
