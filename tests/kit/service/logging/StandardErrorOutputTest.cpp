#include <array>
#include <csignal>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "service/logging/StandardErrorOutput.h"
#include "support/Files.h"
#include "support/LineReader.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

class StandardErrorOutputTest : public ::testing::Test {
protected:
    void TearDown() override {
        closeReader();
        ::close(ends[1]);
    }

    void openPipe() { ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }

    void closeReader() {
        if (ends[0] >= 0) {
            ::close(ends[0]);
            ends[0] = -1;
        }
    }

    /// Writes until a line is lost. Returns: the number of lines written before.
    static int fill(LogOutput& output, const std::string& line) {
        int taken = 0;
        while (output.write(line) && taken < 1000000) {
            ++taken;
        }
        EXPECT_LT(taken, 1000000);
        return taken;
    }

    /// Fills the pipe or socket, reads it empty, and expects whole lines followed by a new one.
    void expectOnlyWholeLinesAreLost() {
        StandardErrorOutput output(ends[1]);
        const std::string line(1000, 'x');
        const int taken = fill(output, line + "\n");
        EXPECT_FALSE(output.write(line + "\n"));
        TestSupport::LineReader reader(ends[0]);
        ASSERT_GT(taken, 0);
        for (int count = 0; count < taken - 1; ++count) {
            ASSERT_EQ(reader.readLine(), line);
        }
        EXPECT_TRUE(output.write("new\n"));
        EXPECT_EQ(reader.readLine(), line);
        EXPECT_EQ(reader.readLine(), "new");
    }

    std::array<int, 2> ends{-1, -1};
};

TEST_F(StandardErrorOutputTest, AFullPipeDoesNotBlockAndLinesStayWhole) {
    openPipe();
    expectOnlyWholeLinesAreLost();
    EXPECT_EQ(::fcntl(ends[1], F_GETFL) & O_NONBLOCK, 0) << "the flags are shared with other processes";
}

TEST_F(StandardErrorOutputTest, AFullSocketDoesNotBlockAndLinesStayWhole) {
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    expectOnlyWholeLinesAreLost();
    EXPECT_EQ(::fcntl(ends[1], F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(StandardErrorOutputTest, ALineLongerThanAPipeIsFinishedBeforeTheNext) {
    openPipe();
    StandardErrorOutput output(ends[1]);
    const std::string longLine(200000, 'l');
    EXPECT_TRUE(output.write(longLine + "\n"));
    EXPECT_FALSE(output.write("lost\n"));
    TestSupport::LineReader reader(ends[0]);
    std::optional<std::string> line;
    while (!(line = reader.readLine(std::chrono::milliseconds(0)))) {
        output.write("next\n");
    }
    EXPECT_EQ(line, longLine);
    EXPECT_TRUE(output.write("next\n"));
    EXPECT_EQ(reader.readLine(), "next");
}

TEST_F(StandardErrorOutputTest, AClosedReaderLosesLinesOnly) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    openPipe();
    StandardErrorOutput early(ends[1]);
    closeReader();
    EXPECT_FALSE(early.write("lost\n"));
    StandardErrorOutput late(ends[1]);
    EXPECT_FALSE(late.write("lost\n"));
    std::signal(SIGPIPE, before);
}

TEST_F(StandardErrorOutputTest, AFileGetsEveryLine) {
    TestSupport::TemporaryDirectory folder;
    const std::string path = folder / "log";
    ends[1] = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    StandardErrorOutput output(ends[1]);
    const std::string line = std::string(100000, 'x') + "\n";
    EXPECT_TRUE(output.write(line));
    EXPECT_TRUE(output.write("y\n"));
    EXPECT_EQ(TestSupport::contentOf(path), line + "y\n");
    StandardErrorOutput nowhere(-1);
    EXPECT_FALSE(nowhere.write("lost\n"));
}

}  // namespace SettingsHandlerKit
