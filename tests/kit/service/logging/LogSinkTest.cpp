#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "SettingsHandlerKit/Logging.h"
#include "Utils/Rapidjson.h"
#include "VessaLogger/LogSink.h"
#include "service/logging/LineFormat.h"
#include "support/Files.h"
#include "support/RegularExpression.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

class LogSinkTest : public ::testing::Test {
protected:
    void TearDown() override { VessaLogger::setLogSink({}); }

    static void sendLogTo(const LogSink& sink) {
        VessaLogger::setLogSink([sink](const VessaLogger::LogLine& line) {
            sink({line.level, line.time, line.threadId, line.text});
        });
    }

    /// What logging `text` at each level writes to standard error.
    static std::string written(int minimumLevel, LogFormat format, const std::string& text) {
        ::testing::internal::CaptureStderr();
        sendLogTo(makeLogSink({minimumLevel, format, ""}, context, nullptr));
        for (const auto level :
             {VessaLogger::TRACE, VessaLogger::INFORMATION, VessaLogger::WARNING, VessaLogger::ERROR}) {
            writeLog(level, text);
        }
        return ::testing::internal::GetCapturedStderr();
    }

    inline static const auto context = std::make_shared<RequestContext>();

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

TEST_F(LogSinkTest, WritesTimeLevelThreadAndText) {
    const auto written = lines(LogSinkTest::written(0, LogFormat::TEXT, "hello"));
    ASSERT_EQ(written.size(), 4U);
    const std::string begin = R"([0-9]{4}(-[0-9]{2}){2}T([0-9]{2}:){2}[0-9]{2}\.[0-9]{3}[+-][0-9]{2}:[0-9]{2} )";
    const std::vector<std::string> levels{"trace", "info ", "warning", "error"};
    for (std::size_t index = 0; index < levels.size(); ++index) {
        EXPECT_FALSE(
            TestSupport::matchOf(written[index], begin + levels[index] + R"( \[[0-9]+\] settings-host:hello)").empty())
            << written[index];
    }
}

TEST_F(LogSinkTest, FormatsTimesBefore1970) {
    const auto timesOf = [](const std::string& zone) {
        ::setenv("TZ", zone.c_str(), 1);
        ::tzset();
        std::string times;
        for (const int milliseconds : {-86400001, -1001, -1000, -500, -1, 0, 7, 1000}) {
            const LineFormat text(LogFormat::TEXT, context);
            const LineFormat json(LogFormat::JSON, context);
            const LogLine line{VessaLogger::ERROR,
                               std::chrono::system_clock::time_point(std::chrono::milliseconds(milliseconds)), "1",
                               "x"};
            const std::string written = text.textOf(line);
            const std::string time = written.substr(0, written.find(' '));
            EXPECT_EQ(json.textOf(line), R"({"time":")" + time + R"(","level":3,"thread":"1","text":"x"})" + "\n");
            EXPECT_EQ(written, time + " error [1] x\n");
            times += time + "\n";
        }
        ::unsetenv("TZ");
        ::tzset();
        return times;
    };
    EXPECT_EQ(timesOf("UTC0"),
              "1969-12-30T23:59:59.999+00:00\n1969-12-31T23:59:58.999+00:00\n1969-12-31T23:59:59.000+00:00\n"
              "1969-12-31T23:59:59.500+00:00\n1969-12-31T23:59:59.999+00:00\n1970-01-01T00:00:00.000+00:00\n"
              "1970-01-01T00:00:00.007+00:00\n1970-01-01T00:00:01.000+00:00\n");
    EXPECT_EQ(timesOf("West3:30"),
              "1969-12-30T20:29:59.999-03:30\n1969-12-31T20:29:58.999-03:30\n1969-12-31T20:29:59.000-03:30\n"
              "1969-12-31T20:29:59.500-03:30\n1969-12-31T20:29:59.999-03:30\n1969-12-31T20:30:00.000-03:30\n"
              "1969-12-31T20:30:00.007-03:30\n1969-12-31T20:30:01.000-03:30\n");
}

TEST_F(LogSinkTest, LeavesOutLinesBelowTheLevel) {
    EXPECT_EQ(lines(written(2, LogFormat::TEXT, "x")).size(), 2U);
    EXPECT_EQ(lines(written(3, LogFormat::JSON, "x")).size(), 1U);
}

TEST_F(LogSinkTest, WritesOneLineWhateverTheTextHolds) {
    const auto written = lines(LogSinkTest::written(3, LogFormat::TEXT, "a\nb\x1b[31m{} %v é"));
    ASSERT_EQ(written.size(), 1U);
    EXPECT_NE(written[0].find(R"(a\nb\x1b[31m{} %v é)"), std::string::npos) << written[0];
}

TEST_F(LogSinkTest, JsonLinesAreValidForAnyBytes) {
    const std::string text("quote \" NUL \0 bad \xff {} %v\n", 26);
    const auto written = lines(LogSinkTest::written(0, LogFormat::JSON, text));
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

TEST_F(LogSinkTest, JsonLinesNameTheRequest) {
    const auto membersOf = [](const std::string& line) {
        rapidjson::Document document;
        document.Parse(line.c_str());
        std::string members;
        for (const auto& member : document.GetObject()) {
            members += std::string(member.name.GetString()) + " ";
        }
        return members;
    };
    const std::string always = "time level thread text ";
    EXPECT_EQ(membersOf(lines(written(3, LogFormat::JSON, "x")).at(0)), always);
    {
        const RequestContext::Scope outer(*context, {24, "deviceName"});
        const std::string line = lines(written(3, LogFormat::JSON, "x")).at(0);
        EXPECT_NE(line.find(R"("requestType":24,"setting":"deviceName"})"), std::string::npos) << line;
        {
            const RequestContext::Scope inner(*context, {22, ""});
            EXPECT_EQ(membersOf(lines(written(3, LogFormat::JSON, "x")).at(0)), always + "requestType ");
        }
        EXPECT_EQ(membersOf(lines(written(3, LogFormat::JSON, "x")).at(0)), always + "requestType setting ");
        EXPECT_EQ(lines(written(3, LogFormat::TEXT, "x")).at(0).find("deviceName"), std::string::npos);
    }
    EXPECT_EQ(membersOf(lines(written(3, LogFormat::JSON, "x")).at(0)), always);
}

TEST_F(LogSinkTest, ReportsLostLinesBeforeTheNextLine) {
    std::array<int, 2> pipe{-1, -1};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK), 0);
    const int size = ::fcntl(pipe[1], F_SETPIPE_SZ, 4096);
    ASSERT_GT(size, 0);
    const int before = ::dup(STDERR_FILENO);
    ASSERT_EQ(::dup2(pipe[1], STDERR_FILENO), STDERR_FILENO);
    sendLogTo(makeLogSink({1, LogFormat::TEXT, ""}, context, nullptr));
    auto& log = VessaLogger::Log::instance();
    const auto emit = [&](const std::string& text) {
        log.emitLog(VessaLogger::INFORMATION, std::chrono::system_clock::now(), log.getThreadId(), text,
                    VessaLogger::NATIVE_SERVICE);
    };
    const auto readAll = [&] {
        std::string text(static_cast<std::size_t>(size), ' ');
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(::read(pipe[0], text.data(), text.size()), 0)));
        return text;
    };
    emit("a");
    const std::size_t shortLine = readAll().size();
    // The pipe has room for a short line, but not for a long one or for the line about lost lines. The kernel writes
    // such short lines completely or not at all.
    const std::size_t room = shortLine + 10;
    const std::string filling(static_cast<std::size_t>(size) - room, 'x');
    ASSERT_EQ(::write(pipe[1], filling.data(), filling.size()), static_cast<ssize_t>(filling.size()));
    emit(std::string(100, 'l'));
    emit("b");
    EXPECT_EQ(readAll(), filling);
    emit("c");
    ::dup2(before, STDERR_FILENO);
    const auto seen = lines(readAll());
    for (const int descriptor : {before, pipe[0], pipe[1]}) {
        ::close(descriptor);
    }
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_NE(seen[0].find("] settings-host:2 log lines were lost"), std::string::npos) << seen[0];
    EXPECT_NE(seen[1].find("] c"), std::string::npos) << seen[1];
}

TEST_F(LogSinkTest, AnUnwritableLogFileIsReportedAndLinesStillGoToStandardError) {
    TestSupport::TemporaryDirectory folder;
    const std::string file = folder / "none/host.log";
    ::testing::internal::CaptureStderr();
    sendLogTo(makeLogSink({1, LogFormat::TEXT, file}, context, std::make_shared<LogFile>(file)));
    writeLog(VessaLogger::INFORMATION, "a");
    const auto seen = lines(::testing::internal::GetCapturedStderr());
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_NE(seen[0].find("settings-host:the log file " + file +
                           " cannot be written to, its lines are lost: No such file or directory"),
              std::string::npos)
        << seen[0];
    EXPECT_NE(seen[1].find("settings-host:a"), std::string::npos);
    // After the folder is created the file holds the number of lost lines and the new line.
    std::filesystem::create_directory(folder / "none");
    ::testing::internal::CaptureStderr();
    writeLog(VessaLogger::INFORMATION, "b");
    ::testing::internal::GetCapturedStderr();
    const auto kept = lines(TestSupport::contentOf(file));
    ASSERT_EQ(kept.size(), 2U);
    EXPECT_NE(kept[0].find("warning"), std::string::npos) << kept[0];
    EXPECT_NE(kept[0].find("settings-host:1 log line was lost"), std::string::npos) << kept[0];
    EXPECT_NE(kept[1].find("settings-host:b"), std::string::npos);
}

}  // namespace SettingsHandlerKit
