#include "Files.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "Failure.h"

namespace SettingsCtl {

std::string contentsOf(const std::string& file) {
    std::ifstream opened;
    errno = 0;
    if (file != "-") {
        opened.open(file);
    }
    std::istream& stream = file == "-" ? std::cin : opened;
    std::string text;
    std::array<char, 65536> bytes{};
    do {
        stream.read(bytes.data(), bytes.size());
        text.append(bytes.data(), static_cast<std::size_t>(stream.gcount()));
    } while (stream);
    if (!stream.eof()) {
        throw Failure(WRONG_USAGE, "cannot read '" + file + "': " + std::strerror(errno));
    }
    return text;
}

}  // namespace SettingsCtl
