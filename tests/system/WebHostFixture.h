#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "HostFixture.h"
#include "support/WebClient.h"

namespace SystemTests {

/// A host with web port and pages.
class HostWeb : public HostTest {
protected:
    HostWeb() {
        std::filesystem::create_directory(folder / "pages");
        std::ofstream(folder / "pages/index.html") << "<p>page</p>";
        webArguments = {"--listen", "127.0.0.1:0", "--pages", folder / "pages"};
    }

    /// Starts the host at port `at`, or at any free port if 0.
    void startWeb(const Lines& moreArguments = {}, std::uint16_t at = 0) {
        webArguments[1] = "127.0.0.1:" + std::to_string(at);
        host = launch(moreArguments);
        const auto ready = host->output().readLine();
        ASSERT_TRUE(ready) << host->errors().readAll(std::chrono::seconds(1));
        const std::string start = "ready: http://127.0.0.1:";
        const std::size_t slash = ready->find("/?key=");
        const std::size_t space = ready->find(' ', slash);
        ASSERT_EQ(ready->substr(0, start.size()), start);
        port = static_cast<std::uint16_t>(std::stoi(ready->substr(start.size(), slash - start.size())));
        key = ready->substr(slash + 6, space - slash - 6);
        EXPECT_EQ(ready->substr(space), " socket: " + socket());
        EXPECT_GE(key.size(), 32U);
    }

    /// A WebSocket that is opened with the key.
    std::unique_ptr<WireTests::HostWebSocket> page(const std::string& path = "/settings",
                                                   const std::string& protocol = "settings.v1") {
        auto socket = std::make_unique<WireTests::HostWebSocket>(port, path + "?key=" + key, protocol);
        EXPECT_EQ(socket->status(), 101);
        return socket;
    }

    /// The cookie that the host sets, "NAME=VALUE".
    static std::string cookieOf(const TestSupport::HttpResponse& answer) {
        const auto header = answer.headers.find("set-cookie");
        return header == answer.headers.end() ? "(none)" : header->second.substr(0, header->second.find(';'));
    }

    static rapidjson::Document next(WireTests::HostWebSocket& socket) {
        const auto text = socket.receiveText();
        EXPECT_TRUE(text) << "no frame";
        return parsed(text.value_or("{}"));
    }

    std::uint16_t port = 0;
    std::string key;
};

}  // namespace SystemTests
