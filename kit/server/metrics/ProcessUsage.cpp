#include "server/metrics/ProcessUsage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>

#include <sys/resource.h>
#include <unistd.h>

namespace SettingsHandlerKit {

namespace {

double countDescriptors() {
    std::error_code problem;
    const std::filesystem::directory_iterator entries("/proc/self/fd", problem);
    // One of them is the folder itself.
    return problem ? 0 : static_cast<double>(std::distance(begin(entries), end(entries))) - 1;
}

double bootSeconds() {
    std::ifstream stat("/proc/stat");
    std::string word;
    double seconds = 0;
    while (stat >> word) {
        if (word == "btime") {
            stat >> seconds;
            return seconds;
        }
    }
    return 0;
}

}  // namespace

ProcessUsage readProcessUsage() {
    ProcessUsage usage;
    std::ifstream file("/proc/self/stat");
    std::string line;
    std::getline(file, line);
    // The name of the program may hold blanks; after it the fields are numbers.
    std::istringstream fields(line.substr(std::min(line.rfind(')') + 1, line.size())));
    std::string field;
    const auto ticks = static_cast<double>(::sysconf(_SC_CLK_TCK));
    constexpr int firstAfterName = 3;
    for (int number = firstAfterName; fields >> field; ++number) {
        if (number == 14 || number == 15) {  // user and system time
            usage.cpuSeconds += std::stod(field) / ticks;
        } else if (number == 22) {  // start, after boot
            usage.startSeconds = bootSeconds() + std::stod(field) / ticks;
        } else if (number == 23) {
            usage.virtualBytes = std::stod(field);
        } else if (number == 24) {
            usage.residentBytes = std::stod(field) * static_cast<double>(::sysconf(_SC_PAGESIZE));
        }
    }
    usage.openDescriptors = countDescriptors();
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        usage.maximumDescriptors = static_cast<double>(limit.rlim_cur);
    }
    return usage;
}

}  // namespace SettingsHandlerKit
