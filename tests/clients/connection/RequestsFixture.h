#pragma once

#include <functional>
#include <future>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "ClientFixture.h"
#include "ErrorOf.h"

namespace ClientTests {

/// Sends requests on one thread; the test is the host on another.
class ClientRequests : public ClientFixture {
protected:
    /// Sends what `request` sends while the host is served by the test.
    template <typename Request>
    auto start(Request request) {
        // With one type for all requests of a result: the compiler needs 0.2 s for each type that std::async runs.
        return std::async(std::launch::async, std::function<std::invoke_result_t<Request>()>(std::move(request)));
    }
    /// The host's end of the connection of the request that was started, its hello answered.
    Peer serve() {
        Peer host = listener->accept();
        EXPECT_EQ(host.receiveLine(), hello());
        host.sendLine(helloAnswer("r1", 0));
        return host;
    }
    static std::string setRequest(int number, const std::string& key, const std::string& value,
                                  const std::string& timestamp) {
        return R"({"type":24,"messageId":")" + id(number) + R"(","timestamp":)" + timestamp +
               R"(,"answer":true,"payload":{"settingDBId":")" + key + R"(","to":")" + value + R"("}})";
    }
    static std::string bare(int type, int number, const std::string& members = "") {
        return R"({"type":)" + std::to_string(type) + R"(,"messageId":")" + id(number) + "\"" + members + "}";
    }
    static std::string selected(int number) { return reply(18, number, R"({"isOrliaSelectedAsVA":true})"); }
    static std::string query(int number, const std::string& text) {
        return R"({"messageId":")" + id(number) + R"(",)" + text + "}";
    }
};

}  // namespace ClientTests
