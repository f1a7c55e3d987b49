#pragma once

namespace CommunicationHandler {

/// Kinds of message between the settings pages and the handler. The numbers are part of the wire and never change.
enum MessageType : int {
    /// Request, answered: current values of some or all settings.
    GET_SETTINGS = 7,
    /// Request, answered: is this assistant the device's selected one?
    IS_ORLIA_SELECTED_VA = 18,
    /// Request, not answered: open the assistant's settings application.
    OPEN_VA_SETTINGS = 19,
    /// Request, not answered: forget the user.
    LOG_OUT = 22,
    /// Request, not answered: give one setting a new value.
    SET_SETTINGS = 24,
    /// Event: a setting took a new value.
    SETTING_CHANGED = 25,
};

}  // namespace CommunicationHandler
