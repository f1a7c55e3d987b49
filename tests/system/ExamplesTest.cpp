#include <functional>

#include "WebHostFixture.h"
#include "wire/Examples.h"

using WireTests::comparable;
using WireTests::Example;
using WireTests::HostClient;
using WireTests::HostWebSocket;
using WireTests::Step;

namespace SystemTests {

namespace {

constexpr auto question = R"({"type":18,"messageId":"played"})";
constexpr auto answer = R"({"type":18,"messageId":"played","payload":{"isOrliaSelectedAsVA":true}})";

/// What an example's client does at a door.
struct Side {
    std::function<bool(const std::string&)> send;
    std::function<std::optional<std::string>()> receive;
};

}  // namespace

/// The documents' examples, and what is close to them.
class Examples : public HostWeb {
protected:
    Side sideAt(const std::string& door) {
        if (door == "page") {
            const std::shared_ptr<HostWebSocket> socket = page();
            return {[socket](const std::string& text) { return socket->sendText(text); },
                    [socket] { return socket->receiveText(); }};
        }
        const auto line = std::make_shared<HostClient>(door == "device" ? deviceSocket() : socket());
        return {[line](const std::string& text) { return line->sendLine(text); },
                [line] { return line->receiveLine(); }};
    }

    /// Sends and expects what the example says, and nothing more.
    void play(const Example& example) {
        SCOPED_TRACE(example.name);
        std::map<std::string, Side> sides;
        for (const auto& step : example.steps) {
            if (sides.count(step.at) == 0) {
                sides[step.at] = sideAt(step.at);
                // One whose question was answered is known and will get events.
                expectNothingMore(step.at, sides[step.at]);
            }
        }
        for (const auto& step : example.steps) {
            Side& side = sides[step.at];
            if (step.sent) {
                ASSERT_TRUE(side.send(step.frame));
            } else {
                EXPECT_EQ(comparable(side.receive().value_or("nothing")), comparable(step.frame));
            }
        }
        for (auto& [door, side] : sides) {
            expectNothingMore(door, side);
        }
    }

    static void expectNothingMore(const std::string& door, Side& side) {
        const bool isDevice = door == "device";
        ASSERT_TRUE(side.send(isDevice ? R"({"command":"trace","enabled":false})" : question));
        EXPECT_EQ(side.receive(), isDevice ? R"({"ok":true})" : answer) << "more than the example says";
    }

    /// Both documents' examples start from a database as new.
    void playAll(const std::string& document, std::size_t atLeast) {
        startWeb();
        const auto examples = WireTests::examplesIn(document);
        EXPECT_GE(examples.size(), atLeast);
        for (const auto& example : examples) {
            play(example);
        }
    }
};

TEST_F(Examples, OfTheProtocolShowWhatTheHostDoes) {
    playAll("protocol.md", 11);
}

TEST_F(Examples, OfThePagesShowWhatTheHostDoes) {
    playAll("pages.md", 4);
}

}  // namespace SystemTests
