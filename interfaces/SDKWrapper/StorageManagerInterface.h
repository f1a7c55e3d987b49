#pragma once

#include <string>

namespace SDKWrapper {

/// The device's persistent key-value storage.
///
/// What the library does: reads and writes on the thread of the request or notification, never holding a lock of
/// its own except inside `initializeSettings`, which reads every setting with the cache's mutex held. Keys and
/// values are any bytes, NUL included.
///
/// What the implementer does: keeps a value that was accepted through a loss of power, and is safe to call from
/// every thread that the handler is called from. The storage outlives the handler.
class [[gnu::visibility("default")]] StorageManagerInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}

public:
    /// Reads the value stored under `key`.
    /// `value`: always set, whatever it held before; empty when nothing is stored under `key`. The library reuses
    /// one string for several reads, so a value left untouched would be taken for the next key's.
    virtual void getValue(const std::string& key, std::string& value) = 0;

    /// Stores `value` under `key`, replacing what was there.
    /// Returns: false when it could not be stored; the old value is then still there.
    virtual bool setValue(const std::string& key, const std::string& value) = 0;

protected:
    virtual void reserved5() {}
    virtual void reserved6() {}

public:
    /// Removes `key` and its value.
    /// Returns: false when that failed; the library does not look at it.
    virtual bool removeValue(const std::string& key) = 0;

protected:
    virtual void reserved8() {}

public:
    /// Removes every stored key.
    /// Returns: false when that failed; the library logs it and goes on.
    virtual bool clearStorage() = 0;

    virtual ~StorageManagerInterface() = default;
};

}  // namespace SDKWrapper
