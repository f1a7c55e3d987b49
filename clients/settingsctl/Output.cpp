#include "Output.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <unistd.h>

#include "Wire/ControlCharacters.h"
#include "Wire/ObjectWriter.h"

namespace SettingsCtl {

std::string escaped(const std::string& text) {
    return Wire::escapeControlCharacters(text, Wire::Backslash::DOUBLED);
}

bool wantsColours() {
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return ::isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == '\0') && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

std::string coloured(const OutputStyle& style, Colour colour, const std::string& shown) {
    if (!style.colours) {
        return shown;
    }
    static constexpr const char* starts[] = {"\x1b[1m", "\x1b[2m", "\x1b[31m", "\x1b[32m"};
    return starts[static_cast<std::size_t>(colour)] + shown + "\x1b[0m";
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

std::string jsonString(const std::string& text) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer(buffer).String(text);
    return {buffer.GetString(), buffer.GetSize()};
}

std::string joined(const std::vector<std::string>& texts) {
    std::string list;
    for (const auto& text : texts) {
        list += (list.empty() ? "" : ", ") + text;
    }
    return list;
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
        printLine(style, style.bareValues ? shown : coloured(style, Colour::BOLD, escaped(key)) + "=" + shown);
    }
}

std::string changeLine(const OutputStyle& style, const std::string& key, const std::string& from,
                       const std::string& to) {
    if (style.bareValues) {
        return escaped(to);
    }
    const auto quoted = [](const std::string& value) { return "'" + escaped(value) + "'"; };
    return coloured(style, Colour::BOLD, escaped(key)) + ": " + coloured(style, Colour::RED, quoted(from)) + " -> " +
           coloured(style, Colour::GREEN, quoted(to));
}

void printError(const std::string& message) {
    std::fprintf(stderr, "settingsctl: %s\n", escaped(message).c_str());
}

void printWarning(const OutputStyle& style, const std::string& message) {
    if (!style.quiet) {
        printError(message);
    }
}

}  // namespace SettingsCtl
