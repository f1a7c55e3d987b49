#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include "SettingsHandlerTesting/Journal.h"

/// What a collaborator can do besides answering: hand one of these to `Journal::at` or `Journal::atEvery`.
///
///     journal.at("storage.setValue(deviceName", throwing("the disk is gone"));
///
/// A third one, holding a thread until the test lets it go on, is `Gate`.
namespace SettingsHandlerTesting {

/// Throws `std::runtime_error` with `text` out of the call.
inline Journal::Action throwing(const std::string& text) {
    return [text] { throw std::runtime_error(text); };
}

/// Makes the call take at least `time`. For looking at behaviour under slow collaborators; never compare times with it,
/// and use `Gate` where an order matters.
inline Journal::Action pausing(std::chrono::milliseconds time) {
    return [time] { std::this_thread::sleep_for(time); };
}

}  // namespace SettingsHandlerTesting
