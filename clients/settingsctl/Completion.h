#pragma once

#include <string>
#include <vector>

#include "Failure.h"

namespace CLI {
class App;
}

namespace SettingsCtl {

/// The hidden verb `complete WORD...`, which the completion scripts of the shells call. Prints the completions of the
/// last of `words`, which are those of a command line after the program's name and without quotes. Each is a line
/// "COMPLETION<TAB>DESCRIPTION"; the line "files" stands for the names of files. Nothing is left out because of what is
/// typed of the last word already.
/// `runtimeFolder` is what XDG_RUNTIME_DIR says, null when it is unset: the current value of a setting comes from the
/// host.
ExitStatus complete(const CLI::App& parser, const std::vector<std::string>& words, const char* runtimeFolder);

}  // namespace SettingsCtl
