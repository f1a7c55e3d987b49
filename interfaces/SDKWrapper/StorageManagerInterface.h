#pragma once

#include <string>

namespace SDKWrapper {

/// The device's persistent key-value storage.
///
/// The library reads and writes on the thread that calls the handler, without a lock, except inside
/// `initializeSettings`, which reads every setting with the cache mutex held. Keys and values are arbitrary bytes, NUL
/// included.
///
/// The implementer keeps an accepted value through a loss of power, and may be called from every thread that calls the
/// handler. The storage outlives the handler.
class [[gnu::visibility("default")]] StorageManagerInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}

public:
    /// Reads the value stored under `key`.
    /// - `value`: always set; empty when nothing is stored under `key`. The library reuses one string for several
    ///   reads, so a value that is not set would be read as that of the next key.
    virtual void getValue(const std::string& key, std::string& value) = 0;

    /// Stores `value` under `key`, in place of the old value.
    /// - Returns: false when it could not be stored; the old value is then unchanged.
    virtual bool setValue(const std::string& key, const std::string& value) = 0;

protected:
    virtual void reserved5() {}
    virtual void reserved6() {}

public:
    /// Removes `key` and its value.
    /// - Returns: false on failure; the library ignores it.
    virtual bool removeValue(const std::string& key) = 0;

protected:
    virtual void reserved8() {}

public:
    /// Removes all keys and values.
    /// - Returns: false on failure; the library logs it and continues.
    virtual bool clearStorage() = 0;

    virtual ~StorageManagerInterface() = default;
};

}  // namespace SDKWrapper
