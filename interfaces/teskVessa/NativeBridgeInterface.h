#pragma once

#include <string>

namespace teskVessa {

/// An observer of the entitlement status.
///
/// What the library does: calls it on the thread that wrote the setting, without a lock, after the new value was
/// stored and before the change is reported to the pages. Observers may call back into the handler.
class [[gnu::visibility("default")]] NativeBridgeInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}

public:
    /// The entitlement status is now `status`, as it was given.
    virtual void notifyEntitlementStatusChanged(const std::string& status) = 0;

    virtual ~NativeBridgeInterface() = default;
};

}  // namespace teskVessa
