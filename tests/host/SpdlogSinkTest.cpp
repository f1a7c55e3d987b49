#include <regex>

#include <gtest/gtest.h>

#include "Utils/Rapidjson.h"
#include "logging/HostLog.h"
#include "logging/SpdlogSink.h"

namespace SettingsHost {

class SpdlogSinkTest : public ::testing::Test {
protected:
    ~SpdlogSinkTest() override { VessaLogger::setLogSink({}); }

    /// What logging `text` at each level writes to standard error.
    static std::string written(int minimumLevel, LogFormat format, const std::string& text) {
        ::testing::internal::CaptureStderr();
        VessaLogger::setLogSink(makeSpdlogSink(minimumLevel, format));
        for (const auto level :
             {VessaLogger::TRACE, VessaLogger::INFORMATION, VessaLogger::WARNING, VessaLogger::ERROR}) {
            logHost(level, text);
        }
        return ::testing::internal::GetCapturedStderr();
    }

    static std::vector<std::string> lines(const std::string& text) {
        std::vector<std::string> result;
        std::size_t start = 0;
        for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
            result.push_back(text.substr(start, end - start));
            start = end + 1;
        }
        EXPECT_EQ(start, text.size()) << "a line without its end";
        return result;
    }
};

TEST_F(SpdlogSinkTest, WritesTimeLevelThreadAndText) {
    const auto written = lines(SpdlogSinkTest::written(0, LogFormat::TEXT, "hello"));
    ASSERT_EQ(written.size(), 4U);
    const std::string begin = R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d )";
    const std::vector<std::string> levels{"trace", "info ", "warning", "error"};
    for (std::size_t index = 0; index < levels.size(); ++index) {
        EXPECT_TRUE(
            std::regex_match(written[index], std::regex(begin + levels[index] + R"( \[\d+\] settings-host:hello)")))
            << written[index];
    }
}

TEST_F(SpdlogSinkTest, LeavesOutLinesBelowTheLevel) {
    EXPECT_EQ(lines(written(2, LogFormat::TEXT, "x")).size(), 2U);
    EXPECT_EQ(lines(written(3, LogFormat::JSON, "x")).size(), 1U);
}

TEST_F(SpdlogSinkTest, KeepsALineALineWhateverItHolds) {
    const auto written = lines(SpdlogSinkTest::written(3, LogFormat::TEXT, "a\nb\x1b[31m{} %v é"));
    ASSERT_EQ(written.size(), 1U);
    EXPECT_NE(written[0].find(R"(a\nb\x1b[31m{} %v é)"), std::string::npos) << written[0];
}

TEST_F(SpdlogSinkTest, JsonLinesAreValidForAnyBytes) {
    const std::string text("quote \" NUL \0 bad \xff {} %v\n", 26);
    const auto written = lines(SpdlogSinkTest::written(0, LogFormat::JSON, text));
    ASSERT_EQ(written.size(), 4U);
    for (int level = 0; level < 4; ++level) {
        rapidjson::Document line;
        line.Parse<rapidjson::kParseValidateEncodingFlag>(written[static_cast<std::size_t>(level)].c_str());
        ASSERT_FALSE(line.HasParseError()) << written[static_cast<std::size_t>(level)];
        EXPECT_EQ(line["level"].GetInt(), level);
        EXPECT_EQ(std::string(line["text"].GetString(), line["text"].GetStringLength()),
                  std::string("settings-host:quote \" NUL \0 bad \xEF\xBF\xBD {} %v\n", 42));
        EXPECT_TRUE(line["time"].IsString());
        EXPECT_TRUE(line["thread"].IsString());
    }
}

}  // namespace SettingsHost
