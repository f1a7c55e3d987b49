#pragma once

#include <string>

namespace VessaNativeCommon {

/// An observer of the device's friendly name.
///
/// What the library does: calls it on the thread that wrote the setting, without a lock, before the change is
/// reported to the pages. Observers may call back into the handler.
class [[gnu::visibility("default")]] FriendlyNameObserverInterface {
public:
    /// The friendly name is now `friendlyName`, for example "Living room".
    virtual void notifyFriendlyNameChanged(const std::string& friendlyName) = 0;

    virtual ~FriendlyNameObserverInterface() = default;
};

}  // namespace VessaNativeCommon
