#include "Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Wire/ObjectWriter.h"

namespace SettingsCtl {

namespace {

std::string hexadecimal(const char* prefix, unsigned char byte) {
    constexpr char digits[] = "0123456789abcdef";
    return std::string(prefix) + digits[byte >> 4U] + digits[byte & 0xfU];
}

std::string escapeOf(unsigned char byte) {
    switch (byte) {
        case '\\':
            return "\\\\";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return hexadecimal("\\x", byte);
    }
}

}  // namespace

std::string escaped(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        const auto next = static_cast<unsigned char>(index + 1 < text.size() ? text[index + 1] : '\0');
        if (byte < 0x20 || byte == 0x7f || byte == '\\') {
            result += escapeOf(byte);
        } else if (byte == 0xc2 && next >= 0x80 && next < 0xa0) {
            // U+0080 to U+009F.
            result += hexadecimal("\\u00", next);
            ++index;
        } else {
            result += text[index];
        }
    }
    return result;
}

std::string jsonObject(const std::map<std::string, std::string>& members) {
    Wire::ObjectWriter writer;
    for (const auto& [name, value] : members) {
        writer.text(name, value);
    }
    return writer.finish();
}

std::string jsonArray(const std::vector<std::string>& elements) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer writer(buffer);
    writer.StartArray();
    for (const auto& element : elements) {
        writer.String(element);
    }
    writer.EndArray();
    return {buffer.GetString(), buffer.GetSize()};
}

void print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw unwritableOutput(errno);
    }
}

Failure unwritableOutput(int error) {
    return {REFUSED, std::string("cannot write to standard output: ") + std::strerror(error)};
}

void printLine(const OutputStyle& style, const std::string& line) {
    if (!style.quiet) {
        print(line + "\n");
    }
}

void printValues(const OutputStyle& style, const std::map<std::string, std::string>& values) {
    if (style.json) {
        printLine(style, jsonObject(values));
        return;
    }
    for (const auto& [key, value] : values) {
        const std::string shown = escaped(value);
        printLine(style, style.bareValues ? shown : escaped(key) + "=" + shown);
    }
}

std::string changeLine(const std::string& key, const std::string& from, const std::string& to) {
    return escaped(key + ": '" + from + "' -> '" + to + "'");
}

}  // namespace SettingsCtl
