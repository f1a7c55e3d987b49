#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SettingsHandlerKit/Sandbox.h"
#include "service/sandbox/SystemCalls.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

namespace {

constexpr int succeeded = 0;

/// 0 or the error number of a call.
int outcome(bool success) {
    return success ? succeeded : errno;
}

bool isListed(const std::vector<std::string>& calls, const std::string& call) {
    return std::find(calls.begin(), calls.end(), call) != calls.end();
}

}  // namespace

/// Each test function runs in its own process inside the sandbox.
class SandboxTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (TestSupport::sanitized) {
            GTEST_SKIP() << "the runtime of this build needs more of the system than the host";
        }
        for (const auto* name : {"changed", "cleared", "read", "elsewhere"}) {
            std::filesystem::create_directory(folder / name);
            std::ofstream(folder / (std::string(name) + "/file")) << "content";
        }
    }

    /// Returns: the result of `act`, an error number or 0, or minus the signal that ended the process.
    int inside(const std::function<int()>& act) {
        const pid_t child = ::fork();
        if (child == 0) {
            enterSandbox({{folder / "changed"}, {folder / "cleared"}, {folder / "read"}});
            ::_exit(act());
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }

    int opening(const std::string& path, int flags) {
        return inside([&] { return outcome(::open(path.c_str(), flags, 0600) >= 0); });
    }

    TestSupport::TemporaryDirectory folder;
};

TEST_F(SandboxTest, ItsOwnFilesStayAccessible) {
    EXPECT_EQ(opening(folder / "changed/file", O_RDWR), succeeded);
    EXPECT_EQ(opening(folder / "changed/new", O_RDWR | O_CREAT), succeeded);
    EXPECT_EQ(inside([&] { return outcome(::truncate((folder / "changed/file").c_str(), 3) == 0); }), EPERM);
    EXPECT_EQ(inside([&] {
                  const int file = ::open((folder / "changed/file").c_str(), O_RDWR);
                  return outcome(::ftruncate(file, 3) == 0 && ::fsync(file) == 0);
              }),
              succeeded);
    EXPECT_EQ(inside([&] {
                  return outcome(::rename((folder / "changed/file").c_str(), (folder / "changed/moved").c_str()) == 0);
              }),
              succeeded);
    EXPECT_EQ(inside([&] { return outcome(::unlink((folder / "changed/moved").c_str()) == 0); }), succeeded);
    EXPECT_EQ(inside([&] { return outcome(::unlink((folder / "cleared/file").c_str()) == 0); }), succeeded);
    EXPECT_EQ(opening(folder / "read/file", O_RDONLY), succeeded);
    EXPECT_EQ(opening("/proc/self/statm", O_RDONLY), succeeded);
    EXPECT_EQ(opening("/dev/null", O_RDONLY), succeeded);
}

TEST_F(SandboxTest, OtherFilesAreInaccessible) {
    EXPECT_EQ(opening(folder / "elsewhere/file", O_RDONLY), EACCES);
    EXPECT_EQ(opening(folder / "elsewhere/file", O_WRONLY), EACCES);
    EXPECT_EQ(opening(folder / "elsewhere/new", O_RDWR | O_CREAT), EACCES);
    EXPECT_EQ(opening(folder / "read/file", O_WRONLY), EACCES);
    EXPECT_EQ(opening(folder / "read/new", O_RDWR | O_CREAT), EACCES);
    EXPECT_EQ(inside([&] { return outcome(::unlink((folder / "read/file").c_str()) == 0); }), EACCES);
    EXPECT_EQ(opening(folder / "cleared/file", O_RDONLY), EACCES);
    EXPECT_EQ(opening(folder / "cleared/new", O_RDWR | O_CREAT), EACCES);
    EXPECT_EQ(opening("/etc/passwd", O_RDONLY), EACCES);
    EXPECT_EQ(opening("/dev/null", O_WRONLY), EACCES);
    EXPECT_EQ(opening("/proc/" + std::to_string(::getpid()) + "/environ", O_RDONLY), EACCES);
    EXPECT_EQ(inside([&] { return outcome(::unlink((folder / "elsewhere/file").c_str()) == 0); }), EACCES);
    EXPECT_EQ(inside([&] { return outcome(::truncate((folder / "elsewhere/file").c_str(), 0) == 0); }), EPERM);
    EXPECT_EQ(
        inside([&] {
            return outcome(::rename((folder / "changed/file").c_str(), (folder / "elsewhere/moved").c_str()) == 0);
        }),
        EACCES);
    EXPECT_EQ(inside([&] { return outcome(::mkdir((folder / "changed/folder").c_str(), 0700) == 0); }), EPERM);
    EXPECT_EQ(inside([&] { return outcome(::symlink("/etc/passwd", (folder / "changed/link").c_str()) == 0); }), EPERM);
}

TEST_F(SandboxTest, ReadOnlyFilesCannotBeTruncated) {
    if (::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) < 3) {
        GTEST_SKIP() << "this kernel cannot forbid it";
    }
    // Readable like /etc/localtime, but harmless to truncate. O_RDONLY alone asks for reading only.
    EXPECT_EQ(opening("/proc/self/comm", O_RDONLY), succeeded);
    EXPECT_EQ(opening("/proc/self/comm", O_RDONLY | O_TRUNC), EACCES);
    EXPECT_EQ(opening(folder / "elsewhere/file", O_RDONLY | O_TRUNC), EACCES);
    EXPECT_EQ(opening(folder / "changed/file", O_RDONLY | O_TRUNC), succeeded);
    EXPECT_EQ(std::filesystem::file_size(folder / "elsewhere/file"), 7U);
    EXPECT_EQ(std::filesystem::file_size(folder / "changed/file"), 0U);
}

TEST_F(SandboxTest, CallsThatOnlyAnAttackerMakesEndTheProcess) {
    EXPECT_EQ(inside([] {
                  const char* const arguments[] = {"/bin/true", nullptr};
                  return outcome(::execv(arguments[0], const_cast<char**>(arguments)) == 0);  // NOLINT: execv wants it
              }),
              -SIGSYS);
    EXPECT_EQ(inside([] { return outcome(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0); }), -SIGSYS);
    for (const auto& call : {SYS_execveat, SYS_process_vm_readv, SYS_process_vm_writev, SYS_bpf, SYS_mount, SYS_unshare,
                             SYS_setns, SYS_userfaultfd}) {
        EXPECT_EQ(inside([call] { return outcome(::syscall(call, 0, 0, 0, 0, 0, 0) == 0); }), -SIGSYS) << call;
    }
}

TEST_F(SandboxTest, AnotherEventLoopCanBeMade) {
    EXPECT_EQ(inside([] { return outcome(::epoll_create1(EPOLL_CLOEXEC) >= 0); }), succeeded);
    EXPECT_EQ(inside([] { return outcome(::eventfd(0, EFD_CLOEXEC) >= 0); }), succeeded);
    EXPECT_EQ(inside([] {
                  int ends[2];
                  return outcome(::pipe2(ends, O_CLOEXEC) == 0);
              }),
              succeeded);
}

TEST_F(SandboxTest, AllOtherCallsFail) {
    EXPECT_EQ(inside([] { return outcome(::fork() >= 0); }), EPERM);
    // Called outside the sandbox; -1 would be all processes.
    const pid_t other = ::getpid();
    EXPECT_EQ(inside([other] { return outcome(::kill(other, 0) == 0); }), EPERM);
    EXPECT_EQ(inside([other] { return outcome(::syscall(SYS_tgkill, other, other, 0) == 0); }), EPERM);
    EXPECT_EQ(inside([] { return outcome(::syscall(SYS_tgkill, ::getpid(), ::gettid(), 0) == 0); }), succeeded);
    EXPECT_EQ(inside([] { return outcome(::socket(AF_INET, SOCK_STREAM, 0) >= 0); }), EPERM);
    EXPECT_EQ(inside([] { return outcome(::socket(AF_NETLINK, SOCK_RAW, 0) >= 0); }), EPERM);
    EXPECT_EQ(inside([] { return outcome(::socket(AF_UNIX, SOCK_DGRAM, 0) >= 0); }), succeeded);
    EXPECT_EQ(inside([] {
                  const sockaddr_in anywhere{};
                  return outcome(::connect(0, reinterpret_cast<const sockaddr*>(&anywhere), sizeof(anywhere)) == 0);
              }),
              EPERM);
    EXPECT_EQ(inside([] {
                  return outcome(::mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) !=
                                 MAP_FAILED);
              }),
              EPERM);
    EXPECT_EQ(inside([] {
                  void* const memory =
                      ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                  return outcome(::mprotect(memory, 4096, PROT_READ | PROT_EXEC) == 0);
              }),
              EPERM);
    EXPECT_EQ(inside([] {
                  char character = 'x';
                  return outcome(::ioctl(0, TIOCSTI, &character) == 0);
              }),
              EPERM);
    EXPECT_EQ(inside([] { return outcome(::chmod("/", 0777) == 0); }), EPERM);
    EXPECT_EQ(inside([] { return outcome(::setuid(0) == 0); }), EPERM);
}

TEST_F(SandboxTest, PrivilegesAreDroppedPermanently) {
    for (const std::string expected :
         {"CapPrm:\t0000000000000000", "CapEff:\t0000000000000000", "NoNewPrivs:\t1", "Seccomp:\t2"}) {
        const auto look = [&expected] {
            std::ifstream status("/proc/self/status");
            for (std::string line; std::getline(status, line);) {
                if (line == expected) {
                    return 0;
                }
            }
            return 1;
        };
        EXPECT_EQ(inside(look), 0) << expected;
    }
}

TEST_F(SandboxTest, AbortStillEndsTheProcessAsItShould) {
    EXPECT_EQ(inside([]() -> int { std::abort(); }), -SIGABRT);
}

TEST_F(SandboxTest, TheListsDoNotOverlap) {
    for (const auto& call : fatalCalls()) {
        EXPECT_FALSE(isListed(allowedCalls(), call)) << call;
    }
    for (const auto* conditional : {"mmap", "mprotect", "socket", "tgkill", "ioctl"}) {
        EXPECT_FALSE(isListed(allowedCalls(), conditional)) << "its condition would have no effect";
    }
}

}  // namespace SettingsHandlerKit
