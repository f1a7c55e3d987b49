#include <random>

#include "HandlerFixture.h"
#include "Json.h"

namespace SettingsHandlerTests {

bool isAcceptedByDefaultFlags(const std::string& text) {
    rapidjson::Document document;
    return !document.Parse(text.c_str()).HasParseError();
}

bool isAccepted(const std::string& text) {
    SettingsHandler::ParsedText parsed;
    return parsed.parse(text);
}

/// Texts are parsed iteratively, so that no depth exhausts the stack. The language must be that of the default flags.
TEST(ParserLanguage, IsTheOneOfTheDefaultFlags) {
    const std::vector<std::string> pieces{"{",  "}", "[",  "]",       ",",   ":",    "\"a\"", "\"\"",
                                          "1",  "-", "0",  "1.5",     "1e5", "true", "null",  " ",
                                          "\n", "x", "\"", "\\u0041", "/",   "NaN",  "'a'",   "\xef\xbb\xbf"};
    std::mt19937 random(7);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts each time
    int accepted = 0;
    for (int round = 0; round < 200000; ++round) {
        std::string text;
        const auto length = 1 + random() % 8;
        for (unsigned piece = 0; piece < length; ++piece) {
            text += pieces[random() % pieces.size()];
        }
        ASSERT_EQ(isAccepted(text), isAcceptedByDefaultFlags(text)) << text;
        accepted += isAccepted(text) ? 1 : 0;
    }
    EXPECT_GT(accepted, 1000) << "too few texts were JSON";
}

TEST(ParserLanguage, BuildsTheSameDocuments) {
    for (const auto* text : {R"({"a":[1,-0,2.5,1e300,"x\u0000y",null,true,{"b":{}}],"a":2})", "[]", "{}", " \"x\" ",
                             "[[[],[]],[{}],{\"k\":[]}]", "18446744073709551615", "-9223372036854775808"}) {
        rapidjson::Document theirs;
        theirs.Parse(text);
        SettingsHandler::ParsedText ours;
        ASSERT_TRUE(ours.parse(text)) << text;
        EXPECT_EQ(SettingsHandlerTesting::jsonText(ours.root()), SettingsHandlerTesting::jsonText(theirs));
    }
}

/// Usual texts fit into a buffer on the stack; larger ones use the heap.
TEST(ParserLanguage, BuildsTheSameDocumentsOfAnySize) {
    for (const std::size_t size : {100U, 250U, 260U, 900U, 1000U, 1100U, 4000U, 4200U, 70000U}) {
        const std::string longText(size, 'x');
        std::string text = R"({"a":")";
        text.append(longText).append(R"(","b":[[["ä)").append(longText).append(R"(",1]]],"c":{}})");
        rapidjson::Document theirs;
        theirs.Parse(text.c_str());
        SettingsHandler::ParsedText ours;
        ASSERT_TRUE(ours.parse(text)) << size;
        EXPECT_EQ(SettingsHandlerTesting::jsonText(ours.root()), SettingsHandlerTesting::jsonText(theirs)) << size;
    }
}

TEST(ParserLanguage, AParseErrorLeavesAnEmptyObject) {
    for (const auto* text : {"", "{", "[1,2", "{\"a\":1} x"}) {
        SettingsHandler::ParsedText parsed;
        EXPECT_FALSE(parsed.parse(text));
        EXPECT_TRUE(parsed.root().IsObject()) << text;
        EXPECT_EQ(parsed.root().MemberCount(), 0U) << text;
    }
}

}  // namespace SettingsHandlerTests
