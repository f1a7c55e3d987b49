#include "service/sandbox/Sandbox.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "service/logging/HostLog.h"
#include "service/sandbox/FileAccess.h"
#include "service/sandbox/SystemCalls.h"

namespace SettingsHost {

namespace {

void report(const std::string& what, const std::string& reason) {
    if (!reason.empty()) {
        logHost(VessaLogger::WARNING, "the sandbox is incomplete: " + what + ": " + reason);
    }
}

std::string giveUpNewPrivileges() {
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 ? "" : std::strerror(errno);
}

using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

bool isEmpty(const Capabilities& held) {
    return std::all_of(held.begin(), held.end(),
                       [](const auto& part) { return (part.effective | part.permitted) == 0; });
}

/// Under a service manager there is usually nothing to give up, and the call for it may be forbidden.
std::string giveUpCapabilities() {
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
    report("capabilities stay", giveUpCapabilities());
    report("new privileges stay possible", giveUpNewPrivileges());
    report("files stay within reach", limitFileAccess(folders));
    // Last, because the others make calls that it forbids.
    report("system calls stay unlimited", limitSystemCalls());
}

}  // namespace SettingsHost
