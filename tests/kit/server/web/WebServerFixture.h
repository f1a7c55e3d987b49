#pragma once

#include <atomic>
#include <fstream>
#include <memory>
#include <string>

#include "kit/server/sockets/ListenerRecording.h"
#include "server/web/WebServer.h"
#include "support/WebClient.h"

namespace SettingsHandlerKit {

/// A web port with two pages, on a loop in its own thread. Its WebSockets answer each frame in angle brackets.
class WebServerTest : public ListenerTest<WebServer> {
protected:
    explicit WebServerTest(std::uint16_t timeoutSeconds = 1, std::size_t mayWait = Backlog::maximum) {
        backlog = std::make_shared<Backlog>(mayWait);
        std::ofstream(folder / "index.html") << "<p>index</p>";
        std::ofstream(folder / "device.html") << "<p>device</p>";
        std::ofstream(folder / "large.js") << std::string(300000, 'x');
        auto tcp = std::make_unique<TcpListener>("127.0.0.1", 0);
        port = tcp->port();
        const WebAccess access({"127.0.0.1", port}, "http://localhost:5173", "thekey", "thesecret", [] { return now; });
        WebSite site{access,
                     PageFiles(folder.path().string()),
                     {{"/open",
                       [this] {
                           ++openResponses;
                           onOpen();
                           return plainResponse(503, "not yet");
                       }},
                      {"/long", [] { return plainResponse(200, std::string(15000, 'x')); }}},
                     timeoutSeconds};
        std::vector<WebSocketRoute> routes{{"/settings", "settings.v1", Origin::PAGE, *this},
                                           {"/device", "device.v1", Origin::DEVICE, *this}};
        auto made = std::make_unique<WebServer>(loop, std::move(tcp), std::move(site), std::move(routes), backlog);
        webServer = made.get();
        serve(std::move(made));
    }

    std::string host() const { return "Host: 127.0.0.1:" + std::to_string(port) + "\r\n"; }
    std::string cookie() const {
        return "Cookie: settings-" + std::to_string(port) + "=" + CookieSigner("thesecret").issue(now);
    }

    static constexpr std::int64_t now = 1700000000;
    std::uint16_t port = 0;
    std::atomic<int> openResponses{0};
    /// What the loop does before "/open" is answered.
    std::function<void()> onOpen = [] {};
    /// To be used on the loop's thread.
    WebServer* webServer = nullptr;
};

}  // namespace SettingsHandlerKit
