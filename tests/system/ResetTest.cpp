#include <algorithm>
#include <filesystem>
#include <fstream>

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "HostFixture.h"

namespace SystemTests {

/// `settings-host --reset`.
class HostReset : public HostTest {
protected:
    Lines command(const Lines& moreArguments = {}) {
        Lines arguments{SETTINGS_HOST, "--storage", database(), "--log-file", logFile(), "--reset"};
        arguments.insert(arguments.end(), moreArguments.begin(), moreArguments.end());
        return arguments;
    }

    TestSupport::Finished reset(const Lines& moreArguments = {"--yes"}) {
        return TestSupport::run(command(moreArguments));
    }

    /// Runs it at a terminal with `answer` as input. Returns: exit status and output.
    std::pair<int, std::string> resetAtATerminal(const std::string& answer) {
        const Lines arguments = command();
        int terminal = -1;
        const pid_t process = ::forkpty(&terminal, nullptr, nullptr, nullptr);
        if (process == 0) {
            ::execl(arguments[0].c_str(), arguments[0].c_str(), arguments[1].c_str(), arguments[2].c_str(),
                    arguments[3].c_str(), arguments[4].c_str(), arguments[5].c_str(), nullptr);
            ::_exit(127);
        }
        EXPECT_EQ(::write(terminal, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
        std::string shown;
        char bytes[1000];
        for (ssize_t size = 1; size > 0;) {
            size = ::read(terminal, bytes, sizeof bytes);
            shown.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        }
        int status = 0;
        ::waitpid(process, &status, 0);
        ::close(terminal);
        return {WEXITSTATUS(status), shown};
    }

    /// Leaves every file that hosts may leave.
    void use() {
        start({"--log-file", logFile()});
        set("deviceName", "\"Den\"");
        disconnect();
        stop();
        for (const auto* ending : {".backup.1", ".backup.2", ".backup.new", ".damaged", ".damaged-wal", ".damaged.2",
                                   ".restoring", ".log-out"}) {
            std::filesystem::copy_file(database(), database() + ending);
        }
        std::ofstream(logFile() + ".1") << "older lines";
        std::ofstream(folder / "state/settings.db.mine") << "somebody's";
        std::ofstream(folder / "state/host.log.3") << "somebody's";
    }

    Lines files() { return TestSupport::namesIn(folder / "state"); }

    /// The list that is printed, in the order of removal.
    std::string list(const std::string& head) {
        std::string text = head + "\n";
        for (const auto* name :
             {"host.log.1", "host.log", "settings.db.backup.1", "settings.db.backup.2", "settings.db.backup.new",
              "settings.db.damaged", "settings.db.damaged-wal", "settings.db.damaged.2", "settings.db.restoring",
              "settings.db.log-out", "settings.db"}) {
            text += "  " + (folder / "state/") + name + "\n";
        }
        return text;
    }

    std::string logFile() { return folder / "state/host.log"; }

    const Lines foreignFiles{"host.log.3", "settings.db.mine"};
};

TEST_F(HostReset, RemovesAllFilesAndTheNextHostStartsWithDefaults) {
    use();
    const auto done = reset();
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.output, list("Removing:"));
    EXPECT_EQ(done.errors, "");
    EXPECT_EQ(files(), foreignFiles);
    start();
    EXPECT_EQ(get("deviceName"), "TV");
    disconnect();
    const std::string log = stop();
    EXPECT_FALSE(contains(log, "missing")) << log;
}

TEST_F(HostReset, RefusesBesideARunningHost) {
    use();
    start();
    const Lines before = files();
    const auto refused = reset();
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output, "");
    EXPECT_EQ(refused.errors, "settings-host: " + database() + " is in use by another process\n");
    EXPECT_EQ(files(), before);
    EXPECT_EQ(get("deviceName"), "Den");
}

TEST_F(HostReset, RefusesWhileAnotherProcessReadsTheDatabase) {
    use();
    const Lines before = files();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(database().c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN; SELECT * FROM settings", nullptr, nullptr, nullptr), SQLITE_OK);
    const auto refused = reset();
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(contains(refused.errors, "is in use by another process")) << refused.errors;
    sqlite3_close(other);
    EXPECT_EQ(sql("SELECT value FROM settings WHERE key='deviceName'"), "Den");
    EXPECT_EQ(files(), before);
}

TEST_F(HostReset, RefusesTheDatabaseOfAnotherProgram) {
    std::filesystem::create_directory(folder / "state");
    sql("CREATE TABLE theirs (x); INSERT INTO theirs VALUES (1)");
    const auto refused = reset();
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.errors, "settings-host: " + database() + " belongs to another program; left unchanged\n");
    EXPECT_EQ(sql("SELECT x FROM theirs"), "1");
}

TEST_F(HostReset, RemovesADatabaseThatIsDamagedOrOfANewerVersion) {
    use();
    sql("PRAGMA user_version=99");
    EXPECT_EQ(reset().status, 0);
    EXPECT_EQ(files(), foreignFiles);
    std::ofstream(database()) << std::string(10000, 'x');
    std::ofstream(database() + ".backup.1") << "a copy";
    EXPECT_EQ(reset().status, 0);
    EXPECT_EQ(files(), foreignFiles);
}

TEST_F(HostReset, RefusesAFileThatNeverWasADatabase) {
    std::filesystem::create_directory(folder / "state");
    std::ofstream(database()) << "somebody's notes";
    const auto refused = reset();
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.errors, "settings-host: " + database() + " is not a database; left unchanged\n");
    EXPECT_EQ(files(), Lines{"settings.db"});
}

TEST_F(HostReset, DoesNothingWithoutFiles) {
    const auto done = reset();
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.output, "Nothing to remove.\n");
    EXPECT_FALSE(std::filesystem::exists(folder / "state")) << "it was created";
}

TEST_F(HostReset, NeedsATerminalOrYes) {
    use();
    const Lines before = files();
    const auto refused = reset({});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.output, "");
    EXPECT_EQ(refused.errors,
              "settings-host: --reset asks for confirmation, but standard input is not a terminal: add --yes\n");
    EXPECT_EQ(files(), before);
}

TEST_F(HostReset, AsksAtTheTerminal) {
    use();
    const Lines before = files();
    for (const auto* answer : {"n\n", "\n", "no\n", "yesterday\n", "\x04"}) {
        const auto [status, shown] = resetAtATerminal(answer);
        EXPECT_EQ(status, 1) << answer;
        EXPECT_TRUE(contains(shown, "settings-host: nothing was removed")) << shown;
        EXPECT_TRUE(contains(shown, "  " + database() + ".backup.1\r\n")) << shown;
        EXPECT_EQ(files(), before) << answer;
    }
    const auto [status, shown] = resetAtATerminal("y\n");
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(contains(shown, "Remove them? [y/N] ")) << shown;
    EXPECT_EQ(files(), foreignFiles);
}

TEST_F(HostReset, LeavesAnythingButRegularFiles) {
    use();
    std::filesystem::create_directories(logFile() + ".2/inside");
    std::filesystem::create_symlink(folder / "state/host.log.3", logFile() + ".link");
    EXPECT_EQ(reset().status, 0);
    EXPECT_EQ(files(), (Lines{"host.log.2", "host.log.3", "host.log.link", "settings.db.mine"}))
        << "hosts create regular files only";
}

}  // namespace SystemTests
