#pragma once

#include <stdexcept>

namespace SettingsHandlerKit {

/// Why a listener cannot be opened, as a message for the person who starts the host.
class ListenerError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace SettingsHandlerKit
