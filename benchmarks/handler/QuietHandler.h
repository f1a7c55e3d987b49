#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SettingsHandler/SettingsHandler.h"
#include "support/QuietCollaborators.h"

namespace Benchmarks {

/// The handler with its protected operations open.
class OpenHandler : public SettingsHandler::SettingsHandler {
public:
    using SettingsHandler::SettingsHandler::settingChanged;
    using SettingsHandler::SettingsHandler::SettingsHandler;
};

/// A handler whose collaborators do nothing.
struct QuietHandler {
    QuietCollaborators collaborators;
    OpenHandler handler{collaborators.transport, collaborators.storage,  collaborators.metrics,
                        collaborators.bridge,    collaborators.launcher, collaborators.device};

    void addObservers(int count) {
        for (int number = 0; number < count; ++number) {
            handler.addFriendlyNameObserver(std::make_shared<QuietFriendlyNameObserver>());
        }
    }

    /// Gives the cache `count` keys that nobody asks for again.
    void fillCache(int count) {
        std::string old;
        for (int number = 0; number < count; ++number) {
            const std::string key = "key " + std::to_string(number);
            handler.settingChanged(key, old, "value");
        }
    }
};

}  // namespace Benchmarks
