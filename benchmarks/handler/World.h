#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SettingsHandler/SettingsHandler.h"
#include "floor/Floor.h"
#include "support/QuietCollaborators.h"

namespace Benchmarks {

/// The handler with its protected operations open.
class OpenHandler : public SettingsHandler::SettingsHandler {
public:
    using SettingsHandler::SettingsHandler::settingChanged;
    using SettingsHandler::SettingsHandler::SettingsHandler;
};

/// A handler and a floor with the same quiet surroundings.
struct World {
    QuietCollaborators collaborators;
    OpenHandler handler{collaborators.transport, collaborators.storage,  collaborators.metrics,
                        collaborators.bridge,    collaborators.launcher, collaborators.device};
    Floor::Floor floor{collaborators};

    void addObservers(int count) {
        for (int number = 0; number < count; ++number) {
            const auto observer = std::make_shared<QuietFriendlyNameObserver>();
            handler.addFriendlyNameObserver(observer);
            floor.addFriendlyNameObserver(observer);
        }
    }

    /// Gives both caches `count` keys that nobody asks for again.
    void fillCaches(int count) {
        std::string old;
        for (int number = 0; number < count; ++number) {
            const std::string key = "key " + std::to_string(number);
            handler.settingChanged(key, old, "value");
        }
        floor.fillCache(count);
    }
};

}  // namespace Benchmarks
