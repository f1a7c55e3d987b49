#pragma once

#include <chrono>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "Utils/Rapidjson.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/Json.h"
#include "support/ProcessUsage.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"
#include "wire/HostClients.h"

namespace SystemTests {

using Lines = std::vector<std::string>;

using TestSupport::parsed;

/// Each test has its own host in its own folder.
class HostTest : public ::testing::Test {
protected:
    /// Starts the host and waits until its listeners listen.
    void start(const Lines& moreArguments = {}) {
        host = launch(moreArguments);
        const auto ready = host->output().readLine();
        ASSERT_TRUE(ready) << host->errors().readAll(std::chrono::seconds(1));
        EXPECT_EQ(*ready, "ready: socket: " + socket());
    }

    std::unique_ptr<TestSupport::ChildProcess> launch(const Lines& moreArguments = {}) {
        Lines arguments = programPrefix;
        for (const auto& argument :
             {std::string(SETTINGS_HOST), std::string("--storage"), database(), std::string("--socket"), socket(),
              std::string("--device-socket"), deviceSocket()}) {
            arguments.push_back(argument);
        }
        arguments.insert(arguments.end(), webArguments.begin(), webArguments.end());
        if (!sandboxSwitch.empty()) {
            arguments.push_back(sandboxSwitch);
        }
        arguments.insert(arguments.end(), moreArguments.begin(), moreArguments.end());
        return std::make_unique<TestSupport::ChildProcess>(arguments, environment, sockets);
    }

    /// Starts a host that is to end by itself. Returns: its exit status and what it printed.
    TestSupport::Finished runToEnd(const Lines& moreArguments = {}) {
        const auto ending = launch(moreArguments);
        std::string output = ending->output().readAll();
        std::string errors = ending->errors().readAll();
        return {ending->wait().value_or(-1), std::move(output), std::move(errors)};
    }

    /// Expects that the host ends with a message and without a ready line.
    void expectCannotStart(const std::string& message, int status = 1, const Lines& moreArguments = {}) {
        const auto failed = runToEnd(moreArguments);
        EXPECT_EQ(failed.status, status) << failed.errors;
        EXPECT_EQ(failed.output, "");
        EXPECT_TRUE(contains(failed.errors, message)) << failed.errors;
    }

    /// Polls until `condition` holds; fails the test when it does not in time.
    static void waitFor(const std::function<bool()>& condition) {
        const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
        bool isMet = condition();
        while (!isMet && std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            isMet = condition();
        }
        // Not evaluated once more: that could change the state of the host.
        EXPECT_TRUE(isMet);
    }

    /// Starts a measurement for `expectGrowthBelow`.
    void startMeasuringMemory() {
        memoryBefore = TestSupport::residentMemory(host->pid());
        TestSupport::forgetPeakMemory(host->pid());
    }

    /// Expects that the peak of the host's memory since `startMeasuringMemory` exceeds its start by less than `bytes`.
    void expectGrowthBelow(std::size_t bytes) {
        if (!TestSupport::sanitized) {
            const std::size_t peak = TestSupport::peakMemory(host->pid());
            std::cout << "grew by " << (peak - memoryBefore) / 1024 << " KiB\n";
            EXPECT_LT(peak, memoryBefore + bytes);
        }
    }

    /// Stops the host with SIGTERM. Returns: its log.
    std::string stop() {
        host->sendSignal(SIGTERM);
        const std::string log = host->errors().readAll();
        EXPECT_EQ(host->wait(), 0);
        host.reset();
        return log;
    }

    void kill() {
        host->sendSignal(SIGKILL);
        EXPECT_EQ(host->wait(), 128 + SIGKILL);
        host.reset();
    }

    virtual std::string database() { return folder / "state/settings.db"; }
    std::string socket() { return folder / "run/settings.sock"; }
    std::string deviceSocket() { return folder / "run/device.sock"; }

    WireTests::HostClient& client() {
        if (!ownClient) {
            ownClient = std::make_unique<WireTests::HostClient>(socket());
        }
        return *ownClient;
    }
    void disconnect() { ownClient.reset(); }

    static std::string setRequest(const std::string& key, const std::string& valueJson, long timestamp = 1) {
        return R"({"type":24,"messageId":"s","timestamp":)" + std::to_string(timestamp) +
               R"(,"payload":{"settingDBId":")" + key + R"(","to":)" + valueJson + "}}";
    }
    static std::string getRequest(const std::string& keysJson, const std::string& id = "g") {
        return R"({"type":7,"messageId":")" + id + R"(","payload":{"settings":)" + keysJson + "}}";
    }

    /// Sends a request on the test's own connection. Returns: the reply or refusal; `before` receives the frames before
    /// it.
    rapidjson::Document ask(const std::string& request, Lines* before = nullptr) {
        client().sendLine(request);
        for (;;) {
            const auto line = client().receiveLine();
            if (!line) {
                ADD_FAILURE() << "no reply to " << request;
                return rapidjson::Document(rapidjson::kObjectType);
            }
            auto frame = parsed(*line);
            // Events have both.
            if ((frame.HasMember("messageId") && !frame.HasMember("sequence")) || frame.HasMember("error")) {
                return frame;
            }
            if (before != nullptr) {
                before->push_back(*line);
            }
        }
    }

    /// Sends a request that has no reply and waits until it is handled. Returns: the frames that came meanwhile.
    Lines send(const std::string& request) {
        Lines frames;
        ask(request + "\n" + getRequest(R"(["timezone"])"), &frames);
        return frames;
    }

    Lines set(const std::string& key, const std::string& valueJson, long timestamp = 1) {
        return send(setRequest(key, valueJson, timestamp));
    }

    /// The value of a setting; "(none)" when it has none.
    std::string get(const std::string& key) {
        const auto reply = ask(getRequest("[\"" + key + "\"]"));
        const auto& settings = reply["payload"]["settings"];
        return settings.HasMember(key.c_str()) ? settings[key.c_str()].GetString() : "(none)";
    }

    /// The reply to a device command.
    std::string device(const std::string& command) {
        WireTests::HostClient person(deviceSocket());
        person.sendLine(command);
        return person.receiveLine().value_or("(no reply)");
    }

    /// Runs SQL in the database while no host runs. Returns: the first column of the first row.
    std::string sql(const std::string& statements) {
        sqlite3* connection = nullptr;
        EXPECT_EQ(sqlite3_open(database().c_str(), &connection), SQLITE_OK);
        std::string result;
        char* error = nullptr;
        sqlite3_exec(
            connection, statements.c_str(),
            [](void* out, int, char** columns, char**) {
                *static_cast<std::string*>(out) = columns[0] == nullptr ? "" : columns[0];
                return 0;
            },
            &result, &error);
        EXPECT_EQ(error, nullptr) << error;
        sqlite3_free(error);
        sqlite3_close(connection);
        return result;
    }

    static bool contains(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }

    /// For tests that start the host themselves. Sanitizers need system calls that the sandbox forbids.
    const std::string sandboxSwitch = TestSupport::sanitized ? "--no-sandbox" : "";
    /// The command that starts the host, if any.
    Lines programPrefix;
    Lines webArguments{"--no-web"};
    std::map<std::string, std::string> environment;
    /// Passed to the host as by a service manager.
    std::vector<int> sockets;
    TestSupport::TemporaryDirectory folder;
    std::unique_ptr<TestSupport::ChildProcess> host;
    std::unique_ptr<WireTests::HostClient> ownClient;
    std::size_t memoryBefore = 0;
};

/// A fixture whose database is in memory: no waiting for a disk.
template <class Fixture>
class InMemory : public Fixture {
protected:
    std::string database() override { return memory / "settings.db"; }

private:
    TestSupport::TemporaryDirectory memory{TestSupport::memoryFolder()};
};

}  // namespace SystemTests
