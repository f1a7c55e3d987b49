#include "Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Wire/ControlCharacters.h"
#include "Wire/ObjectWriter.h"

namespace SettingsCtl {

std::string escaped(const std::string& text) {
    return Wire::escapeControlCharacters(text, Wire::Backslash::DOUBLED);
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
