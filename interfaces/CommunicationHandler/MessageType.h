#pragma once

namespace CommunicationHandler {

/// Types of message between clients and the handler. The numbers are part of the wire and never change.
enum MessageType : int {
    /// Request with a reply: current values of some or all settings.
    GET_SETTINGS = 7,
    /// Request with a reply: whether this assistant is the device's selected one.
    IS_ORLIA_SELECTED_VA = 18,
    /// Request without a reply: open the assistant's settings application.
    OPEN_VA_SETTINGS = 19,
    /// Request without a reply: log out and clear the stored settings.
    LOG_OUT = 22,
    /// Request without a reply: set one setting.
    SET_SETTINGS = 24,
    /// Event: a setting changed.
    SETTING_CHANGED = 25,
};

}  // namespace CommunicationHandler
