#include "service/sandbox/SystemCalls.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace SettingsHandlerKit {

namespace {

using Filter = std::unique_ptr<void, decltype(&seccomp_release)>;

int numberOf(const std::string& call) {
    return seccomp_syscall_resolve_name(call.c_str());
}

/// Adds rules and keeps the first error.
class Rules {
public:
    explicit Rules(void* limited) : filter(limited) {}

    void add(std::uint32_t action, const std::string& call) {
        // Some calls do not exist on every processor.
        if (const int number = numberOf(call); number >= 0) {
            note(seccomp_rule_add(filter, action, number, 0));
        }
    }

    void allowIf(const std::string& call, const scmp_arg_cmp& condition) {
        if (const int number = numberOf(call); number >= 0) {
            note(seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, number, 1, &condition));
        }
    }

    int error() const { return firstError; }

private:
    void note(int result) {
        if (firstError == 0) {
            firstError = result;
        }
    }

    void* filter;
    int firstError = 0;
};

scmp_arg_cmp masked(unsigned argument, scmp_datum_t mask, scmp_datum_t value) {
    return {argument, SCMP_CMP_MASKED_EQ, mask, value};
}

scmp_arg_cmp equal(unsigned argument, scmp_datum_t value) {
    return {argument, SCMP_CMP_EQ, value, 0};
}

void addConditions(Rules& rules) {
    rules.allowIf("mmap", masked(2, PROT_EXEC, 0));
    rules.allowIf("mprotect", masked(2, PROT_EXEC, 0));
    rules.allowIf("socket", equal(0, AF_UNIX));
    // abort() uses it.
    rules.allowIf("tgkill", equal(0, static_cast<scmp_datum_t>(::getpid())));
    for (const unsigned long request : {static_cast<unsigned long>(FIONBIO), static_cast<unsigned long>(FIONREAD),
                                        static_cast<unsigned long>(TCGETS)}) {
        rules.allowIf("ioctl", equal(1, request));
    }
}

}  // namespace

const std::vector<std::string>& allowedCalls() {
    static const std::vector<std::string> calls{
        // memory
        "brk", "madvise", "mremap", "munmap",
        // files
        "access", "close", "faccessat", "faccessat2", "fallocate", "fchmod", "fcntl", "fdatasync", "fstat", "fsync",
        "ftruncate", "getcwd", "getdents64", "lseek", "lstat", "newfstatat", "open", "openat", "pread64", "pwrite64",
        "read", "readlink", "readlinkat", "readv", "rename", "renameat", "renameat2", "stat", "statfs", "statx",
        "umask", "unlink", "unlinkat", "write", "writev",
        // connections
        "accept", "accept4", "getpeername", "getsockname", "getsockopt", "recvfrom", "recvmsg", "sendmsg", "sendto",
        "setsockopt", "shutdown",
        // waiting
        "clock_getres", "clock_gettime", "clock_nanosleep", "epoll_ctl", "epoll_pwait", "epoll_pwait2", "epoll_wait",
        "futex", "gettimeofday", "nanosleep", "poll", "ppoll", "restart_syscall", "sched_yield", "time",
        // another loop after this one
        "epoll_create1", "eventfd2", "pipe2",
        // the process itself
        "exit", "exit_group", "getegid", "geteuid", "getgid", "getpid", "getrandom", "getrlimit", "getrusage", "gettid",
        "getuid", "prlimit64", "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sigaltstack", "sysinfo", "uname"};
    return calls;
}

const std::vector<std::string>& fatalCalls() {
    static const std::vector<std::string> calls{"bpf",   "execve",           "execveat",          "io_uring_setup",
                                                "mount", "process_vm_readv", "process_vm_writev", "ptrace",
                                                "setns", "unshare",          "userfaultfd"};
    return calls;
}

std::string limitSystemCalls() {
    const Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)), seccomp_release);
    if (!filter) {
        return "no memory for the filter";
    }
    Rules rules(filter.get());
    for (const auto& call : allowedCalls()) {
        rules.add(SCMP_ACT_ALLOW, call);
    }
    for (const auto& call : fatalCalls()) {
        rules.add(SCMP_ACT_KILL_PROCESS, call);
    }
    addConditions(rules);
    const int error = rules.error() != 0 ? rules.error() : seccomp_load(filter.get());
    return error == 0 ? "" : std::strerror(-error);
}

}  // namespace SettingsHandlerKit
