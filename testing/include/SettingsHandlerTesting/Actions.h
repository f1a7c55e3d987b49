#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include "SettingsHandlerTesting/Journal.h"

/// Actions for `Journal::at` and `Journal::atEvery`: what a collaborator does in addition to its normal behaviour.
///
///     journal.at("storage.setValue(deviceName", throwing("the disk is gone"));
///
/// `Gate` is another: it blocks a thread until the test releases it.
namespace SettingsHandlerTesting {

/// Throws `std::runtime_error` with `text` out of the call.
inline Journal::Action throwing(const std::string& text) {
    return [text] { throw std::runtime_error(text); };
}

/// Makes the call take at least `time`, to simulate a slow collaborator. Do not compare times with it; use `Gate` where
/// the order matters.
inline Journal::Action pausing(std::chrono::milliseconds time) {
    return [time] { std::this_thread::sleep_for(time); };
}

}  // namespace SettingsHandlerTesting
