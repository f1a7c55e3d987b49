#include "WebDoorFixture.h"

namespace SettingsHost {

using TestSupport::WebSocket;

/// Pages that are sent something while the web library rests: what a page asks for is done when its call is over. The
/// library is so patient that nothing wakes it by itself.
class WebSocketClientTest : public WebDoorTest {
protected:
    WebSocketClientTest() : WebDoorTest(600) {}

    /// Has `action` done outside the library's calls, as soon as a page asks for it.
    void onRequest(const std::function<void(const std::shared_ptr<Client>& page)>& action) {
        onFrame = [this, action](const auto& page, const auto&) {
            loop.later([page = std::weak_ptr<Client>(page), action] { action(page.lock()); });
        };
    }
};

TEST_F(WebSocketClientTest, OneThatReadsNothingIsDroppedThoughNothingComesIn) {
    constexpr int kernelTakes = 16 * 1024 * 1024;
    onRequest([](const auto& page) {
        const auto event = std::make_shared<const std::string>(10000, 'x');
        for (std::size_t sent = 0; sent < kernelTakes + maximumWaiting; sent += event->size()) {
            page->send(event);
        }
    });
    WebSocket page(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    page.sendText("x");
    waitFor([&] { return left == 1; });
    EXPECT_EQ(tooSlow, 1);
}

TEST_F(WebSocketClientTest, OneThatBrokeOffIsNotTakenForOneThatReadsTooSlowly) {
    WebSocket page(port, "/settings?key=thekey", "settings.v1");
    onRequest([&](const auto& client) {
        page.reset();
        // The kernel may need a moment to pass it on.
        for (int number = 0; number < 10; ++number) {
            sendTo(client, "event");
        }
    });
    page.sendText("x");
    waitFor([&] { return left == 1; });
    EXPECT_EQ(tooSlow, 0);
}

}  // namespace SettingsHost
