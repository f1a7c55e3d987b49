#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "server/web/WebSocketFraming.h"
#include "support/WebClient.h"

namespace SettingsHandlerKit {

namespace {

using TestSupport::WebSocket;

constexpr std::size_t limit = 1000;

std::string frame(int kind, const std::string& payload, bool final = true) {
    return WebSocket::frameBytes(kind, payload, final);
}

std::string control(WebSocketFraming& framing) {
    std::string output;
    framing.encodeControl(output);
    return output;
}

/// Frames and what the protocol answered, in order.
std::string taken(WebSocketFraming& framing) {
    std::string all;
    while (const auto next = framing.next()) {
        all += control(framing) + "<" + next->text + ">";
    }
    return all + control(framing);
}

std::string takenAtOnce(const std::string& bytes) {
    WebSocketFraming framing(limit, std::make_shared<WebSocketWriter>(), bytes);
    return taken(framing);
}

std::string closed(int status, const std::string& reason = "") {
    return std::string("\x88") + static_cast<char>(2 + reason.size()) + static_cast<char>(status / 256) +
           static_cast<char>(status % 256) + reason;
}

}  // namespace

TEST(WebSocketFramingTest, TheResultDoesNotDependOnHowTheBytesCome) {
    const std::string bytes = frame(1, "one") + frame(1, "t", false) + frame(9, "ping") + frame(0, "w", false) +
                              frame(0, "o") + frame(10, "") + frame(1, "") + frame(1, std::string(limit, 'l')) +
                              frame(1, "\xC3\xA9", false) + frame(0, "\xE2\x82", false) + frame(0, "\xAC") +
                              frame(8, "\x03\xe8") + frame(1, "ignored");
    const std::string expected = "<one>\x8a\x04ping<two><><" + std::string(limit, 'l') + "><\xC3\xA9\xE2\x82\xAC>" +
                                 closed(1000);
    EXPECT_EQ(takenAtOnce(bytes), expected);
    for (std::size_t size = 1; size < bytes.size(); size = size < 40 ? size + 1 : size * 2) {
        WebSocketFraming framing(limit, std::make_shared<WebSocketWriter>(), "");
        std::string all;
        for (std::size_t start = 0; start < bytes.size(); start += size) {
            framing.append(bytes.data() + start, std::min(size, bytes.size() - start));
            all += taken(framing);
        }
        EXPECT_EQ(all, expected) << size;
        EXPECT_TRUE(framing.hasEnded());
    }
}

TEST(WebSocketFramingTest, AMessageWaitsUntilTheOneBeforeItIsHandled) {
    WebSocketFraming framing(limit, std::make_shared<WebSocketWriter>(), frame(1, "one") + frame(1, "two") + frame(9, "p"));
    EXPECT_EQ(framing.next()->text, "one");
    EXPECT_EQ(framing.size(), frame(1, "two").size() + frame(9, "p").size());
    EXPECT_EQ(framing.next()->text, "two");
    EXPECT_EQ(control(framing), "") << "the ping is behind it";
    EXPECT_FALSE(framing.next());
    EXPECT_EQ(control(framing), "\x8a\x01p");
    EXPECT_EQ(framing.memory(), 0U);
}

TEST(WebSocketFramingTest, AViolationOfTheProtocolClosesWith1002) {
    std::string unmasked = "\x81\x01x";
    std::vector<std::string> violations{unmasked,
                                        "\x89\x01x",
                                        "\x88\x02\x03\xe8",
                                        "\x81\x7e\x01\x2c" + std::string(300, 'x'),
                                        frame(9, std::string(126, 'x')),
                                        frame(9, "x", false),
                                        frame(8, "\x03"),
                                        frame(0, "x"),
                                        frame(1, "a", false) + frame(1, "b"),
                                        std::string("\x81\xfe\x00\x01\x01\x02\x03\x04y", 9)};
    for (const int kind : {3, 4, 5, 6, 7, 11, 12, 13, 14, 15}) {
        violations.push_back(frame(kind, "x"));
    }
    for (const int reserved : {0x10, 0x20, 0x40}) {
        violations.push_back(frame(1, "x"));
        violations.back()[0] = static_cast<char>(violations.back()[0] | reserved);
    }
    for (const auto& violation : violations) {
        EXPECT_EQ(takenAtOnce(violation + frame(1, "more")), closed(1002)) << ::testing::PrintToString(violation);
        EXPECT_EQ(takenAtOnce(frame(1, "before") + violation), "<before>" + closed(1002));
    }
    EXPECT_EQ(takenAtOnce(frame(9, std::string(125, 'x'))), "\x8a\x7d" + std::string(125, 'x'));
}

TEST(WebSocketFramingTest, ACloseFrameIsAnsweredWithItsStatusIfThatIsValid) {
    const auto answer = [](int status, const std::string& reason) {
        return takenAtOnce(frame(8, closed(status, reason).substr(2)) + frame(1, "ignored"));
    };
    for (const int status : {1000, 1001, 1003, 1007, 1011, 3000, 4999}) {
        EXPECT_EQ(answer(status, "bye"), closed(status, "bye"));
    }
    for (const int status : {0, 999, 1004, 1005, 1006, 1015, 1016, 2999, 5000, 65535}) {
        EXPECT_EQ(answer(status, ""), closed(1002)) << status;
    }
    EXPECT_EQ(answer(1000, "\xff"), closed(1007));
    EXPECT_EQ(takenAtOnce(frame(8, "")), std::string("\x88\x00", 2));
}

TEST(WebSocketFramingTest, OnlyTextsInUtf8UpToTheLimitAreTaken) {
    EXPECT_EQ(takenAtOnce(frame(2, "x")), closed(1003, "text frames only"));
    for (const auto* invalid : {"\xff", "\x80", "\xc0\xaf", "\xe2\x82", "\xed\xa0\x80", "\xf4\x90\x80\x80"}) {
        EXPECT_EQ(takenAtOnce(frame(1, std::string("a") + invalid)), closed(1007));
        EXPECT_EQ(takenAtOnce(frame(1, "a", false) + frame(0, invalid)), closed(1007));
    }
    const std::string tooLarge = closed(1009, "a frame over 64 KiB");
    EXPECT_EQ(takenAtOnce(frame(1, std::string(limit + 1, 'x'))), tooLarge);
    EXPECT_EQ(takenAtOnce(frame(1, std::string(limit, 'x'), false) + frame(0, "y")), tooLarge);
    EXPECT_EQ(takenAtOnce(frame(1, std::string(limit, 'x'), false) + frame(0, "")), "<" + std::string(limit, 'x') + ">");
    // It is refused by its header.
    EXPECT_EQ(takenAtOnce(frame(1, std::string(70000, 'x')).substr(0, 15)), tooLarge);
    EXPECT_EQ(takenAtOnce("\x81\xff\x7f" + std::string(7, '\xff') + "mask" + "x"), tooLarge);
}

TEST(WebSocketFramingTest, AMessageOfManyFragmentsTakesNoMoreMemoryThanItsText) {
    WebSocketFraming framing(100000, std::make_shared<WebSocketWriter>(), frame(1, "x", false));
    EXPECT_FALSE(framing.next());
    for (int number = 0; number < 50000; ++number) {
        const std::string part = frame(0, "x", false);
        framing.append(part.data(), part.size());
        EXPECT_FALSE(framing.next());
    }
    EXPECT_GE(framing.memory(), 50000U);
    EXPECT_LE(framing.memory(), 2 * 65536U);
    framing.clear();
    EXPECT_EQ(framing.memory(), 0U);
}

TEST(WebSocketFramingTest, FramesAreSentInParts) {
    WebSocketFraming framing(limit, std::make_shared<WebSocketWriter>(), "");
    std::string output;
    framing.encode("", 0, 0, output);
    framing.encode("abc", 0, 1, output);
    framing.ping();
    framing.encodeControl(output);
    framing.encode("abc", 1, 2, output);
    EXPECT_EQ(output, std::string("\x81\x00\x01\x01"
                                  "a\x89\x00\x80\x02"
                                  "bc",
                                  11));
    output.clear();
    framing.closeAtEnd(1001, "the host stops");
    EXPECT_EQ(control(framing), "") << "not before the end";
    framing.encodeEnd(output);
    framing.encodeEnd(output);
    framing.ping();
    framing.encodeControl(output);
    EXPECT_EQ(output, closed(1001, "the host stops")) << "once, and nothing after it";
}

}  // namespace SettingsHandlerKit
