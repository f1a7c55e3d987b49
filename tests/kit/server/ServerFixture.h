#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>

#include "SettingsHandlerKit/Server.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "kit/support/LogRecording.h"
#include "support/LineClient.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

/// A service as the kit's users write it, with a fake voice SDK and device.
class ServerFixture : public ::testing::Test {
protected:
    ServerOptions options() {
        ServerOptions chosen;
        chosen.socketPath = folder / "run/settings.sock";
        chosen.listen.reset();
        chosen.version = "1.2.3";
        chosen.environment.now = [this] { return time; };
        chosen.environment.random = [](std::size_t count) { return std::string(count, '\x5a'); };
        return chosen;
    }

    std::shared_ptr<CheckedSettingsHandler> handlerOf(Server& server, Storage& storage) {
        return server.createHandler(storage, bridge, launcher, device);
    }

    static std::string setRequest(const std::string& key, const std::string& value) {
        return R"({"type":24,"timestamp":1,"payload":{"settingDBId":")" + key + R"(","to":")" + value + "\"}}";
    }

    /// The first event of a run.
    static std::string firstEvent(const std::string& key, const std::string& from, const std::string& to,
                                  const std::string& origin = "socket") {
        return R"({"type":25,"messageId":"host-1700000000000-1","timestamp":1700000000000,"sequence":1,"origin":")" +
               origin + R"(","payload":{"settingDBId":")" + key + R"(","from":")" + from + R"(","to":")" + to + "\"}}";
    }

    /// The caller's own loop.
    static void serveUntil(Server& server, const std::function<bool()>& done) {
        while (!done()) {
            pollfd watched{server.fileDescriptor(), POLLIN, 0};
            const auto timeout = server.timeout();
            constexpr std::chrono::milliseconds never = TestSupport::waitTimeout;
            const auto longest = std::min(timeout.value_or(never), never);
            if (::poll(&watched, 1, static_cast<int>(longest.count())) == 0 && !timeout) {
                FAIL() << "nothing comes any more";
            }
            server.process();
        }
    }

    std::string database() const { return folder / "state/settings.db"; }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
    std::chrono::system_clock::time_point time{std::chrono::milliseconds(1700000000000)};
    SettingsHandlerTesting::Journal journal;
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> bridge =
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeAppLaunch> launcher =
        std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeDeviceInfo> device =
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal);
};

}  // namespace SettingsHandlerKit
