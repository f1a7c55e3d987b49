#pragma once

#include <string>

namespace teskVessa {

/// An observer of the entitlement status.
///
/// The library calls it on the thread that set the setting, without a lock, after the value was stored and before the
/// event of the change is sent. Observers may call the handler.
class [[gnu::visibility("default")]] NativeBridgeInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}

public:
    /// The entitlement status is now `status`, the unchanged text.
    virtual void notifyEntitlementStatusChanged(const std::string& status) = 0;

    virtual ~NativeBridgeInterface() = default;
};

}  // namespace teskVessa
