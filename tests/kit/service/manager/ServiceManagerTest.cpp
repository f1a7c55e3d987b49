#include <cstdlib>

#include <unistd.h>

#include "SettingsHandlerKit/ServiceManager.h"
#include "support/NotificationSocket.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHostTests {

using namespace SettingsHandlerKit;

/// Sets the environment of a service manager in this process.
class ServiceManagerTest : public ::testing::Test {
protected:
    ServiceManagerTest() { clear(); }
    ~ServiceManagerTest() override { clear(); }

    static void clear() {
        for (const auto* name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"}) {
            ::unsetenv(name);
        }
    }

    static void set(const char* name, const std::string& value) { ::setenv(name, value.c_str(), 1); }

    const std::string thisProcess = std::to_string(::getpid());
    TestSupport::TemporaryDirectory folder;
};

TEST_F(ServiceManagerTest, IsNotifiedAtAPath) {
    TestSupport::NotificationSocket manager(folder / "notify");
    set("NOTIFY_SOCKET", folder / "notify");
    notifyAlive();
    EXPECT_EQ(manager.receive(), "WATCHDOG=1");
}

TEST_F(ServiceManagerTest, IsNotifiedAtAnAbstractSocket) {
    const std::string name = "settings-test-" + thisProcess;
    TestSupport::NotificationSocket manager(std::string(1, '\0') + name);
    set("NOTIFY_SOCKET", "@" + name);
    notifyReady("Serving");
    EXPECT_EQ(manager.receive(), "READY=1\nSTATUS=Serving");
}

TEST_F(ServiceManagerTest, ThatCannotBeReachedIsIgnored) {
    for (const std::string& place : {std::string(), folder / "nobody", std::string("no path"), std::string(200, '/')}) {
        set("NOTIFY_SOCKET", place);
        EXPECT_NO_THROW(notifyStopping("")) << place;
    }
}

TEST_F(ServiceManagerTest, SetsTheWatchdogTimeout) {
    EXPECT_EQ(watchdogTimeout(), std::nullopt);
    set("WATCHDOG_USEC", "30000000");
    EXPECT_EQ(watchdogTimeout(), std::chrono::seconds(30));
    set("WATCHDOG_PID", thisProcess);
    EXPECT_EQ(watchdogTimeout(), std::chrono::seconds(30));
    set("WATCHDOG_PID", "1");
    EXPECT_EQ(watchdogTimeout(), std::nullopt) << "the watchdog is for another process";
    set("WATCHDOG_PID", "");
    EXPECT_EQ(watchdogTimeout(), std::nullopt);
}

TEST_F(ServiceManagerTest, InvalidWatchdogTimeoutsAreIgnored) {
    for (const auto* time : {"", "0", "-1", "+1", " 1", "1 ", "1s", "0x10", "99999999999999999999",
                             "18446744073709551615", "9223372036854775808"}) {
        set("WATCHDOG_USEC", time);
        EXPECT_EQ(watchdogTimeout(), std::nullopt) << time;
    }
}

}  // namespace SettingsHostTests
