#include <cstdlib>

#include <unistd.h>

#include "SettingsHandlerKit/ListenerError.h"
#include "SettingsHandlerKit/PassedSockets.h"

namespace SettingsHandlerKit {

/// The variables with which a service manager passes sockets, in this process.
class PassedSocketsTest : public ::testing::Test {
protected:
    PassedSocketsTest() { clear(); }
    ~PassedSocketsTest() override { clear(); }

    static void clear() {
        for (const auto* name : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"}) {
            ::unsetenv(name);
        }
    }

    static void set(const char* name, const std::string& value) { ::setenv(name, value.c_str(), 1); }

    static std::string errorOfTaking() {
        try {
            const PassedSockets taken({"settings"});
            return "";
        } catch (const ListenerError& error) {
            return error.what();
        }
    }

    const std::string thisProcess = std::to_string(::getpid());
};

TEST_F(PassedSocketsTest, TakesNothingMeantForAnotherProcess) {
    set("LISTEN_PID", "1");
    set("LISTEN_FDS", "1");
    set("LISTEN_FDNAMES", "settings");
    PassedSockets taken({"settings"});
    EXPECT_FALSE(taken.take("settings"));
    for (const auto* name : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"}) {
        EXPECT_EQ(std::getenv(name), nullptr) << name << " is not for those that this process starts";
    }
}

TEST_F(PassedSocketsTest, TakesNothingWithoutANumberOfSockets) {
    set("LISTEN_PID", thisProcess);
    set("LISTEN_FDNAMES", "settings");
    PassedSockets taken({"settings"});
    EXPECT_FALSE(taken.take("settings"));
}

TEST_F(PassedSocketsTest, RefusesVariablesThatContradictEachOther) {
    const std::string start = "cannot take the passed sockets over: ";
    set("LISTEN_PID", "me");
    EXPECT_EQ(errorOfTaking(), start + "LISTEN_PID is not a number");
    set("LISTEN_PID", thisProcess);
    for (const auto* count : {"0", "2147483647", "4294967297"}) {
        set("LISTEN_FDS", count);
        EXPECT_EQ(errorOfTaking(), start + "LISTEN_FDS is out of range") << count;
    }
    set("LISTEN_FDS", "-1");
    EXPECT_EQ(errorOfTaking(), start + "LISTEN_FDS is not a number");
    set("LISTEN_FDS", "1");
    for (const auto* names : {"settings:device", "settings:", ":settings", ":"}) {
        set("LISTEN_FDNAMES", names);
        EXPECT_EQ(errorOfTaking(), start + "LISTEN_FDNAMES does not name each socket") << names;
    }
    set("LISTEN_FDS", "2");
    set("LISTEN_FDNAMES", "");
    EXPECT_EQ(errorOfTaking(), start + "LISTEN_FDNAMES does not name each socket");
    set("LISTEN_FDS", "1000000");
    ::unsetenv("LISTEN_FDNAMES");
    EXPECT_EQ(errorOfTaking(), start + "Bad file descriptor");
}

}  // namespace SettingsHandlerKit
