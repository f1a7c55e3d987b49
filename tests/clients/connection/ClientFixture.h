#pragma once

#include <functional>
#include <future>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include "SettingsClient/Client.h"
#include "clients/support/Peer.h"
#include "support/TemporaryDirectory.h"

namespace ClientTests {

using Lines = std::vector<std::string>;
using TestSupport::waitTimeout;

/// A client, and the socket of a host whose role the test takes.
class ClientFixture : public testing::Test {
protected:
    static std::string event(int sequence, const std::string& key, const std::string& from, const std::string& to,
                             const std::string& members = "") {
        return R"({"type":25,"messageId":"host-1","timestamp":1700000000000,"sequence":)" + std::to_string(sequence) +
               R"(,"origin":"socket")" + members + R"(,"payload":{"settingDBId":")" + key + R"(","from":")" + from +
               R"(","to":")" + to + R"("}})";
    }
    /// The message id of request `number`, counted from 1; 0 is hello.
    static std::string id(int number) {
        return "kitchen-" + std::to_string(::getpid()) + "-" + (number == 0 ? "hello" : std::to_string(number));
    }
    /// What the client sends on a new connection.
    static std::string hello(const std::string& resume = "") {
        return R"({"messageId":")" + id(0) + R"(","hello":{"client":"kitchen")" + resume + "}}";
    }
    static std::string resume(const std::string& run, int sequence) {
        return R"(,"resume":{"run":")" + run + R"(","sequence":)" + std::to_string(sequence) + "}";
    }
    static std::string helloAnswer(const std::string& run, int sequence, const std::string& members = "") {
        return R"({"messageId":")" + id(0) + R"(","hello":{"version":"1.1.0","run":")" + run + R"(","sequence":)" +
               std::to_string(sequence) + members + "}}";
    }
    static std::string refusal(const std::string& code, const std::string& members = "") {
        return R"({"error":{"code":")" + code + R"(","message":"no")" + members + "}}";
    }
    /// What the host answers to request `number`, of `type`.
    static std::string reply(int type, int number, const std::string& payload) {
        return R"({"type":)" + std::to_string(type) + R"(,"messageId":")" + id(number) + R"(","payload":)" + payload +
               "}";
    }

    SettingsClient::Options options() const { return {"kitchen", {{path}}, waitTimeout}; }
    /// A new client in place of the one before.
    void startAnew() { owned.emplace(options()); }

    /// Writes down what the client's observers are told.
    void recordAll() {
        client.onEvent([this](const auto& told) {
            record.push_back(told.key + ": " + told.from + " -> " + told.to + " " + std::to_string(told.sequence));
        });
        client.onReread([this](const auto& told) {
            std::string line = told.missed ? "missed" : "reread";
            for (const auto& key : told.keys) {
                line += " " + key;
            }
            record.push_back(line);
        });
        client.onConnected([this] { record.emplace_back("connected"); });
        client.onDisconnected([this](const std::string& reason) { record.push_back("disconnected: " + reason); });
    }

    /// Calls `process` whenever it is due, until `condition` holds.
    void processUntil(const std::function<bool()>& condition) {
        const auto until = std::chrono::steady_clock::now() + waitTimeout;
        while (!condition()) {
            ASSERT_LT(std::chrono::steady_clock::now(), until);
            pollfd wanted{client.fileDescriptor(), POLLIN, 0};
            ::poll(&wanted, 1, 1000);
            client.process();
        }
    }
    /// Processes until the observers were told so much since the last time. Returns: what.
    Lines told(std::size_t count) {
        processUntil([&] { return record.size() >= count; });
        return std::exchange(record, {});
    }
    /// Processes until the client has connected.
    Peer accept() {
        std::optional<Peer> peer;
        processUntil([&] {
            pollfd wanted{listener->descriptor(), POLLIN, 0};
            if (::poll(&wanted, 1, 0) == 1) {
                peer.emplace(listener->accept());
            }
            return peer.has_value();
        });
        return std::move(peer.value());
    }
    /// A connection whose hello has its answer.
    Peer greet(const std::string& run = "r1", int sequence = 0) {
        Peer host = accept();
        EXPECT_EQ(host.receiveLine(), hello());
        host.sendLine(helloAnswer(run, sequence));
        processUntil([&] { return !record.empty() && record.back() == "connected"; });
        record.clear();
        return host;
    }
    std::string closed() const { return "disconnected: the host at " + path + " closed the connection"; }

    TestSupport::TemporaryDirectory folder;
    const std::string path = folder / "host.sock";
    std::optional<ListeningSocket> listener{std::in_place, path};
    std::optional<SettingsClient::Client> owned{std::in_place, options()};
    SettingsClient::Client& client = *owned;
    Lines record;
};

}  // namespace ClientTests
