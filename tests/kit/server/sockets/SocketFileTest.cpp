#include <atomic>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "server/sockets/SocketFile.h"
#include "support/LineClient.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

class SocketFileTest : public ::testing::Test {
protected:
    /// Null: it listens.
    static std::exception_ptr errorOf(const std::string& wrongPath) {
        try {
            const SocketFile refused(wrongPath);
            return nullptr;
        } catch (const ListenerError&) {
            return std::current_exception();
        }
    }

    static void expectText(const std::exception_ptr& error, const std::string& part) {
        ASSERT_NE(error, nullptr) << "it listens";
        try {
            std::rethrow_exception(error);
        } catch (const ListenerError& refusal) {
            EXPECT_NE(std::string(refusal.what()).find(part), std::string::npos) << refusal.what();
        }
    }

    static void expectRefused(const std::string& wrongPath, const std::string& part) {
        expectText(errorOf(wrongPath), part);
    }

    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        return status.st_mode & 0777U;
    }

    TestSupport::TemporaryDirectory folder;
    std::string path = folder / "run/settings.sock";
};

TEST_F(SocketFileTest, ListensPrivatelyWhateverTheMask) {
    const mode_t before = ::umask(0);
    {
        const SocketFile file(path);
        EXPECT_EQ(modeOf(path), 0600U);
        EXPECT_EQ(modeOf(folder / "run"), 0700U);
        EXPECT_NO_THROW(TestSupport::LineClient{path});
        EXPECT_EQ(::umask(0), 0U) << "the mask was not put back";
    }
    ::umask(before);
}

TEST_F(SocketFileTest, RemovesItsSocketWhenItIsDestroyed) {
    { const SocketFile file(path); }
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(std::filesystem::exists(folder / "run"));
}

TEST_F(SocketFileTest, RemovesItsSocketOnce) {
    SocketFile first(path);
    first.remove();
    EXPECT_FALSE(std::filesystem::exists(path));
    ::close(first.takeDescriptor());
    // Many file systems give a new file the number of the one removed last.
    const SocketFile second(path);
    first.remove();
    EXPECT_NO_THROW(TestSupport::LineClient{path});
}

TEST_F(SocketFileTest, LeavesASocketThatReplacedIt) {
    auto first = std::make_unique<SocketFile>(path);
    std::filesystem::rename(path, path + ".moved");
    const SocketFile second(path);
    first.reset();
    EXPECT_NO_THROW(TestSupport::LineClient{path});
}

TEST_F(SocketFileTest, ReplacesAStaleSocket) {
    {
        SocketFile file(path);
        ::close(file.takeDescriptor());
        std::filesystem::create_hard_link(path, path + ".kept");
    }
    std::filesystem::rename(path + ".kept", path);
    EXPECT_THROW(TestSupport::LineClient{path}, std::runtime_error);
    const SocketFile file(path);
    EXPECT_NO_THROW(TestSupport::LineClient{path});
}

TEST_F(SocketFileTest, SaysThatItHasNoDescriptorForTheCheckOfAnOldSocket) {
    { SocketFile(path).leave(); }
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const int next = Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)).get();
    // One more descriptor: for the folder.
    const rlimit tight{static_cast<rlim_t>(next) + 1, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
    // Looked at later: to look, sanitizers need descriptors, too.
    const std::exception_ptr error = errorOf(path);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    expectText(error, "cannot create a socket: Too many open files");
    EXPECT_NO_THROW(SocketFile{path});
}

TEST_F(SocketFileTest, RefusesBesideARunningHost) {
    const SocketFile live(path);
    expectRefused(path, "another host listens");
    EXPECT_NO_THROW(TestSupport::LineClient{path});
}

TEST_F(SocketFileTest, RefusesBesideARunningHostWhoseQueueIsFull) {
    std::filesystem::create_directories(folder / "run");
    const Descriptor busy(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const auto* const place = reinterpret_cast<const sockaddr*>(&address);
    ASSERT_EQ(::bind(busy.get(), place, sizeof(address)), 0);
    ASSERT_EQ(::listen(busy.get(), 0), 0);
    std::vector<Descriptor> queue;
    int refused = 0;
    while (refused == 0) {
        queue.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        refused = ::connect(queue.back().get(), place, sizeof(address)) == 0 ? 0 : errno;
        ASSERT_LT(queue.size(), 10U);
    }
    ASSERT_EQ(refused, EAGAIN) << "the queue is full";
    expectRefused(path, "another host listens");
    ASSERT_TRUE(Descriptor(::accept(busy.get(), nullptr, nullptr)).get() >= 0);
    EXPECT_NO_THROW(TestSupport::LineClient{path}) << "its socket is still the one at the path";
}

TEST_F(SocketFileTest, HostsThatStartAtOnceCheckTheSocketOneAfterTheOther) {
    std::filesystem::create_directories(folder / "run");
    const Descriptor lock(::open((folder / "run").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
    struct stat status {};
    ASSERT_EQ(::fstat(lock.get(), &status), 0);
    std::atomic<bool> listens{false};
    std::thread second([&] {
        const SocketFile file(path);
        listens = true;
    });
    // The kernel lists who waits for a lock with an arrow, and the inode last before the range.
    const auto isWaitedFor = [&] {
        std::ifstream locks("/proc/locks");
        for (std::string line; std::getline(locks, line);) {
            if (line.find("-> FLOCK") != std::string::npos &&
                line.find(":" + std::to_string(status.st_ino) + " ") != std::string::npos) {
                return true;
            }
        }
        return false;
    };
    const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    while (!isWaitedFor() && !listens && std::chrono::steady_clock::now() < until) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(listens) << "it did not wait for the one that is just starting";
    EXPECT_TRUE(isWaitedFor());
    EXPECT_FALSE(std::filesystem::exists(path));
    ASSERT_EQ(::flock(lock.get(), LOCK_UN), 0);
    second.join();
    EXPECT_TRUE(listens);
}

TEST_F(SocketFileTest, NeverRemovesAFileThatIsNotASocket) {
    std::filesystem::create_directory(folder / "run");
    std::ofstream(path) << "precious";
    expectRefused(path, "is not a socket");
    EXPECT_EQ(std::filesystem::file_size(path), 8U);
    std::filesystem::remove(path);
    std::filesystem::create_symlink(folder / "elsewhere", path);
    expectRefused(path, "is not a socket");
    EXPECT_TRUE(std::filesystem::is_symlink(path));
}

TEST_F(SocketFileTest, RefusesAFolderThatIsWritableByOthers) {
    std::filesystem::create_directory(folder / "run");
    for (const mode_t mode : {0770U, 0707U, 0722U, 0777U | S_ISVTX}) {
        ::chmod((folder / "run").c_str(), mode);
        expectRefused(path, "writable by others");
        EXPECT_EQ(modeOf(folder / "run"), mode & 0777U) << "the mode was changed";
    }
    ::chmod((folder / "run").c_str(), 0755);
    const SocketFile file(path);
    EXPECT_EQ(modeOf(folder / "run"), 0755U);
}

TEST_F(SocketFileTest, RefusesAFolderThatIsALinkOrAFile) {
    std::filesystem::create_directory(folder / "real");
    std::filesystem::create_directory_symlink(folder / "real", folder / "run");
    expectRefused(path, "is a link or not a folder");
    std::filesystem::remove(folder / "run");
    std::ofstream(folder / "run") << "a file";
    expectRefused(path, "is a link or not a folder");
    std::filesystem::remove(folder / "run");
    std::filesystem::create_symlink(folder / "nowhere", folder / "run");
    expectRefused(path, "is a link or not a folder");
}

TEST_F(SocketFileTest, RefusesAnotherUsersFolder) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make a folder of another user";
    }
    std::filesystem::create_directory(folder / "run");
    ASSERT_EQ(::chown((folder / "run").c_str(), 12345, 12345), 0);
    expectRefused(path, "belongs to another user");
}

TEST_F(SocketFileTest, RefusesAPathThatIsTooLong) {
    expectRefused(folder / std::string(120, 'x') + "/s.sock", "longer than 107 bytes");
}

}  // namespace SettingsHandlerKit
