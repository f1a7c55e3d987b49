#pragma once

#include <optional>
#include <string>

#include "CommunicationHandler/CommunicationHandlerInterface.h"

namespace SettingsHandlerKit {

/// What the handler finds in a SetSettings request, read by the same parser. To tell why one was refused.
struct SetRequest {
    /// What is missing or has the wrong type, for people; empty when the request is complete.
    std::string missing;
    /// The setting and the time stamp, if they were given with the right type.
    std::string settingDBId;
    std::optional<long> timestamp;
};

/// `transport` has the names of the envelope's members.
SetRequest readSetRequest(const std::string& text,
                          const CommunicationHandler::CommunicationHandlerInterface& transport);

}  // namespace SettingsHandlerKit
