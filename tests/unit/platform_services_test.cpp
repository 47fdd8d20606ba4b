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
    std::vector<std::string> env_names;
    void *resumed = nullptr;
};
HostLog host_log;

void host_lock() { ++host_log.locks; }
void host_unlock() { ++host_log.unlocks; }
int host_token;
void *host_begin(void *, intptr_t, intptr_t) { return &host_token; }
void host_resume(void *handle) { host_log.resumed = handle; }
const char *host_env(const char *name) {
    host_log.env_names.emplace_back(name);
    return "from-host";
}

cblxml_services full_table() {
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
    void SetUp() override {
        host_log = HostLog{};
        ASSERT_EQ(cblxml_register_services(nullptr), 0);
    }
    void TearDown() override { cblxml_register_services(nullptr); }
};

TEST_F(Services, DefaultsUseTheProcessEnvironmentAndDoNothingHooks) {
    setenv("CBLXML_SERVICES_TEST", "value", 1);
    ASSERT_NE(platform::get_env("CBLXML_SERVICES_TEST"), nullptr);
    EXPECT_STREQ(platform::get_env("CBLXML_SERVICES_TEST"), "value");
    unsetenv("CBLXML_SERVICES_TEST");
    EXPECT_EQ(platform::get_env("CBLXML_SERVICES_TEST"), nullptr);
    EXPECT_EQ(platform::get_env(nullptr), nullptr);
    EXPECT_EQ(platform::exception_begin(nullptr, 0, 0), nullptr);
    platform::exception_resume(nullptr);
}

TEST_F(Services, DefaultLockMayBeTakenAgainByItsHolder) {
    platform::LockGuard outer;
    platform::LockGuard inner;
    SUCCEED();
}

TEST_F(Services, DefaultLockExcludesOtherThreads) {
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&counter] {
            for (int i = 0; i < 20000; ++i) {
                platform::LockGuard guard;
                counter = counter + 1;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(counter, 80000);
}

TEST_F(Services, HostServicesReplaceTheDefaults) {
    const cblxml_services table = full_table();
    ASSERT_EQ(cblxml_register_services(&table), 0);
    {
        platform::LockGuard guard;
        EXPECT_EQ(host_log.locks, 1);
        EXPECT_EQ(host_log.unlocks, 0);
    }
    EXPECT_EQ(host_log.unlocks, 1);
    EXPECT_STREQ(platform::get_env("ANY"), "from-host");
    ASSERT_EQ(host_log.env_names.size(), 1u);
    EXPECT_EQ(host_log.env_names[0], "ANY");
    void *handle = platform::exception_begin(nullptr, 0, 0);
    EXPECT_EQ(handle, &host_token);
    platform::exception_resume(handle);
    EXPECT_EQ(host_log.resumed, &host_token);
}

TEST_F(Services, NullMembersKeepTheDefaults) {
    cblxml_services table{};
    table.size = sizeof(table);
    table.get_env = host_env;
    ASSERT_EQ(cblxml_register_services(&table), 0);
    EXPECT_STREQ(platform::get_env("X"), "from-host");
    EXPECT_EQ(platform::exception_begin(nullptr, 0, 0), nullptr);
    { platform::LockGuard guard; }
    EXPECT_EQ(host_log.locks, 0);
}

TEST_F(Services, NullTableRestoresEveryDefault) {
    const cblxml_services table = full_table();
    ASSERT_EQ(cblxml_register_services(&table), 0);
    ASSERT_EQ(cblxml_register_services(nullptr), 0);
    { platform::LockGuard guard; }
    EXPECT_EQ(host_log.locks, 0);
    EXPECT_EQ(platform::exception_begin(nullptr, 0, 0), nullptr);
    setenv("CBLXML_SERVICES_TEST", "value", 1);
    EXPECT_STREQ(platform::get_env("CBLXML_SERVICES_TEST"), "value");
    unsetenv("CBLXML_SERVICES_TEST");
    EXPECT_TRUE(host_log.env_names.empty());
}

TEST_F(Services, FieldsBeyondTheDeclaredSizeAreAbsent) {
    cblxml_services table = full_table();
    // An older host whose table ends after the lock pair.
    table.size = offsetof(cblxml_services, exception_begin);
    ASSERT_EQ(cblxml_register_services(&table), 0);
    { platform::LockGuard guard; }
    EXPECT_EQ(host_log.locks, 1);
    EXPECT_EQ(platform::exception_begin(nullptr, 0, 0), nullptr);
    EXPECT_TRUE(host_log.env_names.empty());
    platform::get_env("X");
    EXPECT_TRUE(host_log.env_names.empty());
}

TEST_F(Services, RefusedTablesChangeNothing) {
    const cblxml_services good = full_table();
    cblxml_services too_small = good;
    too_small.size = sizeof(uint32_t);
    EXPECT_EQ(cblxml_register_services(&too_small), 1);
    cblxml_services half_pair = good;
    half_pair.thread_unlock = nullptr;
    EXPECT_EQ(cblxml_register_services(&half_pair), 1);
    { platform::LockGuard guard; }
    EXPECT_EQ(host_log.locks, 0);
    EXPECT_EQ(platform::exception_begin(nullptr, 0, 0), nullptr);
}

TEST_F(Services, UnlockMatchesTheLockTakenEvenAfterARegistration) {
    platform::thread_lock(); // the default mutex
    const cblxml_services table = full_table();
    ASSERT_EQ(cblxml_register_services(&table), 0);
    platform::thread_unlock(); // must release the default mutex, not call the host
    EXPECT_EQ(host_log.unlocks, 0);
    // The default mutex is free again: another thread can take it.
    ASSERT_EQ(cblxml_register_services(nullptr), 0);
    std::atomic<bool> taken{false};
    std::thread other([&taken] {
        platform::LockGuard guard;
        taken = true;
    });
    other.join();
    EXPECT_TRUE(taken);
}

TEST_F(Services, UnlockWithoutLockIsIgnored) {
    const cblxml_services table = full_table();
    ASSERT_EQ(cblxml_register_services(&table), 0);
    platform::thread_unlock();
    EXPECT_EQ(host_log.unlocks, 0);
}

TEST_F(Services, RegistrationWhileOtherThreadsReadIsSafe) {
    std::atomic<bool> stop{false};
    std::thread reader([&stop] {
        while (!stop) {
            platform::LockGuard guard;
            platform::get_env("PATH");
        }
    });
    cblxml_services table{};
    table.size = sizeof(table);
    table.get_env = [](const char *) -> const char * { return nullptr; };
    for (int i = 0; i < 1000; ++i) {
        cblxml_register_services(&table);
        cblxml_register_services(nullptr);
    }
    stop = true;
    reader.join();
    SUCCEED();
}

} // namespace
