#include "sandbox/Sandbox.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "logging/HostLog.h"
#include "sandbox/FileAccess.h"
#include "sandbox/SystemCalls.h"

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

std::string giveUpCapabilities() {
    __user_cap_header_struct header{};
    header.version = _LINUX_CAPABILITY_VERSION_3;
    const std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
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
