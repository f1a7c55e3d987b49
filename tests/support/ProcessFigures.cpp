#include "support/ProcessFigures.h"

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

std::size_t statusBytes(pid_t process, const std::string& name) {
    std::ifstream status(fileOf(process, "status"));
    for (std::string word; status >> word;) {
        if (word == name) {
            std::size_t kibibytes = 0;
            status >> kibibytes;
            return kibibytes * 1024;
        }
    }
    throw std::runtime_error("process " + std::to_string(process) + " has no " + name);
}

}  // namespace

std::size_t openDescriptors(pid_t process) {
    const std::filesystem::directory_iterator entries(fileOf(process, "fd"));
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t residentMemory(pid_t process) {
    return statusBytes(process, "VmRSS:");
}

std::size_t peakMemory(pid_t process) {
    return statusBytes(process, "VmHWM:");
}

void forgetPeakMemory(pid_t process) {
    std::ofstream(fileOf(process, "clear_refs")) << "5";
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

}  // namespace TestSupport
