#include "service/manager/ManagerVariables.h"

#include <charconv>
#include <cstdlib>
#include <stdexcept>

#include <unistd.h>

namespace SettingsHandlerKit {

std::optional<std::string> managerVariable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::optional<std::uint64_t> managerNumber(const char* name) {
    const auto text = managerVariable(name);
    if (!text) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    const char* const end = text->data() + text->size();
    const auto parsed = std::from_chars(text->data(), end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        throw std::invalid_argument(std::string(name) + " is not a number");
    }
    return number;
}

bool isMeantForThisProcess(const char* name) {
    return managerNumber(name) == static_cast<std::uint64_t>(::getpid());
}

}  // namespace SettingsHandlerKit
