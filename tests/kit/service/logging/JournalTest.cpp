#include <chrono>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "service/logging/Journal.h"
#include "support/NotificationSocket.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

class JournalTest : public ::testing::Test {
protected:
    static std::string entry(VessaLogger::LogLevel level, const std::string& text,
                             const std::optional<CurrentRequest>& request = std::nullopt) {
        const std::string thread = "7";
        return journalEntry({level, std::chrono::system_clock::now(), thread, text}, request);
    }

    TestSupport::TemporaryDirectory folder;
};

TEST_F(JournalTest, AnEntryHasOneFieldForEachPartOfALine) {
    EXPECT_EQ(entry(VessaLogger::WARNING, "settings-host:x=y"),
              "MESSAGE=settings-host:x=y\nPRIORITY=4\nSYSLOG_IDENTIFIER=settings-host\n");
    EXPECT_EQ(entry(VessaLogger::ERROR, "a\nb\x1b[31mé", CurrentRequest{24, "deviceName"}),
              "MESSAGE=a\\nb\\x1b[31mé\nPRIORITY=3\nSYSLOG_IDENTIFIER=settings-host\nREQUEST_TYPE=24\n"
              "SETTING_KEY=deviceName\n");
    EXPECT_EQ(entry(VessaLogger::INFORMATION, "x", CurrentRequest{22, ""}),
              "MESSAGE=x\nPRIORITY=6\nSYSLOG_IDENTIFIER=settings-host\nREQUEST_TYPE=22\n");
    EXPECT_EQ(entry(VessaLogger::TRACE, "x").substr(10, 11), "PRIORITY=7\n");
}

TEST_F(JournalTest, NoKeyOfAClientAddsAField) {
    EXPECT_EQ(entry(VessaLogger::TRACE, "x", CurrentRequest{24, "a\nPRIORITY=0"}),
              std::string("MESSAGE=x\nPRIORITY=7\nSYSLOG_IDENTIFIER=settings-host\nREQUEST_TYPE=24\nSETTING_KEY\n") +
                  std::string("\x0c\0\0\0\0\0\0\0", 8) + "a\nPRIORITY=0\n");
}

TEST_F(JournalTest, EntriesArriveUnchanged) {
    TestSupport::NotificationSocket daemon(folder / "journal");
    Journal journal(folder / "journal");
    EXPECT_TRUE(journal.send("MESSAGE=a\n"));
    EXPECT_TRUE(journal.send("MESSAGE=b\n"));
    EXPECT_EQ(daemon.receive(), "MESSAGE=a\n");
    EXPECT_EQ(daemon.receive(), "MESSAGE=b\n");
}

TEST_F(JournalTest, AFullOrMissingJournalDoesNotBlock) {
    Journal journal(folder / "journal");
    EXPECT_FALSE(journal.send("MESSAGE=nobody is there\n"));
    {
        TestSupport::NotificationSocket daemon(folder / "journal");
        int sent = 0;
        while (journal.send("MESSAGE=x\n") && sent < 1000000) {
            ++sent;
        }
        EXPECT_GT(sent, 0);
        EXPECT_LT(sent, 1000000);
        EXPECT_TRUE(daemon.receive());
        EXPECT_TRUE(journal.send("MESSAGE=there is room again\n"));
    }
    EXPECT_FALSE(journal.send("MESSAGE=it is gone\n"));
    ::unlink((folder / "journal").c_str());
    TestSupport::NotificationSocket next(folder / "journal");
    EXPECT_TRUE(journal.send("MESSAGE=it is back\n"));
    EXPECT_EQ(next.receive(), "MESSAGE=it is back\n");
}

TEST_F(JournalTest, TheEnvironmentSaysWhetherStandardErrorIsTheJournal) {
    struct stat status {};
    ASSERT_EQ(::fstat(STDERR_FILENO, &status), 0);
    ::unsetenv("JOURNAL_STREAM");
    EXPECT_FALSE(isStandardErrorTheJournal());
    ::setenv("JOURNAL_STREAM", "1:2", 1);
    EXPECT_FALSE(isStandardErrorTheJournal()) << "inherited from the parent process";
    ::setenv("JOURNAL_STREAM", (std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino)).c_str(), 1);
    EXPECT_TRUE(isStandardErrorTheJournal());
    ::unsetenv("JOURNAL_STREAM");
}

}  // namespace SettingsHandlerKit
