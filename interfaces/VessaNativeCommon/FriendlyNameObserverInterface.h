#pragma once

#include <string>

namespace VessaNativeCommon {

/// An observer of the device's friendly name.
///
/// The library calls it on the thread that set the setting, without a lock, before the event of the change is sent.
/// Observers may call the handler.
class [[gnu::visibility("default")]] FriendlyNameObserverInterface {
public:
    /// The friendly name is now `friendlyName`, for example "Living room".
    virtual void notifyFriendlyNameChanged(const std::string& friendlyName) = 0;

    virtual ~FriendlyNameObserverInterface() = default;
};

}  // namespace VessaNativeCommon
