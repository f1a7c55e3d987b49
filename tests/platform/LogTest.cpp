#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "VessaLogger/Log.h"
#include "VessaLogger/LogSink.h"

namespace VessaLogger {

class LogTest : public ::testing::Test {
protected:
    void TearDown() override { setLogSink({}); }

    static void emit(const std::string& text, LogLevel level = INFORMATION) {
        Log::instance().emitLog(level, std::chrono::system_clock::now(), "thread", text, NATIVE_SERVICE);
    }
};

TEST_F(LogTest, IsOneObjectForTheProcess) {
    EXPECT_EQ(&Log::instance(), &Log::instance());
}

TEST_F(LogTest, WritesToStandardErrorUntilASinkIsSet) {
    ::testing::internal::CaptureStderr();
    emit("first\nline\x1b", WARNING);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "2 [thread] first\\nline\\x1b\n");
}

TEST_F(LogTest, PassesWholeLinesToTheSinkAndThenToStandardErrorAgain) {
    std::vector<std::string> lines;
    const auto time = std::chrono::system_clock::now();
    setLogSink([&](const LogLine& line) {
        EXPECT_EQ(line.time, time);
        EXPECT_EQ(line.source, NATIVE_SERVICE);
        lines.push_back(std::to_string(line.level) + line.threadId + line.text);
    });
    Log::instance().emitLog(ERROR, time, "t", "raw\nbytes \xff", NATIVE_SERVICE);
    EXPECT_EQ(lines, std::vector<std::string>{"3traw\nbytes \xff"});
    setLogSink({});
    ::testing::internal::CaptureStderr();
    emit("again");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "1 [thread] again\n");
    EXPECT_EQ(lines.size(), 1U);
}

TEST_F(LogTest, CallsTheSinkForOneLineAtATime) {
    int inside = 0;
    int lines = 0;
    setLogSink([&](const LogLine&) {
        EXPECT_EQ(++inside, 1);
        ++lines;
        --inside;
    });
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([] {
            for (int round = 0; round < 500; ++round) {
                emit("x");
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(lines, 4000);
}

TEST_F(LogTest, AnExceptionOfTheSinkPassesAndTheNextLineIsWritten) {
    bool fails = true;
    int lines = 0;
    setLogSink([&](const LogLine&) {
        if (fails) {
            throw std::runtime_error("sink");
        }
        ++lines;
    });
    EXPECT_THROW(emit("x"), std::runtime_error);
    fails = false;
    emit("y");
    EXPECT_EQ(lines, 1);
}

TEST_F(LogTest, EachThreadHasItsOwnConstantId) {
    const std::string own = Log::instance().getThreadId();
    EXPECT_EQ(Log::instance().getThreadId(), own);
    std::set<std::string> texts{own};
    for (int thread = 0; thread < 4; ++thread) {
        std::thread([&] {
            const std::string text = Log::instance().getThreadId();
            EXPECT_EQ(text, Log::instance().getThreadId());
            texts.insert(text);
        }).join();
    }
    EXPECT_EQ(texts.size(), 5U);
}

TEST(EscapeControlCharacters, MakesOnePrintableLine) {
    EXPECT_EQ(escapeControlCharacters(std::string("a\tb\r\n\0\x1f\x7f é", 11)), R"(a\tb\r\n\x00\x1f\x7f é)");
}

TEST(EscapeControlCharacters, EscapesTwoByteControlCharacters) {
    EXPECT_EQ(escapeControlCharacters("\xc2\x9b\x31m \xc2\xa0 \xc2"), "\\u009b1m \xc2\xa0 \xc2");
}

}  // namespace VessaLogger
