#pragma once

namespace Wire {

/// Message types of the wire.
enum MessageType : int {
    GET_SETTINGS = 7,
    IS_ORLIA_SELECTED_VA = 18,
    OPEN_VA_SETTINGS = 19,
    LOG_OUT = 22,
    SET_SETTINGS = 24,
    SETTING_CHANGED = 25,
};

}  // namespace Wire
