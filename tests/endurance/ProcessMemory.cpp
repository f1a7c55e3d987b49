#include "ProcessMemory.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace Endurance {

namespace {

std::filesystem::path processFolder(pid_t process) {
    return "/proc/" + std::to_string(process);
}

}  // namespace

std::size_t residentKibibytes(pid_t process) {
    std::ifstream status(processFolder(process) / "status");
    for (std::string word; status >> word;) {
        std::size_t kibibytes = 0;
        if (word == "VmRSS:" && status >> kibibytes) {
            return kibibytes;
        }
    }
    throw std::runtime_error("the host is not running");
}

std::size_t openDescriptors(pid_t process) {
    const std::filesystem::directory_iterator entries(processFolder(process) / "fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace Endurance
