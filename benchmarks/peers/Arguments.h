#pragma once

#include <cstring>
#include <stdexcept>
#include <string>

namespace Benchmarks {

/// How long a program measures.
struct Arguments {
    int rounds = 9;
    /// Show that it works, and measure nothing worth quoting.
    bool quick = false;
    /// Everybody shares one processor, so that waking a sleeping one takes no time.
    bool oneProcessor = false;
};

/// Reads `[--rounds N] [--quick] [--one-processor]`. Throws for anything else.
inline Arguments parseArguments(int count, const char* const* texts) {
    Arguments arguments;
    for (int index = 1; index < count; ++index) {
        const std::string text = texts[index];
        if (text == "--quick") {
            arguments.quick = true;
            arguments.rounds = 2;
        } else if (text == "--one-processor") {
            arguments.oneProcessor = true;
        } else if (text == "--rounds" && index + 1 < count) {
            arguments.rounds = std::stoi(texts[++index]);
        } else {
            throw std::invalid_argument("usage: " + std::string(texts[0]) +
                                        " [--quick] [--rounds N] [--one-processor]");
        }
    }
    return arguments;
}

}  // namespace Benchmarks
