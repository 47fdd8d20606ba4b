// Run-time services with their Linux defaults, and the registration entry
// through which a host run-time replaces them.
//
// Every service sits in its own atomic slot so that callers read the current
// table without a lock while a host registers. The lock and unlock functions
// are only ever installed as a pair, and each thread remembers which unlock
// belongs to the lock it took, so a registration made while a lock is held
// never unlocks the wrong mutex.
#include <atomic>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <vector>

#include "platform/file_streams.h"
#include "platform/platform.h"
#include "platform/string_convert.h"

namespace cblxml::platform {
namespace {

using LockFunction = void (*)();
using BeginFunction = void *(*)(void *, intptr_t, intptr_t);
using ResumeFunction = void (*)(void *);
using EnvFunction = const char *(*)(const char *);
using ConvertFunction = int32_t (*)(const char *, int32_t, const void *, uint32_t, void *,
                                    uint32_t *);

// Recursive so that a region guarded by the run-time lock may call another one.
std::recursive_mutex &default_mutex()
{
    static std::recursive_mutex mutex;
    return mutex;
}

void default_lock() { default_mutex().lock(); }
void default_unlock() { default_mutex().unlock(); }
void *default_exception_begin(void *, intptr_t, intptr_t) { return nullptr; }
void default_exception_resume(void *) {}
const char *default_get_env(const char *name) { return std::getenv(name); }

struct LockPair {
    LockFunction lock;
    LockFunction unlock;
};

const LockPair default_lock_pair{default_lock, default_unlock};

// Pairs installed by hosts stay alive until the process ends: a thread may
// still hold a lock taken through an older pair.
std::mutex &registration_mutex()
{
    static std::mutex mutex;
    return mutex;
}
std::deque<LockPair> &installed_lock_pairs()
{
    static std::deque<LockPair> pairs;
    return pairs;
}

std::atomic<const LockPair *> current_lock_pair{&default_lock_pair};
std::atomic<BeginFunction> current_exception_begin{default_exception_begin};
std::atomic<ResumeFunction> current_exception_resume{default_exception_resume};
std::atomic<EnvFunction> current_get_env{default_get_env};
std::atomic<ConvertFunction> current_string_convert{default_string_convert};

// The pairs whose lock this thread holds, innermost last.
thread_local std::vector<const LockPair *> held_locks;

// True when the caller's table, `size` bytes long, contains `member`.
template <typename Member>
bool table_holds(uint32_t size, Member cblxml_services::*member)
{
    static const cblxml_services probe{};
    const auto *base = reinterpret_cast<const char *>(&probe);
    const auto *field = reinterpret_cast<const char *>(&(probe.*member));
    return static_cast<size_t>(field - base) + sizeof(Member) <= size;
}

template <typename Member>
Member member_or_null(const cblxml_services &table, Member cblxml_services::*member)
{
    return table_holds(table.size, member) ? table.*member : nullptr;
}

void restore_defaults()
{
    current_lock_pair.store(&default_lock_pair);
    current_exception_begin.store(default_exception_begin);
    current_exception_resume.store(default_exception_resume);
    current_get_env.store(default_get_env);
    current_string_convert.store(default_string_convert);
    restore_file_services();
}

int install(const cblxml_services &table)
{
    if (!table_holds(table.size, &cblxml_services::thread_lock))
        return 1;
    const LockFunction lock = member_or_null(table, &cblxml_services::thread_lock);
    const LockFunction unlock = member_or_null(table, &cblxml_services::thread_unlock);
    // A host lock released by the default unlock (or the reverse) would be
    // undefined behaviour, so half a pair is refused as a whole.
    if ((lock == nullptr) != (unlock == nullptr) || !file_services_complete(table))
        return 1;

    std::lock_guard<std::mutex> guard(registration_mutex());
    if (lock != nullptr) {
        installed_lock_pairs().push_back(LockPair{lock, unlock});
        current_lock_pair.store(&installed_lock_pairs().back());
    } else {
        current_lock_pair.store(&default_lock_pair);
    }
    const BeginFunction begin = member_or_null(table, &cblxml_services::exception_begin);
    current_exception_begin.store(begin != nullptr ? begin : default_exception_begin);
    const ResumeFunction resume = member_or_null(table, &cblxml_services::exception_resume);
    current_exception_resume.store(resume != nullptr ? resume : default_exception_resume);
    const EnvFunction env = member_or_null(table, &cblxml_services::get_env);
    current_get_env.store(env != nullptr ? env : default_get_env);
    const ConvertFunction convert = member_or_null(table, &cblxml_services::string_convert);
    current_string_convert.store(convert != nullptr ? convert : default_string_convert);
    install_file_services(table);
    return 0;
}

}  // namespace

void thread_lock()
{
    const LockPair *pair = current_lock_pair.load();
    pair->lock();
    try {
        held_locks.push_back(pair);
    } catch (...) {
        // Without a record the unlock could not be matched: give the lock back.
        pair->unlock();
        throw;
    }
}

void thread_unlock()
{
    // An unlock without a matching lock on this thread is ignored: releasing
    // a mutex that the thread does not own is undefined.
    if (held_locks.empty())
        return;
    const LockPair *pair = held_locks.back();
    held_locks.pop_back();
    pair->unlock();
}

void *exception_begin(void *service, intptr_t a, intptr_t b)
{
    return current_exception_begin.load()(service, a, b);
}

void exception_resume(void *handle) { current_exception_resume.load()(handle); }

const char *get_env(const char *name)
{
    if (name == nullptr)
        return nullptr;
    return current_get_env.load()(name);
}

int32_t string_convert(const char *from, int32_t form, const void *text, uint32_t length, void *out,
                       uint32_t *out_length)
{
    if (out_length == nullptr || (text == nullptr && length > 0))
        return 1;
    return current_string_convert.load()(from, form, text, length, out, out_length);
}

}  // namespace cblxml::platform

extern "C" CBLXML_API int cblxml_register_services(const cblxml_services *services)
{
    try {
        if (services == nullptr) {
            std::lock_guard<std::mutex> guard(cblxml::platform::registration_mutex());
            cblxml::platform::restore_defaults();
            return 0;
        }
        return cblxml::platform::install(*services);
    } catch (...) {
        return 1;
    }
}
