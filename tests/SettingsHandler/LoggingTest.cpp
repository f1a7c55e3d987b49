#include <chrono>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "HandlerFixture.h"
#include "Logging.h"

namespace SettingsHandlerTests {

class Logging : public ::testing::Test {
protected:
    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::PlatformRecording recording{journal};
    VessaLogger::Log& log = SettingsHandler::logger;
};

TEST_F(Logging, PutsTagAndColonBeforeTheText) {
    SettingsHandler::log(log, "SettingsHandler", VessaLogger::TRACE, "Initialized Settings Handler");
    EXPECT_EQ(journal.take(), Entries{"log 0 SettingsHandler:Initialized Settings Handler"});
}

TEST_F(Logging, ExpandsUpToThreeArguments) {
    SettingsHandler::log(log, "T", VessaLogger::ERROR, "%s", "a");
    SettingsHandler::log(log, "T", VessaLogger::ERROR, "%s-%s", "a", "b");
    SettingsHandler::log(log, "T", VessaLogger::ERROR, "%s-%s-%s", "a", "b", "c");
    EXPECT_EQ(journal.take(), (Entries{"log 3 T:a", "log 3 T:a-b", "log 3 T:a-b-c"}));
}

TEST_F(Logging, ShortFormsLogAtTheirLevel) {
    SettingsHandler::logTrace("T", "%s", "a");
    SettingsHandler::logInformation("T", "%s", "a");
    SettingsHandler::logWarning("T", "%s", "a");
    SettingsHandler::logError("T", "%s", "a");
    EXPECT_EQ(journal.take(), (Entries{"log 0 T:a", "log 1 T:a", "log 2 T:a", "log 3 T:a"}));
}

TEST_F(Logging, EmitsSeveralKilobytesWhole) {
    const std::string big(100000, 'x');
    SettingsHandler::log(log, "T", VessaLogger::TRACE, "<%s>", big.c_str());
    EXPECT_EQ(journal.take(), Entries{"log 0 T:<" + big + ">"});
}

TEST_F(Logging, ReadsPercentSignsInTheFormatOnly) {
    SettingsHandler::log(log, "%s %d", VessaLogger::TRACE, "100%% of %s", "%n%s");
    EXPECT_EQ(journal.take(), Entries{"log 0 %s %d:100% of %n%s"});
}

TEST_F(Logging, EmptyTagAndTextLeaveTheColon) {
    SettingsHandler::log(log, "", VessaLogger::TRACE, "");
    EXPECT_EQ(journal.take(), Entries{"log 0 :"});
}

TEST_F(Logging, ThrowsAndEmitsNothingWhenTheFormatCannotBeExpanded) {
    try {
        // A field wider than any text can be.
        SettingsHandler::log(log, "T", VessaLogger::TRACE, "%2147483648s", "a");
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Error formatting string.");
    }
    EXPECT_EQ(journal.take(), Entries{});
}

TEST_F(Logging, GivesTimeThreadAndSource) {
    const auto before =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
    SettingsHandler::log(log, "T", VessaLogger::TRACE, "x");
    std::ostringstream thread;
    thread << std::this_thread::get_id();
    const auto line = SettingsHandlerTesting::lastLine();
    EXPECT_EQ(line.threadId, thread.str());
    EXPECT_EQ(line.source, 2);
    EXPECT_GE(line.secondsSinceEpoch, before);
    EXPECT_LE(line.secondsSinceEpoch, before + 20);
}

TEST_F(Logging, ExceptionsOfTheLoggerPass) {
    journal.at("log 0 T:x", [] { throw std::logic_error("sink"); });
    EXPECT_THROW(SettingsHandler::log(log, "T", VessaLogger::TRACE, "x"), std::logic_error);
}

}  // namespace SettingsHandlerTests
