#include "SettingsHandlerKit/Environment.h"

#include <cerrno>
#include <system_error>

#include <sys/random.h>

namespace SettingsHandlerKit {

std::string randomBytes(std::size_t count) {
    std::string bytes(count, '\0');
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::system_error(errno, std::generic_category(), "cannot generate a key");
    }
    return bytes;
}

}  // namespace SettingsHandlerKit
