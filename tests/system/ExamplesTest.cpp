#include <map>
#include <memory>
#include <set>

#include "WebHostFixture.h"
#include "wire/Examples.h"
#include "wire/Mutations.h"

using WireTests::HostClient;

namespace SystemTests {

namespace {

constexpr auto question = R"({"type":18,"messageId":"played"})";
constexpr auto answer = R"({"type":18,"messageId":"played","payload":{"isOrliaSelectedAsVA":true}})";

}  // namespace

/// The documents' examples, and what is close to them.
class Examples : public HostWeb {
protected:
    std::unique_ptr<HostClient> clientAt(const std::string& listener) {
        return std::make_unique<HostClient>(listener == "device" ? deviceSocket() : socket());
    }

    /// What comes back for a frame before the answer to a question after it: frames of all kinds but copies of
    /// messages.
    static Lines reactionTo(HostClient& client, const std::string& listener, const std::string& frame) {
        const bool isDevice = listener == "device";
        const std::string last = isDevice ? R"({"error":{"code":"unknown-command")" : answer;
        client.sendLine(frame);
        client.sendLine(isDevice ? R"({"command":"played"})" : question);
        // A command that is not known has the answer of the question, but every command has an answer.
        std::size_t answersBefore = isDevice ? 1 : 0;
        Lines frames;
        for (;;) {
            const std::string line = client.receiveLine().value_or(last);
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
};

TEST_F(Examples, OfAReplyThatIsTooLargeMatchesTheHost) {
    startWeb();
    stop();
    // Values that an older version stored, more than one reply may have.
    sql("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 39) "
        "INSERT INTO settings SELECT 'k' || i, printf('%060000d', i) FROM n");
    startWeb();
    const auto client = clientAt("socket");
    for (const auto& step : WireTests::exampleNamed("busy").steps) {
        if (step.sent) {
            client->sendLine(step.frame);
        } else {
            EXPECT_EQ(client->receiveLine(), step.frame);
        }
    }
}

TEST_F(Examples, OfInvalidFramesAreRefusedOrDropped) {
    startWeb();
    std::map<std::string, std::unique_ptr<HostClient>> clients;
    for (const auto* const listener : {"socket", "device"}) {
        clients[listener] = clientAt(listener);
    }
    for (const auto& refused : WireTests::refusedFrames()) {
        const Lines reaction = reactionTo(*clients[refused.at], refused.at, refused.frame);
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
    std::map<std::string, std::unique_ptr<HostClient>> clients;
    for (const auto* const listener : {"socket", "device"}) {
        clients[listener] = clientAt(listener);
    }
    int number = 0;
    for (const std::string name :
         {"get-settings", "set-settings", "answers", "assistant", "batch", "resume", "history", "catalogue",
          "administration", "device-commands", "device-switches", "device-faults", "device-save"}) {
        for (const auto& step : WireTests::exampleNamed(name).steps) {
            // Requests without any answer have no fault but of their type; nor have those that set the same value
            // again.
            const bool isSameValue =
                step.schema == "set-settings-request" && step.frame.find("deviceName") == std::string::npos;
            if (!step.sent || step.schema == "open-va-settings-request" || step.schema == "log-out-request" ||
                isSameValue) {
                continue;
            }
            for (const auto& mutation : WireTests::mutationsOf(step.frame)) {
                // So that the change of the example is one each time.
                reactionTo(*clients["socket"], "socket",
                           setRequest("deviceName", "\"" + std::to_string(++number) + "\"", 1700000000000));
                EXPECT_EQ(wasUnderstood(reactionTo(*clients[step.at], step.at, mutation.frame)),
                          !WireTests::Schemas::ofTheWire().faultOf(step.schema, mutation.frame))
                    << mutation.fault << ": " << mutation.frame;
            }
        }
    }
    EXPECT_GE(number, 150);
}

}  // namespace SystemTests
