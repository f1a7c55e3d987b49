#pragma once

#include <map>
#include <string>

namespace Wire {

/// Frames of the wire that carry no payload of the handler, as compact JSON text without a line end. Bytes that are no
/// UTF-8 come out as U+FFFD.

/// `{"error":{"code":…,"message":…}}`
std::string refusalFrame(const std::string& code, const std::string& message);

/// `{NAME:{…}}` with `members` in their order.
std::string objectFrame(const std::string& name, const std::map<std::string, std::string>& members);

}  // namespace Wire
