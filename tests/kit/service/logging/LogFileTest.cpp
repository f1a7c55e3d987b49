#include <csignal>
#include <filesystem>
#include <fstream>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SettingsHandlerKit/Logging.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

using TestSupport::contentOf;
using TestSupport::modeOf;

class LogFileTest : public ::testing::Test {
protected:
    void expectRefused(const std::string& reason) {
        LogFile file(path);
        EXPECT_FALSE(file.write("secret\n"));
        EXPECT_EQ(file.failure(), reason);
    }

    TestSupport::TemporaryDirectory folder;
    std::string path = folder / "host.log";
};

TEST_F(LogFileTest, AppendsToWhatIsThere) {
    std::ofstream(path) << "old\n";
    EXPECT_TRUE(LogFile(path).write("a\n"));
    LogFile file(path);
    EXPECT_TRUE(file.write("b\n"));
    EXPECT_EQ(contentOf(path), "old\na\nb\n");
}

TEST_F(LogFileTest, IsPrivateWhateverTheMask) {
    for (const mode_t mask : {0000U, 0077U, 0277U}) {
        const mode_t before = ::umask(mask);
        LogFile file(path, 4);
        EXPECT_TRUE(file.write("abc\n"));
        EXPECT_EQ(modeOf(path), 0600U) << mask;
        EXPECT_TRUE(file.write("def\n"));
        ::umask(before);
        EXPECT_EQ(modeOf(path), 0600U) << mask;
        EXPECT_EQ(modeOf(path + ".1"), 0600U) << mask;
        for (const auto* ending : {"", ".1"}) {
            std::filesystem::remove(path + ending);
        }
    }
    std::ofstream(path) << "old\n";
    ::chmod(path.c_str(), 0644);
    EXPECT_TRUE(LogFile(path).write("a\n"));
    EXPECT_EQ(modeOf(path), 0600U) << "others can still read it";
}

TEST_F(LogFileTest, KeepsThreeFilesOfWholeLinesWithinTheLimit) {
    LogFile file(path, 10);
    for (const auto* line : {"a1234\n", "b12\n", "c1234\n", "d\n", "e\n", "f1234567890123\n", "g\n", "h12345678\n"}) {
        EXPECT_TRUE(file.write(line));
    }
    EXPECT_EQ(contentOf(path), "h12345678\n");
    EXPECT_EQ(contentOf(path + ".1"), "g\n");
    EXPECT_EQ(contentOf(path + ".2"), "f1234567890123\n");
    EXPECT_FALSE(std::filesystem::exists(path + ".3"));
    EXPECT_EQ(LogFile::maximumSize, 1048576U);
}

TEST_F(LogFileTest, ContinuesInANewFileAfterReopening) {
    LogFile file(path, 10);
    EXPECT_TRUE(file.write("12345\n"));
    std::filesystem::rename(path, folder / "moved");
    EXPECT_TRUE(file.write("a\n"));
    EXPECT_TRUE(file.reopen());
    EXPECT_EQ(contentOf(path), "");
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_TRUE(file.write("123456789\n"));
    EXPECT_EQ(contentOf(folder / "moved"), "12345\na\n");
    EXPECT_EQ(contentOf(path), "123456789\n") << "the size was not reset";
    EXPECT_FALSE(std::filesystem::exists(path + ".1"));
    EXPECT_EQ(file.name(), path);
}

TEST_F(LogFileTest, CountsTheExistingSize) {
    std::ofstream(path) << "12345678\n";
    EXPECT_TRUE(LogFile(path, 10).write("a\n"));
    EXPECT_EQ(contentOf(path), "a\n");
    EXPECT_EQ(contentOf(path + ".1"), "12345678\n");
}

TEST_F(LogFileTest, RefusesLinksAndAnythingButRegularFiles) {
    const std::string precious = folder / "precious";
    std::ofstream(precious) << "precious";
    std::filesystem::create_symlink(precious, path);
    expectRefused("it is a link");
    std::filesystem::remove(path);
    std::filesystem::create_hard_link(precious, path);
    expectRefused("it is a link");
    std::filesystem::remove(path);
    std::filesystem::create_symlink(folder / "nowhere", path);
    expectRefused("it is a link");
    EXPECT_FALSE(std::filesystem::exists(folder / "nowhere"));
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    expectRefused("Is a directory");
    std::filesystem::remove(path);
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    expectRefused("No such device or address");
    EXPECT_EQ(contentOf(precious), "precious");
}

TEST_F(LogFileTest, RefusesAnotherUsersFile) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make a file of another user";
    }
    std::ofstream(path) << "theirs";
    ASSERT_EQ(::chown(path.c_str(), 12345, 12345), 0);
    expectRefused("it belongs to another user");
    EXPECT_EQ(contentOf(path), "theirs");
}

TEST_F(LogFileTest, LosesLinesWhileItCannotBeCreatedAndContinuesAfterwards) {
    LogFile file(folder / "later/host.log");
    EXPECT_FALSE(file.write("a\n"));
    EXPECT_EQ(file.failure(), "No such file or directory");
    std::filesystem::create_directory(folder / "later");
    EXPECT_TRUE(file.write("b\n"));
    EXPECT_EQ(contentOf(folder / "later/host.log"), "b\n");
}

TEST_F(LogFileTest, LosesLinesWhileItCannotBeRotatedAndContinuesAfterwards) {
    LogFile file(path, 4);
    EXPECT_TRUE(file.write("abc\n"));
    std::filesystem::create_directories(path + ".1/full");
    std::ofstream(path + ".2") << "a file that no folder can replace";
    EXPECT_FALSE(file.write("def\n"));
    EXPECT_EQ(contentOf(path), "abc\n");
    std::filesystem::remove_all(path + ".1");
    EXPECT_TRUE(file.write("ghi\n"));
    EXPECT_EQ(contentOf(path), "ghi\n");
    EXPECT_EQ(contentOf(path + ".1"), "abc\n");
}

TEST_F(LogFileTest, KeepsNoHalfLinesWhenTheDiskIsFull) {
    LogFile file(path);
    EXPECT_TRUE(file.write("abc\n"));
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit full{6, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    EXPECT_FALSE(file.write("defghi\n"));
    const std::string kept = contentOf(path);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, before);
    EXPECT_EQ(file.failure(), "File too large");
    EXPECT_EQ(kept, "abc\n");
    EXPECT_TRUE(file.write("jkl\n"));
    EXPECT_EQ(contentOf(path), "abc\njkl\n");
}

}  // namespace SettingsHandlerKit
