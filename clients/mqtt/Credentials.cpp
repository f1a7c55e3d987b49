#include "mqtt/Credentials.h"

#include <fstream>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

namespace Mqtt {

Credentials readCredentials(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        throw std::runtime_error("cannot read the credentials in " + path);
    }
    // Its group may read it: then the service's group is meant.
    if ((status.st_mode & 0027U) != 0 || (status.st_uid != 0 && status.st_uid != ::geteuid())) {
        throw std::runtime_error(path +
                                 " must belong to root or this user, and others must not read it (mode 0600 or 0640)");
    }
    std::ifstream file(path);
    Credentials read;
    std::getline(file, read.user);
    std::getline(file, read.password);
    if (read.user.empty()) {
        throw std::runtime_error(path + " has no user in its first line");
    }
    return read;
}

}  // namespace Mqtt
