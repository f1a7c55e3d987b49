#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/Results.h"

namespace Benchmarks {

/// How long a program measures.
struct Arguments {
    int rounds = 9;
    /// Shows that it works, in one short round; the results are not worth keeping.
    bool quick = false;
    /// All processes share one processor, so that waking a sleeping one takes no time.
    bool oneProcessor = false;
    /// All others.
    std::vector<std::string> others;
};

/// The main function of a program that measures: reads `[--rounds N] [--quick] [--one-processor]`, prints the results
/// of `measure`, or on standard error why it failed. Returns: the exit status.
int measureAndPrint(int count, const char* const* texts, const std::function<Results(const Arguments&)>& measure);

}  // namespace Benchmarks
