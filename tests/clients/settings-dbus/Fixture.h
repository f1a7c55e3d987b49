#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FakeHost.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace SettingsDbusTests {

using Words = std::vector<std::string>;
using TestSupport::ChildProcess;
using TestSupport::Finished;
using TestSupport::waitTimeout;

constexpr const char* busName = "org.settingshandler.Settings1";
constexpr const char* mainObject = "/org/settingshandler/Settings1";
constexpr const char* personalObject = "/org/settingshandler/Settings1/Personal";

Words operator+(Words first, const Words& second);

/// A message bus with the policies of a system bus and of the package, a host, and the bridge between them.
class Fixture : public testing::Test {
protected:
    Fixture();

    /// The group of the user who runs the test, and one that neither that user nor `nobody` is in.
    static std::string ownGroup();
    static std::string otherGroup();

    static std::string ownUser();
    /// `group` and `user` take the place of settings-host and settings-dbus in the policy.
    void startBus(const std::string& group = ownGroup(), const std::string& user = ownUser());
    void startHost(const std::string& runtimeFolder = "");
    /// Returns when it is connected.
    void startBridge();
    void startAll();
    /// Starts bus and bridge; `fake` is the host.
    void startAllWith(FakeHost& fake);
    /// Waits until the bridge logs a line with `text`.
    void waitForLog(const std::string& text);

    std::map<std::string, std::string> environment() const;
    std::string busPath() const { return folder / "bus"; }
    std::string socketPath() const { return folder / "settings-host/settings.sock"; }

    Finished busctl(const Words& arguments) const;
    /// Calls a method of the service's interface. Returns: what busctl prints, also of errors.
    std::string call(const Words& arguments, const std::string& object = mainObject) const;
    std::string get(const std::string& property, const std::string& object = mainObject) const;
    std::string set(const Words& arguments, const std::string& object = mainObject) const;
    std::string settingsctl(const Words& arguments) const;

    /// Prints the service's signals, with the rights of `user` if one is named. Returns when it receives them.
    void startMonitor(const std::string& user = "");
    /// The next signals of that name, without its interface, such as "Changed".
    Words signals(const std::string& name, std::size_t count);

    TestSupport::TemporaryDirectory folder{TestSupport::memoryFolder()};
    std::optional<ChildProcess> bus;
    std::optional<ChildProcess> host;
    std::optional<ChildProcess> bridge;
    std::optional<ChildProcess> monitor;
};

}  // namespace SettingsDbusTests
