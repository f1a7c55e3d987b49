#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include "WebDoorFixture.h"
#include "transport/RepeatingTimer.h"

namespace SettingsHost {

using TestSupport::WebSocket;

/// Pages that are sent something while the web library rests. It is so patient that nothing wakes it by itself.
class WebSocketClientTest : public WebDoorTest {
protected:
    WebSocketClientTest() : WebDoorTest(600) {}
    ~WebSocketClientTest() override { stop(); }

    /// Once a page has asked for it, has `action` done at every turn of the loop as long as the page is there; not at
    /// the first ones, because the library rests only a turn after it was called.
    void afterRequest(std::function<void(const std::shared_ptr<Client>& page)> action) {
        onFrame = [this, todo = std::move(action)](const auto& page, const auto&) {
            constexpr auto soon = std::chrono::milliseconds(1);
            turns.emplace(loop, soon, soon, [this, todo, page] {
                if (++turn > 2 && left == 0) {
                    todo(page);
                    leftDuringSend += left;
                }
            });
        };
    }

    int leftDuringSend = 0;

private:
    int turn = 0;
    std::optional<RepeatingTimer> turns;
};

TEST_F(WebSocketClientTest, OneThatReadsNothingIsDroppedThoughNothingComesIn) {
    const auto event = std::make_shared<const std::string>(10000, 'x');
    // Few at a time: the kernel takes the first ones bit by bit, and each time the library is called.
    afterRequest([&](const auto& page) { page->send(event); });
    WebSocket page(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    page.sendText("x");
    waitFor([&] { return left == 1; });
    stop();
    EXPECT_EQ(tooSlow, 1);
    EXPECT_EQ(leftDuringSend, 0) << "only the loop tells";
}

TEST_F(WebSocketClientTest, OneThatBrokeOffIsNotTakenForOneThatReadsTooSlowly) {
    WebSocket page(port, "/settings?key=thekey", "settings.v1");
    bool brokenOff = false;
    afterRequest([&](const auto& client) {
        if (!std::exchange(brokenOff, true)) {
            page.reset();
        }
        sendTo(client, "event");
    });
    page.sendText("x");
    waitFor([&] { return left == 1; });
    stop();
    EXPECT_EQ(tooSlow, 0);
    EXPECT_EQ(leftDuringSend, 0) << "only the loop tells";
}

}  // namespace SettingsHost
