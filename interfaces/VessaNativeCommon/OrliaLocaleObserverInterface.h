#pragma once

#include <string>

namespace VessaNativeCommon {

/// An observer of the assistant locale. Once added it stays until the handler is destroyed.
///
/// What the library does: calls it on the thread that wrote the setting, without a lock, after the change was
/// reported to the pages. Observers may call back into the handler.
class [[gnu::visibility("default")]] OrliaLocaleObserverInterface {
public:
    /// The primary locale is now `locale`, for example "en-US".
    virtual void notifyOrliaLocaleChanged(const std::string& locale) = 0;

    virtual ~OrliaLocaleObserverInterface() = default;
};

}  // namespace VessaNativeCommon
