#include "text/Utf8.h"

#include <rapidjson/memorystream.h>

#include "Utils/Rapidjson.h"

namespace SettingsHost {

namespace {

struct NullOutput {
    void Put(char /*unused*/) {}
};

/// Length in bytes of the character that `text` starts with; 0 when that is no character.
std::size_t characterLength(std::string_view text) {
    if (static_cast<unsigned char>(text.front()) < 0x80) {
        return 1;
    }
    rapidjson::MemoryStream input(text.data(), text.size());
    NullOutput output;
    // At the end of the memory the stream answers NUL, which continues no character.
    return rapidjson::UTF8<>::Validate(input, output) ? input.Tell() : 0;
}

}  // namespace

bool isValidUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string withValidUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        result += length == 0 ? std::string_view("\xEF\xBF\xBD") : text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

}  // namespace SettingsHost
