#pragma once

#include <algorithm>
#include <cctype>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>

#include "Fault.h"
#include "OneThread.h"
#include "SDKWrapper/StorageManagerInterface.h"

namespace SettingsHandlerTests {

/// A storage that has only the current fault.
class FaultyStorage : public SDKWrapper::StorageManagerInterface {
public:
    void getValue(const std::string& key, std::string& value) override {
        expectThread();
        const std::lock_guard<std::mutex> lock(mutex);
        const auto entry = values.find(stored(key));
        if (entry != values.end()) {
            value = entry->second;
        } else if (!Fault::is("leaves the output of an absent key")) {
            value.clear();
        }
        if (Fault::is("removes a value when it is read") && entry != values.end()) {
            values.erase(entry);
        }
    }

    bool setValue(const std::string& key, const std::string& value) override {
        expectThread();
        const std::lock_guard<std::mutex> lock(mutex);
        const std::string kept = tidied(value);
        if (failing) {
            if (Fault::is("removes the old value when a write fails")) {
                values.erase(key);
            }
            return Fault::is("returns true for a failed write");
        }
        if (Fault::is("stores nothing") || (Fault::is("ignores empty values") && value.empty()) || wasClosed) {
            return !wasClosed;
        }
        if (Fault::is("keeps the first value")) {
            values.emplace(stored(key), kept);
        } else {
            values[stored(key)] = kept;
        }
        return true;
    }

    bool removeValue(const std::string& key) override {
        expectThread();
        const std::lock_guard<std::mutex> lock(mutex);
        if (Fault::is("throws when the key to remove is absent") && values.count(key) == 0) {
            throw std::out_of_range(key);
        }
        if (Fault::is("removes everything")) {
            values.clear();
        } else if (!Fault::is("removes nothing")) {
            values.erase(stored(key));
        }
        return true;
    }

    bool clearStorage() override {
        expectThread();
        const std::lock_guard<std::mutex> lock(mutex);
        if (Fault::is("refuses to clear an empty storage") && values.empty()) {
            return false;
        }
        if (!Fault::is("clears nothing")) {
            values.clear();
        }
        wasClosed = Fault::is("stores nothing after it was cleared");
        return true;
    }

    void reopen() {
        if (Fault::is("keeps everything in memory")) {
            values.clear();
        }
        if (Fault::is("brings back an older state")) {
            values["changed"] = "old";
        }
    }

    void failWrites(bool fail) { failing = fail; }

private:
    void expectThread() const {
        if (Fault::is("works on one thread only (storage)")) {
            thread.expectHere();
        }
    }

    static std::string stored(std::string key) {
        if (Fault::is("cuts keys at a NUL")) {
            key = key.c_str();
        }
        if (Fault::is("ignores the case of keys")) {
            std::transform(key.begin(), key.end(), key.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
        }
        return key;
    }

    static std::string tidied(const std::string& value) {
        if (Fault::is("cuts values at a NUL")) {
            return value.c_str();
        }
        if (Fault::is("converts numbers") && value == "007") {
            return "7";
        }
        if (Fault::is("cuts large values")) {
            return value.substr(0, 65536);
        }
        return value;
    }

    OneThread thread;
    std::mutex mutex;
    std::map<std::string, std::string> values;
    bool failing = false;
    bool wasClosed = false;
};

struct FaultyStorageMaker {
    static constexpr bool anyThread = true;
    FaultyStorage own;
    SDKWrapper::StorageManagerInterface& storage() { return own; }
    void reopen() { own.reopen(); }
    void failWrites(bool fail) { own.failWrites(fail); }
};

}  // namespace SettingsHandlerTests
