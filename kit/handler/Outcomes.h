#pragma once

#include <string>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "SettingsHandlerKit/Outcome.h"
#include "handler/NewestTimestamps.h"
#include "handler/ThreadRecords.h"

/// \file
/// The outcome of an operation that has ended.
namespace SettingsHandlerKit {

/// What a request is judged by.
struct RequestSurroundings {
    /// Has the names of the envelope's members.
    const CommunicationHandler::CommunicationHandlerInterface& transport;
    const NewestTimestamps& newest;
};

/// Sets the outcome of a `setSetting` that returned `changed`. Reuses the memory of the one before.
void setWriteOutcome(Outcome& outcome, const Operation& write, bool changed, const std::string& settingDBId,
                     const std::string& value);
/// Of a `setSetting` that an exception left.
Outcome outcomeOfFailure(const Operation& write, const std::string& settingDBId);
/// Of a `setSetting` that would have ended the process.
Outcome outcomeOfRejection(const std::string& settingDBId);

/// Of a request that called no `setSetting`.
Outcome outcomeOfRequest(const Operation& request, const std::string& text, const RequestSurroundings& around);
/// Of a request that an exception left.
Outcome outcomeOfFailure(const Operation& request, const std::string& text, const RequestSurroundings& around);
/// Of a SetSettings request that would have ended the process.
Outcome outcomeOfRejection(const std::string& text, const RequestSurroundings& around);
/// Of a GetSettings request beyond its memory.
Outcome busyOutcome(const std::string& error);

}  // namespace SettingsHandlerKit
