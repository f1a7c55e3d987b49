#pragma once

#include <functional>
#include <string>

namespace TestSupport {

/// Is shown every whole frame that a client of a test receives, before the test sees it.
using Witness = std::function<void(const std::string& frame)>;

}  // namespace TestSupport
