#include "bridge/Log.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <sys/stat.h>
#include <unistd.h>

#include "Wire/ControlCharacters.h"

namespace SettingsBridge {

namespace {

struct LevelName {
    const char* text;
    /// For the journal, as in syslog.
    const char* priority;
};

constexpr std::array<LevelName, 4> levels{{{"trace", "<7>"}, {"info ", "<6>"}, {"warning", "<4>"}, {"error", "<3>"}}};

/// systemd says to which stream JOURNAL_STREAM belongs; a child process may have another standard error.
bool isStandardErrorTheJournal() {
    const char* const journal = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return journal != nullptr && ::fstat(STDERR_FILENO, &status) == 0 &&
           journal == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

/// Local time: 2026-01-31T12:34:56.789+0100.
std::string now() {
    const auto time = std::chrono::system_clock::now();
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t sinceEpoch = std::chrono::system_clock::to_time_t(second);
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time - second).count();
    std::tm local{};
    ::localtime_r(&sinceEpoch, &local);
    std::array<char, 32> date{};
    std::array<char, 16> zone{};
    std::strftime(date.data(), date.size(), "%FT%T", &local);
    std::strftime(zone.data(), zone.size(), "%z", &local);
    std::array<char, 64> whole{};
    std::snprintf(whole.data(), whole.size(), "%s.%03d%s", date.data(), static_cast<int>(milliseconds), zone.data());
    return whole.data();
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
        (toJournal ? name.priority : now() + " " + name.text + " ") + Wire::escapeControlCharacters(text) + "\n";
    if (::write(STDERR_FILENO, line.data(), line.size()) < 0) {
        // There is nobody to tell.
    }
}

}  // namespace SettingsBridge
