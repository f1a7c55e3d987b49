#include "bridge/Log.h"

#include <array>
#include <chrono>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

#include "Wire/ControlCharacters.h"
#include "Wire/LocalTime.h"

namespace SettingsBridge {

namespace {

struct LevelName {
    const char* text;
    /// For the journal, as in syslog.
    const char* priority;
};

constexpr std::array<LevelName, 4> levels{{{"trace", "<7>"}, {"info ", "<6>"}, {"warning", "<4>"}, {"error", "<3>"}}};

/// systemd says to which stream JOURNAL_STREAM belongs; a child process may have another standard error. The host has
/// the same rule, and the same levels, in kit/service/logging: both share no code that has to do with the system.
bool isStandardErrorTheJournal() {
    const char* const journal = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return journal != nullptr && ::fstat(STDERR_FILENO, &status) == 0 &&
           journal == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

}  // namespace

Log::Log(int minimumLevel) : minimum(minimumLevel), toJournal(isStandardErrorTheJournal()) {}

void Log::write(LogLevel level, const std::string& text) const {
    const auto number = static_cast<std::size_t>(level);
    if (static_cast<int>(level) < minimum) {
        return;
    }
    const LevelName& name = levels.at(number);
    const std::string line =
        (toJournal ? name.priority : Wire::localTimeText(std::chrono::system_clock::now()) + " " + name.text + " ") +
        Wire::escapeControlCharacters(text) + "\n";
    if (::write(STDERR_FILENO, line.data(), line.size()) < 0) {
        // There is nobody to tell.
    }
}

}  // namespace SettingsBridge
