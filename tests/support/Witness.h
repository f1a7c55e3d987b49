#pragma once

#include <functional>
#include <string>

namespace TestSupport {

/// Is called with every whole frame that a client of a test receives, before the test receives it.
using Witness = std::function<void(const std::string& frame)>;

}  // namespace TestSupport
