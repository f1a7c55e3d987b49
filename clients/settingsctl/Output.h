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
    bool colours = false;
};

enum class Colour { BOLD, FAINT, RED, GREEN };

/// Does the user want colours in what is written to standard output: is it a terminal that has them, and NO_COLOR unset
/// or empty?
bool wantsColours();

/// `shown`, in a colour if the style has colours.
std::string coloured(const OutputStyle& style, Colour colour, const std::string& shown);

/// `text` with every control character (also DEL and U+0080 to U+009F) escaped, so that no value can control a
/// terminal, and with every backslash doubled, so that different texts stay different.
std::string escaped(const std::string& text);

/// A compact JSON object of strings, and a compact JSON array of strings.
std::string jsonObject(const std::map<std::string, std::string>& members);
std::string jsonArray(const std::vector<std::string>& elements);
std::string jsonString(const std::string& text);

/// `texts` for a sentence: "a, b".
std::string joined(const std::vector<std::string>& texts);

/// Writes `text` to standard output and flushes it.
/// Errors: `Failure` (REFUSED) when it is closed, the disk is full, or the reader of a pipe has closed it.
void print(const std::string& text);

/// Standard output cannot be written; `error` is the `errno`.
Failure unwritableOutput(int error);

/// Prints a line, unless the style is quiet.
void printLine(const OutputStyle& style, const std::string& line);

/// Prints `key=value` lines, bare values, or one JSON object.
void printValues(const OutputStyle& style, const std::map<std::string, std::string>& values);

/// `key: 'from' -> 'to'`; the new value alone if the style has bare values.
std::string changeLine(const OutputStyle& style, const std::string& key, const std::string& from,
                       const std::string& to);

/// Writes `settingsctl: MESSAGE` to standard error.
void printError(const std::string& message);
/// The same, unless the style is quiet.
void printWarning(const OutputStyle& style, const std::string& message);

}  // namespace SettingsCtl
