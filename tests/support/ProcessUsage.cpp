#include "support/ProcessUsage.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace TestSupport {

namespace {

std::string fileOf(pid_t process, const std::string& name) {
    return "/proc/" + std::to_string(process) + "/" + name;
}

/// The number after the first `name` in a file of the process.
std::size_t numberIn(pid_t process, const std::string& file, const std::string& name) {
    std::ifstream fields(fileOf(process, file));
    for (std::string word; fields >> word;) {
        if (word == name) {
            std::size_t number = 0;
            fields >> number;
            return number;
        }
    }
    throw std::runtime_error("process " + std::to_string(process) + " has no " + name);
}

std::size_t bytesIn(pid_t process, const std::string& file, const std::string& name) {
    return numberIn(process, file, name) * 1024;
}

}  // namespace

std::size_t openDescriptors(pid_t process) {
    const std::filesystem::directory_iterator entries(fileOf(process, "fd"));
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

ProcessMemory memoryOf(pid_t process) {
    const std::string file = "smaps_rollup";
    return {bytesIn(process, file, "Rss:"), bytesIn(process, file, "Anonymous:"), bytesIn(process, file, "Pss:")};
}

std::size_t residentMemory(pid_t process) {
    return bytesIn(process, "status", "VmRSS:");
}

std::size_t peakMemory(pid_t process) {
    return bytesIn(process, "status", "VmHWM:");
}

void forgetPeakMemory(pid_t process) {
    std::ofstream(fileOf(process, "clear_refs")) << "5";
}

long voluntarySwitches(pid_t process) {
    return static_cast<long>(numberIn(process, "status", "voluntary_ctxt_switches:"));
}

long processorTicks(pid_t process) {
    std::ifstream status(fileOf(process, "stat"));
    constexpr int fieldsBefore = 13;
    std::string word;
    for (int field = 0; field < fieldsBefore; ++field) {
        status >> word;
    }
    long user = 0;
    long system = 0;
    status >> user >> system;
    return user + system;
}

double processorMicroseconds(pid_t process) {
    clockid_t clock = 0;
    timespec used{};
    if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &used) != 0) {
        throw std::runtime_error("process " + std::to_string(process) + " has ended");
    }
    return static_cast<double>(used.tv_sec) * 1e6 + static_cast<double>(used.tv_nsec) / 1e3;
}

}  // namespace TestSupport
