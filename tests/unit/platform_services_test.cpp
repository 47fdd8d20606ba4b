// Run-time services: defaults, registration by a host, and the lock.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "cblxml.h"
#include "platform/platform.h"

namespace platform = cblxml::platform;

namespace {

// Records what a host's services were asked to do.
struct HostLog {
    int locks = 0;
    int unlocks = 0;
    void *resumed = nullptr;
};
HostLog host_log;

void host_lock() { ++host_log.locks; }
void host_unlock() { ++host_log.unlocks; }
int host_token;
void *host_begin(void *, intptr_t, intptr_t) { return &host_token; }
void host_resume(void *handle) { host_log.resumed = handle; }
const char *host_env(const char *) { return "from-host"; }

cblxml_services full_table()
{
    cblxml_services table{};
    table.size = sizeof(table);
    table.thread_lock = host_lock;
    table.thread_unlock = host_unlock;
    table.exception_begin = host_begin;
    table.exception_resume = host_resume;
    table.get_env = host_env;
    return table;
}

class Services : public ::testing::Test {
protected:
    void SetUp() override
    {
        host_log = HostLog{};
        ASSERT_EQ(cblxml_register_services(nullptr), 0);
    }
    void TearDown() override { cblxml_register_services(nullptr); }
};

// Which services answer after a sequence of registrations: the host's or
// the defaults (the process environment, hooks that do nothing).
struct RegistrationCase {
    const char *label;
    std::vector<std::pair<cblxml_services, int>> tables;  // each registered, with its result
    bool hostLock;
    bool hostEnv;
    bool hostHooks;
};

cblxml_services with(cblxml_services table, uint32_t size, bool envOnly, bool halfPair)
{
    if (size != 0)
        table.size = size;
    if (envOnly) {
        table = cblxml_services{};
        table.size = sizeof table;
        table.get_env = host_env;
    }
    if (halfPair)
        table.thread_unlock = nullptr;
    return table;
}

TEST_F(Services, RegistrationsDecideWhichServicesAnswer)
{
    const cblxml_services full = full_table();
    const cblxml_services none{};  // registered as a null table
    const RegistrationCase cases[] = {
        {"defaults", {}, false, false, false},
        {"a full table", {{full, 0}}, true, true, true},
        {"null members keep the defaults", {{with(full, 0, true, false), 0}}, false, true, false},
        {"a null table restores every default", {{full, 0}, {none, 0}}, false, false, false},
        // An older host whose table ends after the lock pair.
        {"fields beyond the declared size are absent",
         {{with(full, offsetof(cblxml_services, exception_begin), false, false), 0}},
         true,
         false,
         false},
        {"a table too small is refused",
         {{with(full, sizeof(uint32_t), false, false), 1}},
         false,
         false,
         false},
        {"half a lock pair is refused", {{with(full, 0, false, true), 1}}, false, false, false},
    };
    for (const RegistrationCase &c : cases) {
        SCOPED_TRACE(c.label);
        host_log = HostLog{};
        ASSERT_EQ(cblxml_register_services(nullptr), 0);
        for (const auto &t : c.tables)
            EXPECT_EQ(cblxml_register_services(t.first.size != 0 ? &t.first : nullptr), t.second);
        {
            platform::LockGuard guard;
            EXPECT_EQ(host_log.locks, c.hostLock ? 1 : 0);
        }
        EXPECT_EQ(host_log.unlocks, c.hostLock ? 1 : 0);
        setenv("CBLXML_SERVICES_TEST", "value", 1);
        EXPECT_STREQ(platform::get_env("CBLXML_SERVICES_TEST"), c.hostEnv ? "from-host" : "value");
        unsetenv("CBLXML_SERVICES_TEST");
        if (!c.hostEnv) {
            EXPECT_EQ(platform::get_env("CBLXML_SERVICES_TEST"), nullptr);
        }
        void *handle = platform::exception_begin(nullptr, 0, 0);
        EXPECT_EQ(handle, c.hostHooks ? &host_token : nullptr);
        platform::exception_resume(handle);
        EXPECT_EQ(host_log.resumed, c.hostHooks ? &host_token : nullptr);
    }
    EXPECT_EQ(platform::get_env(nullptr), nullptr);
}

// The default lock may be taken again by its holder and excludes other
// threads; an unlock releases the lock that was taken, even after a host
// registered its own; an unlock without a lock is ignored.
TEST_F(Services, DefaultLock)
{
    long counter = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&counter] {
            for (int i = 0; i < 20000; ++i) {
                platform::LockGuard guard;
                platform::LockGuard again;
                counter = counter + 1;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(counter, 80000);

    platform::thread_lock();
    const cblxml_services table = full_table();
    ASSERT_EQ(cblxml_register_services(&table), 0);
    platform::thread_unlock();  // must release the default mutex, not call the host
    platform::thread_unlock();  // without a lock: ignored
    EXPECT_EQ(host_log.unlocks, 0);
    ASSERT_EQ(cblxml_register_services(nullptr), 0);
    std::atomic<bool> taken{false};
    std::thread other([&taken] {
        platform::LockGuard guard;
        taken = true;
    });
    other.join();
    EXPECT_TRUE(taken) << "the default mutex is free again";
}

}  // namespace
