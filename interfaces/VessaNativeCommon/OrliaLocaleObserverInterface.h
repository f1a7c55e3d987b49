#pragma once

#include <string>

namespace VessaNativeCommon {

/// An observer of the primary locale of the assistant. It cannot be removed from the handler.
///
/// The library calls it on the thread that set the setting, without a lock, after the event of the change was sent.
/// Observers may call the handler.
class [[gnu::visibility("default")]] OrliaLocaleObserverInterface {
public:
    /// The primary locale is now `locale`, for example "en-US".
    virtual void notifyOrliaLocaleChanged(const std::string& locale) = 0;

    virtual ~OrliaLocaleObserverInterface() = default;
};

}  // namespace VessaNativeCommon
