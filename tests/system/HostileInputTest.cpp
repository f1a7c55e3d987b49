#include <set>
#include <thread>

#include "WebHostFixture.h"
#include "support/ProcessUsage.h"
#include "support/Repeated.h"
#include "support/Sanitizers.h"

namespace SystemTests {

using WireTests::HostClient;

namespace {

constexpr std::size_t mebibyte = 1024UL * 1024;
/// A host that is sent an endless frame must not grow by more than this.
constexpr std::size_t endlessFrameGrowth = 8 * mebibyte;

const std::string unknownType =
    R"({"error":{"code":"unknown-type","message":"\"type\" must be one of the request types 7, 18, 19, 22, 24"}})";
const std::string tooDeep = R"({"error":{"code":"too-deep","message":"the frame is nested deeper than 32 levels"}})";
const std::string notJson = R"({"error":{"code":"not-json","message":"the frame is not JSON"}})";
const std::string tooLarge = R"({"error":{"code":"too-large","message":"the frame is larger than 64 KiB"}})";

/// JSON values of each kind; numbers are several kinds.
struct Value {
    std::string kind;
    std::string json;
};
const std::vector<Value> values{{"null", "null"},
                                {"boolean", "true"},
                                {"boolean", "false"},
                                {"integer", "0"},
                                {"integer", "-1"},
                                {"integer", "5000000000"},
                                {"fraction", "1.5"},
                                {"fraction", "7.0"},
                                {"fraction", "1e3"},
                                {"huge", "1e300"},
                                {"huge", "9223372036854775808"},
                                {"string", R"("")"},
                                {"string", R"("7")"},
                                {"string", R"("text")"},
                                {"array", "[]"},
                                {"array", R"(["text"])"},
                                {"array", "[[]]"},
                                {"object", "{}"},
                                {"object", R"({"a":1})"}};

/// A frame with a placeholder for a value.
struct Field {
    std::string name;
    std::string before;
    std::string after;
    /// The kinds of values that are valid here.
    std::set<std::string> validKinds;
    /// What the sender receives for all other values; nothing when empty.
    std::string answer;
};

const std::vector<Field> requestFields{
    {"type of GetSettings", R"({"type":)", R"(,"messageId":"m","payload":{"settings":[]}})", {}, unknownType},
    {"type of SetSettings",
     R"({"type":)",
     R"(,"timestamp":9,"payload":{"settingDBId":"deviceName","to":"x"}})",
     {},
     unknownType},
    {"messageId of GetSettings", R"({"type":7,"messageId":)", R"(,"payload":{"settings":[]}})", {"string"}, ""},
    {"payload of GetSettings", R"({"type":7,"messageId":"m","payload":)", "}", {}, ""},
    {"settings", R"({"type":7,"messageId":"m","payload":{"settings":)", "}}", {"array"}, ""},
    {"element of settings",
     R"({"type":7,"messageId":"m","payload":{"settings":["timezone",)",
     "]}}",
     {"string"},
     R"({"type":7,"messageId":"m","payload":{"settings":{"timezone":"America/Vancouver"}}})"},
    {"messageId of IsOrliaSelectedVA", R"({"type":18,"messageId":)", "}", {"string"}, ""},
    {"payload of IsOrliaSelectedVA",
     R"({"type":18,"messageId":"m","payload":)",
     "}",
     {},
     R"({"type":18,"messageId":"m","payload":{"isOrliaSelectedAsVA":true}})"},
    {"messageId of OpenVASettings", R"({"type":19,"messageId":)", "}", {}, ""},
    {"payload of OpenVASettings", R"({"type":19,"payload":)", "}", {}, ""},
    {"messageId of LogOut", R"({"type":22,"messageId":)", "}", {}, ""},
    {"payload of LogOut", R"({"type":22,"payload":)", "}", {}, ""},
    {"timestamp",
     R"({"type":24,"timestamp":)",
     R"(,"payload":{"settingDBId":"deviceName","to":"x"}})",
     {"integer"},
     ""},
    {"payload of SetSettings", R"({"type":24,"timestamp":9,"payload":)", "}", {}, ""},
    {"settingDBId", R"({"type":24,"timestamp":9,"payload":{"settingDBId":)", R"(,"to":"x"}})", {"string"}, ""},
    {"to", R"({"type":24,"timestamp":9,"payload":{"settingDBId":"deviceName","to":)", "}}", {"string"}, ""},
    {"to of a setting that lives elsewhere",
     R"({"type":24,"timestamp":9,"payload":{"settingDBId":"orliaLocale","to":)",
     "}}",
     {"string"},
     ""}};

const std::string badSwitch = R"({"error":{"code":"bad-argument","message":"\"enabled\" must be true or false"}})";
const std::string badSetting = R"({"error":{"code":"bad-argument","message":"\"key\" and \"value\" must be strings"}})";

const std::vector<Field> commandFields{
    {"command",
     R"({"command":)",
     R"(,"value":"fr-FR"})",
     {},
     R"({"error":{"code":"unknown-command","message":"\"command\" must be one of the device's commands, for example \"show\""}})"},
    {"locale",
     R"({"command":"locale","value":)",
     "}",
     {"string"},
     R"({"error":{"code":"bad-argument","message":"\"value\" must be a locale, for example \"fr-FR\""}})"},
    {"locales",
     R"({"command":"locales","values":)",
     "}",
     {"array"},
     R"({"error":{"code":"bad-argument","message":"\"values\" must be an array of locales, the primary one first"}})"},
    {"element of locales",
     R"({"command":"locales","values":["fr-FR",)",
     "]}",
     {"string"},
     R"({"error":{"code":"bad-argument","message":"\"values\" must be an array of locales, the primary one first"}})"},
    {"time zone",
     R"({"command":"timezone","value":)",
     "}",
     {"string"},
     R"({"error":{"code":"bad-argument","message":"\"value\" must be a time zone, for example \"Europe/Paris\""}})"},
    {"hands-free", R"({"command":"handsfree","enabled":)", "}", {"boolean"}, badSwitch},
    {"captions", R"({"command":"captions","enabled":)", "}", {"boolean"}, badSwitch},
    {"do-not-disturb", R"({"command":"doNotDisturb","enabled":)", "}", {"boolean"}, badSwitch},
    {"trace", R"({"command":"trace","enabled":)", "}", {"boolean"}, badSwitch},
    {"key of setting", R"({"command":"setting","value":"x","key":)", "}", {"string"}, badSetting},
    {"value of setting", R"({"command":"setting","key":"deviceName","value":)", "}", {"string"}, badSetting}};

}  // namespace

class HostileInput : public HostWeb {
protected:
    /// What the host sends to `sender` after `frame`, up to the reply to `question`.
    Lines answersTo(HostClient& sender, const std::string& frame, const std::string& question) {
        sender.sendLine(frame + "\n" + question);
        Lines answers;
        for (;;) {
            const auto line = sender.receiveLine();
            if (!line) {
                ADD_FAILURE() << "no answer after " << frame.substr(0, 200);
                return answers;
            }
            if (contains(*line, R"("messageId":"last")") || contains(*line, R"({"device":)")) {
                return answers;
            }
            answers.push_back(*line);
        }
    }

    Lines answersTo(const std::string& frame) {
        return answersTo(client(), frame, R"({"type":18,"messageId":"last"})");
    }

    /// Sends each field with each value of an invalid kind.
    void expectAnswers(const std::vector<Field>& fields, HostClient& sender, const std::string& question) {
        for (const auto& field : fields) {
            for (const auto& value : values) {
                if (field.validKinds.count(value.kind) == 0) {
                    const Lines expected = field.answer.empty() ? Lines{} : Lines{field.answer};
                    EXPECT_EQ(answersTo(sender, field.before + value.json + field.after, question), expected)
                        << field.name << ": " << value.json;
                }
            }
        }
    }

    /// All settings as a client and the device see them.
    std::string everything() {
        const auto reply = ask(getRequest("[]"));
        rapidjson::StringBuffer text;
        rapidjson::Writer<rapidjson::StringBuffer> writer(text);
        reply.Accept(writer);
        std::string shown = device(R"({"command":"show"})");
        // A request to open the settings application changes no setting.
        const std::string launched = R"("lastLaunchedApp":"voice-assistant-settings",)";
        const std::size_t place = shown.find(launched);
        if (place != std::string::npos) {
            shown.erase(place, launched.size());
        }
        return text.GetString() + shown;
    }
};

TEST_F(HostileInput, AValueOfAWrongTypeInAnyFieldOfARequestChangesNothing) {
    startWeb({"--log-level", "3"});
    const std::string before = everything();
    HostClient watcher(socket());
    watcher.sendLine(R"({"type":18,"messageId":"first"})");
    ASSERT_TRUE(watcher.receiveLine());
    expectAnswers(requestFields, client(), R"({"type":18,"messageId":"last"})");
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(answersTo(watcher, "", R"({"type":18,"messageId":"last"})"), Lines{}) << "another client was notified";
    stop();
    EXPECT_EQ(sql("SELECT count(*) FROM settings"), "0");
}

TEST_F(HostileInput, AValueOfAWrongTypeInAnyFieldOfACommandChangesNothing) {
    startWeb({"--log-level", "3"});
    const std::string before = everything();
    HostClient person(deviceSocket());
    expectAnswers(commandFields, person, R"({"command":"show"})");
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(answersTo(""), Lines{}) << "a client was notified";
    stop();
    EXPECT_EQ(sql("SELECT count(*) FROM settings"), "0");
    EXPECT_EQ(sql("SELECT count(*) FROM simulation"), "0");
}

TEST_F(HostileInput, TheMessageIdOfASetSettingsMayBeAnything) {
    startWeb({"--log-level", "3"});
    int number = 0;
    for (const auto& value : values) {
        ++number;
        const auto answers =
            answersTo(R"({"type":24,"timestamp":9,"messageId":)" + value.json +
                      R"(,"payload":{"settingDBId":"deviceName","to":"name )" + std::to_string(number) + "\"}}");
        ASSERT_EQ(answers.size(), 1U) << value.json;
        EXPECT_EQ(parsed(answers[0])["sequence"].GetInt(), number);
    }
}

TEST_F(HostileInput, NulAndInvalidUtf8AreRefusedAnywhereInAFrame) {
    startWeb({"--log-level", "3"});
    const std::string before = everything();
    const std::string frame = setRequest("deviceName", R"("Living room")");
    // NUL, an invalid byte, a lone continuation byte, an overlong form, a truncated character, a surrogate.
    const Lines invalidBytes{std::string(1, '\0'), "\xff", "\x80", "\xc0\xaf", "\xe2\x82", "\xed\xa0\x80"};
    for (std::size_t place = 0; place <= frame.size(); ++place) {
        for (const auto& bytes : invalidBytes) {
            std::string invalidFrame = frame;
            invalidFrame.insert(place, bytes);
            const auto answers = answersTo(invalidFrame);
            ASSERT_EQ(answers.size(), 1U) << place;
            EXPECT_STREQ(parsed(answers[0])["error"]["code"].GetString(), "not-json") << place;
        }
    }
    EXPECT_EQ(everything(), before);
}

TEST_F(HostileInput, DepthIsRefusedHoweverDeep) {
    startWeb({"--log-level", "3"});
    const std::string before = everything();
    const auto nested = [](std::size_t depth, const std::string& open, const std::string& close) {
        return R"({"type":7,"a":)" + TestSupport::repeated(open, depth) + "0" + TestSupport::repeated(close, depth) +
               "}";
    };
    EXPECT_EQ(answersTo(nested(31, "[", "]")), Lines{});
    for (const std::size_t depth : {32UL, 1000UL, 32000UL}) {
        EXPECT_EQ(answersTo(nested(depth, "[", "]")), Lines{tooDeep}) << depth;
    }
    EXPECT_EQ(answersTo(nested(10000, R"({"a":)", "}")), Lines{tooDeep});
    EXPECT_EQ(answersTo(TestSupport::repeated("[", 65000)), Lines{notJson});
    EXPECT_EQ(answersTo(nested(100000, "[", "]")), Lines{tooLarge});
    // In a value, which the handler parses again.
    const std::string text = TestSupport::repeated("[", 30000) + TestSupport::repeated("]", 30000);
    EXPECT_EQ(answersTo(setRequest("orliaLocale", "\"" + text + "\"")), Lines{});
    EXPECT_TRUE(
        contains(device(R"({"command":"setting","key":"orliaLocale","value":")" + text + "\"}"), R"("not-passed-on")"));
    for (const std::size_t depth : {32UL, 32000UL}) {
        EXPECT_EQ(device(nested(depth, "[", "]")), tooDeep);
    }
    EXPECT_EQ(device(nested(100000, "[", "]")), tooLarge);
    EXPECT_EQ(everything(), before);
    stop();
    EXPECT_EQ(sql("SELECT count(*) FROM settings"), "0");
}

TEST_F(HostileInput, DepthIsRefusedOverAWebSocketToo) {
    startWeb({"--log-level", "3"});
    const auto deep = [](std::size_t depth) {
        return R"({"a":)" + TestSupport::repeated("[", depth) + TestSupport::repeated("]", depth) + "}";
    };
    for (const auto& [path, protocol] : {std::pair("/settings", "settings.v1"), std::pair("/device", "device.v1")}) {
        const auto socket = page(path, protocol);
        socket->sendText(deep(32000));
        EXPECT_EQ(socket->receiveText(), tooDeep);
        socket->sendText(deep(100000));
        EXPECT_EQ(socket->receive().value_or(WireTests::HostWebSocket::Message()).closeStatus(), 1009);
    }
    EXPECT_EQ(get("deviceName"), "TV");
}

TEST_F(HostileInput, AnEndlessLineCostsNoMemoryAndOneRefusal) {
    startWeb({"--log-level", "3"});
    EXPECT_EQ(get("deviceName"), "TV");
    const std::size_t mebibytes = TestSupport::sanitized ? 16 : 64;
    for (const auto& path : {socket(), deviceSocket()}) {
        HostClient endless(path);
        endless.sendLine("x");
        ASSERT_EQ(endless.receiveLine(), notJson);
        startMeasuringMemory();
        const std::string piece(mebibyte, 'x');
        for (std::size_t number = 0; number < mebibytes; ++number) {
            ASSERT_TRUE(endless.send(piece));
        }
        endless.sendLine("\nx");
        EXPECT_EQ(endless.receiveLine(), tooLarge);
        EXPECT_EQ(endless.receiveLine(), notJson);
        expectGrowthBelow(endlessFrameGrowth);
        EXPECT_EQ(get("deviceName"), "TV");
    }
}

TEST_F(HostileInput, AnEndlessMessageClosesAWebSocketAndCostsNoMemory) {
    startWeb({"--log-level", "3"});
    EXPECT_EQ(get("deviceName"), "TV");
    startMeasuringMemory();
    const std::size_t descriptors = TestSupport::openDescriptors(host->pid());
    const std::string piece(mebibyte, 'x');
    constexpr int pieces = TestSupport::sanitized ? 8 : 64;
    for (const bool inOneFrame : {true, false}) {
        const auto socket = page();
        std::thread sender([&] {
            if (inOneFrame) {
                socket->sendFrame(1, TestSupport::repeated(piece, pieces), true);
            } else {
                socket->sendFrame(1, piece, false);
                for (int number = 1; number < pieces && socket->sendFrame(0, piece, false); ++number) {
                }
            }
        });
        EXPECT_EQ(socket->receive().value_or(WireTests::HostWebSocket::Message()).closeStatus(), 1009);
        sender.join();
    }
    expectGrowthBelow(endlessFrameGrowth);
    EXPECT_EQ(get("deviceName"), "TV");
    waitFor([&] { return TestSupport::openDescriptors(host->pid()) <= descriptors; });
}

}  // namespace SystemTests
