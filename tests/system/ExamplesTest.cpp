#include <functional>
#include <set>

#include "WebHostFixture.h"
#include "wire/Examples.h"
#include "wire/Mutations.h"

using WireTests::comparable;
using WireTests::Example;
using WireTests::HostClient;
using WireTests::HostWebSocket;

namespace SystemTests {

namespace {

constexpr auto question = R"({"type":18,"messageId":"played"})";
constexpr auto answer = R"({"type":18,"messageId":"played","payload":{"isOrliaSelectedAsVA":true}})";

/// What an example's client does at a listener.
struct Side {
    std::function<bool(const std::string&)> send;
    std::function<std::optional<std::string>()> receive;
};

}  // namespace

/// The documents' examples, and what is close to them.
class Examples : public HostWeb {
protected:
    Side sideAt(const std::string& listener) {
        if (listener == "page") {
            const std::shared_ptr<HostWebSocket> socket = page();
            return {[socket](const std::string& text) { return socket->sendText(text); },
                    [socket] { return socket->receiveText(); }};
        }
        const auto line = std::make_shared<HostClient>(listener == "device" ? deviceSocket() : socket());
        return {[line](const std::string& text) { return line->sendLine(text); },
                [line] { return line->receiveLine(); }};
    }

    /// The run of the host in place of the example's.
    std::string withRun(std::string frame) const {
        for (const auto& [shown, real] : runs) {
            const std::size_t place = frame.find(shown);
            if (place != std::string::npos) {
                frame.replace(place, shown.size(), real);
            }
        }
        return frame;
    }

    void expectFrame(const std::string& received, const std::string& expected) {
        EXPECT_EQ(comparable(received), comparable(expected));
        const auto run = [](const std::string& frame) -> std::string {
            const auto document = parsed(frame);
            return document.HasMember("hello") ? document["hello"]["run"].GetString() : "";
        };
        if (!HasFailure() && !run(expected).empty()) {
            runs[run(expected)] = run(received);
        }
    }

    /// Sends and expects what the example says, and nothing more.
    void play(const Example& example) {
        SCOPED_TRACE(example.name);
        played.insert(example.name);
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
                ASSERT_TRUE(side.send(withRun(step.frame)));
            } else {
                expectFrame(side.receive().value_or("nothing"), step.frame);
            }
        }
        for (auto& [listener, side] : sides) {
            expectNothingMore(listener, side);
        }
    }

    static void expectNothingMore(const std::string& listener, Side& side) {
        const bool isDevice = listener == "device";
        ASSERT_TRUE(side.send(isDevice ? R"({"command":"trace","enabled":false})" : question));
        EXPECT_EQ(side.receive(), isDevice ? R"({"ok":true})" : answer) << "more than the example says";
    }

    /// What comes back for a frame before the answer to a question after it: frames of all kinds but copies of
    /// messages.
    Lines reactionTo(Side& side, const std::string& listener, const std::string& frame) {
        const bool isDevice = listener == "device";
        const std::string last = isDevice ? R"({"error":{"code":"unknown-command")" : answer;
        side.send(frame);
        side.send(isDevice ? R"({"command":"played"})" : question);
        // A command that is not known has the answer of the question, but every command has an answer.
        std::size_t answersBefore = isDevice ? 1 : 0;
        Lines frames;
        for (;;) {
            const std::string line = side.receive().value_or(last);
            const bool isCopy = line.rfind(R"({"trace")", 0) == 0;
            if (!isCopy && answersBefore == 0 && line.rfind(last, 0) == 0) {
                return frames;
            }
            if (!isCopy) {
                frames.push_back(line);
                answersBefore = 0;
            }
        }
    }

    /// Did the host understand a frame to which this was the reaction?
    static bool wasUnderstood(const Lines& reaction) {
        static const std::set<std::string> notUnderstood{"unknown-type",  "unknown-command", "bad-argument",
                                                         "no-message-id", "bad-batch",       "bad-request"};
        if (reaction.empty()) {
            return false;
        }
        const auto frame = parsed(reaction.front());
        return reaction.front().find(R"("reason":"incomplete")") == std::string::npos &&
               (!frame.HasMember("error") || notUnderstood.count(frame["error"]["code"].GetString()) == 0);
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

    std::set<std::string> played;

private:
    /// The run of the host, by that of the examples.
    std::map<std::string, std::string> runs;
};

TEST_F(Examples, OfTheProtocolMatchTheHost) {
    playAll("protocol.md", 11);
}

TEST_F(Examples, OfThePagesMatchTheHost) {
    playAll("pages.md", 4);
}

TEST_F(Examples, ThatNoDocumentShowsMatchTheHost) {
    startWeb();
    stop();
    // Values that an older version stored, more than one reply may have.
    sql("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 39) "
        "INSERT INTO settings SELECT 'k' || i, printf('%060000d', i) FROM n");
    startWeb();
    for (const auto* const name : {"catalogue", "not-stored", "busy"}) {
        play(WireTests::exampleNamed(name));
    }
    std::filesystem::create_directory(database() + ".backup.new");
    play(WireTests::exampleNamed("no-backup"));
    for (const auto* const document : {"protocol.md", "pages.md"}) {
        for (const auto& example : WireTests::examplesIn(document)) {
            played.insert(example.name);
        }
    }
    for (const auto& example : WireTests::allExamples()) {
        EXPECT_EQ(played.count(example.name), 1U) << example.name << " is not played";
    }
}

TEST_F(Examples, OfInvalidFramesAreRefusedOrDropped) {
    startWeb();
    std::map<std::string, Side> sides{{"socket", sideAt("socket")}, {"device", sideAt("device")}};
    for (const auto& refused : WireTests::refusedFrames()) {
        const Lines reaction = reactionTo(sides[refused.at], refused.at, refused.frame);
        Lines codes;
        for (const auto& line : reaction) {
            const auto frame = parsed(line);
            codes.emplace_back(frame.HasMember("error") ? frame["error"]["code"].GetString() : line.c_str());
        }
        EXPECT_EQ(codes, refused.code.empty() ? Lines{} : Lines{refused.code}) << refused.frame;
    }
}

TEST_F(Examples, AreAcceptedAfterAMutationExactlyWhenTheirSchemaAcceptsThem) {
    startWeb();
    std::map<std::string, Side> sides{{"socket", sideAt("socket")}, {"device", sideAt("device")}};
    int number = 0;
    for (const std::string name :
         {"get-settings", "set-settings", "answers", "assistant", "batch", "resume", "history", "catalogue",
          "administration", "device-commands", "device-switches", "device-faults", "device-save"}) {
        for (const auto& step : WireTests::exampleNamed(name).steps) {
            // Requests without any answer have no fault but of their type; nor have those that set the same value
            // again.
            const bool isSameValue = name == "device-faults" && step.at == "socket";
            if (!step.sent || step.schema == "open-va-settings-request" || step.schema == "log-out-request" ||
                isSameValue) {
                continue;
            }
            for (const auto& mutation : WireTests::mutationsOf(step.frame)) {
                // So that the change of the example is one each time.
                reactionTo(sides["socket"], "socket",
                           setRequest("deviceName", "\"" + std::to_string(++number) + "\"", 1700000000000));
                EXPECT_EQ(wasUnderstood(reactionTo(sides[step.at], step.at, mutation.frame)),
                          !WireTests::Schemas::ofTheWire().faultOf(step.schema, mutation.frame))
                    << mutation.fault << ": " << mutation.frame;
            }
        }
    }
    EXPECT_GE(number, 150);
}

}  // namespace SystemTests
