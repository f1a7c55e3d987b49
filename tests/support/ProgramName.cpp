#include <cerrno>

namespace {

/// In-process tests expect the log lines of the host, whatever program they are linked into.
const bool isNamed = [] {
    static char name[] = "settings-host";
    program_invocation_short_name = name;
    return true;
}();

}  // namespace
