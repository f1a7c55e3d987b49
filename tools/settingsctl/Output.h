#pragma once

#include <map>
#include <string>
#include <vector>

#include "Failure.h"

namespace SettingsCtl {

/// How results are shown.
struct OutputStyle {
    bool json = false;
    bool bareValues = false;
    bool quiet = false;
};

/// `text` with every control character (also DEL and U+0080 to U+009F) as an escape, so that no value can steer a
/// terminal, and with two backslashes for each one, so that different texts look different.
std::string escaped(const std::string& text);

/// A compact JSON object of strings, and a compact JSON array of strings.
std::string jsonObject(const std::map<std::string, std::string>& members);
std::string jsonArray(const std::vector<std::string>& elements);

/// Writes `text` to standard output at once.
/// Errors: `Failure` (REFUSED) when it cannot be written: there is none, the disk is full, nobody reads any more.
void print(const std::string& text);

/// What is told when standard output cannot be written for the reason `error`, an `errno`.
Failure unwritableOutput(int error);

/// Prints a line, unless the style is quiet.
void printLine(const OutputStyle& style, const std::string& line);

/// Prints `key=value` lines, bare values, or one JSON object.
void printValues(const OutputStyle& style, const std::map<std::string, std::string>& values);

/// `key: 'from' -> 'to'`
std::string changeLine(const std::string& key, const std::string& from, const std::string& to);

}  // namespace SettingsCtl
