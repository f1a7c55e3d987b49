#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "Utils/Rapidjson.h"
#include "support/ChildProcess.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"
#include "wire/HostClients.h"

namespace SystemTests {

using Lines = std::vector<std::string>;

inline rapidjson::Document parsed(const std::string& line) {
    rapidjson::Document document;
    document.Parse(line.c_str());
    EXPECT_FALSE(document.HasParseError()) << line;
    return document;
}

/// A host of its own for each test, in a folder of its own.
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

    /// Stops the host as a person would and collects its log.
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

    /// What the host answers to a question on the test's own connection; frames before the answer go to `before`.
    rapidjson::Document ask(const std::string& request, Lines* before = nullptr) {
        client().sendLine(request);
        for (;;) {
            const auto line = client().receiveLine();
            if (!line) {
                ADD_FAILURE() << "no answer to " << request;
                return rapidjson::Document(rapidjson::kObjectType);
            }
            auto frame = parsed(*line);
            if ((frame.HasMember("type") && frame["type"].GetInt() != 25) || frame.HasMember("error")) {
                return frame;
            }
            if (before != nullptr) {
                before->push_back(*line);
            }
        }
    }

    /// The value of a setting; "(none)" when it has none.
    std::string get(const std::string& key) {
        const auto reply = ask(getRequest("[\"" + key + "\"]"));
        const auto& settings = reply["payload"]["settings"];
        return settings.HasMember(key.c_str()) ? settings[key.c_str()].GetString() : "(none)";
    }

    /// The answer of the device socket to one command.
    std::string device(const std::string& command) {
        WireTests::HostClient person(deviceSocket());
        person.sendLine(command);
        return person.receiveLine().value_or("(no answer)");
    }

    /// Runs SQL in the database of a host that does not run. Returns: the first column of the first row.
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

    /// For those who start the host themselves. The runtime of a sanitizer needs more of the system than the host.
    const std::string sandboxSwitch = TestSupport::sanitized ? "--no-sandbox" : "";
    /// What starts the host, when it is not the test itself.
    Lines programPrefix;
    Lines webArguments{"--no-web"};
    std::map<std::string, std::string> environment;
    /// What a service manager would pass to the host.
    std::vector<int> sockets;
    TestSupport::TemporaryDirectory folder;
    std::unique_ptr<TestSupport::ChildProcess> host;
    std::unique_ptr<WireTests::HostClient> ownClient;
};

}  // namespace SystemTests
