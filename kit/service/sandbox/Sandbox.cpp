#include "SettingsHandlerKit/Sandbox.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "SettingsHandlerKit/Logging.h"
#include "service/sandbox/FileAccess.h"
#include "service/sandbox/SystemCalls.h"

namespace SettingsHandlerKit {

namespace {

void report(const std::string& what, const std::string& reason) {
    if (!reason.empty()) {
        writeLog(VessaLogger::WARNING, "the sandbox is incomplete: " + what + ": " + reason);
    }
}

std::string forbidNewPrivileges() {
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 ? "" : std::strerror(errno);
}

using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

bool isEmpty(const Capabilities& held) {
    return std::all_of(held.begin(), held.end(),
                       [](const auto& part) { return (part.effective | part.permitted) == 0; });
}

/// Under a service manager there are usually none, and the call to drop them may be forbidden.
std::string dropCapabilities() {
    __user_cap_header_struct header{};
    header.version = _LINUX_CAPABILITY_VERSION_3;
    Capabilities held{};
    if (::syscall(SYS_capget, &header, held.data()) == 0 && isEmpty(held)) {
        return "";
    }
    const Capabilities none{};
    return ::syscall(SYS_capset, &header, none.data()) == 0 ? "" : std::strerror(errno);
}

}  // namespace

void enterSandbox(const SandboxFolders& folders) {
    report("cannot drop capabilities", dropCapabilities());
    report("cannot set no_new_privs", forbidNewPrivileges());
    report("cannot restrict file access", limitFileAccess(folders));
    // Last: it forbids system calls of the others.
    report("cannot restrict system calls", limitSystemCalls());
}

}  // namespace SettingsHandlerKit
