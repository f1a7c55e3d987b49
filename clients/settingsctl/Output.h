#pragma once

#include <map>
#include <string>
#include <vector>

#include "Failure.h"

namespace SettingsCtl {

/// How results are printed.
struct OutputStyle {
    bool json = false;
    bool bareValues = false;
    bool quiet = false;
};

/// `text` with every control character (also DEL and U+0080 to U+009F) escaped, so that no value can control a
/// terminal, and with every backslash doubled, so that different texts stay different.
std::string escaped(const std::string& text);

/// A compact JSON object of strings, and a compact JSON array of strings.
std::string jsonObject(const std::map<std::string, std::string>& members);
std::string jsonArray(const std::vector<std::string>& elements);

/// Writes `text` to standard output and flushes it.
/// Errors: `Failure` (REFUSED) when it is closed, the disk is full, or the reader of a pipe has closed it.
void print(const std::string& text);

/// Standard output cannot be written; `error` is the `errno`.
Failure unwritableOutput(int error);

/// Prints a line, unless the style is quiet.
void printLine(const OutputStyle& style, const std::string& line);

/// Prints `key=value` lines, bare values, or one JSON object.
void printValues(const OutputStyle& style, const std::map<std::string, std::string>& values);

/// `key: 'from' -> 'to'`
std::string changeLine(const std::string& key, const std::string& from, const std::string& to);

}  // namespace SettingsCtl
