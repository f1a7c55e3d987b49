#pragma once

#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "SDKWrapper/StorageManagerInterface.h"
#include "Utils/Rapidjson.h"

/// Keeps everything in one file that is replaced as a whole: after a loss of power it is the old one or the new one.
class FileStorage : public SDKWrapper::StorageManagerInterface {
public:
    explicit FileStorage(std::string path) : file(std::move(path)) {
        std::ifstream stream(file);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        rapidjson::Document stored;
        stored.Parse<Utils::jsonParseFlags>(text.c_str());
        if (!stored.HasParseError() && stored.IsObject()) {
            for (const auto& member : stored.GetObject()) {
                if (member.value.IsString()) {
                    values[textOf(member.name)] = textOf(member.value);
                }
            }
        }
    }

    void getValue(const std::string& key, std::string& value) override {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = values.find(key);
        value = found == values.end() ? "" : found->second;
    }
    bool setValue(const std::string& key, const std::string& value) override {
        return change([&](auto& changed) { changed[key] = value; });
    }
    bool removeValue(const std::string& key) override {
        return change([&](auto& changed) { changed.erase(key); });
    }
    bool clearStorage() override {
        return change([](auto& changed) { changed.clear(); });
    }

private:
    using Values = std::map<std::string, std::string>;

    static std::string textOf(const rapidjson::Value& value) { return {value.GetString(), value.GetStringLength()}; }

    /// What the file does not take is not remembered either.
    template <typename Change>
    bool change(Change apply) {
        const std::lock_guard<std::mutex> lock(mutex);
        Values changed = values;
        apply(changed);
        if (!write(changed)) {
            return false;
        }
        values.swap(changed);
        return true;
    }

    bool write(const Values& wanted) const {
        rapidjson::StringBuffer text;
        rapidjson::Writer<rapidjson::StringBuffer> writer(text);
        writer.StartObject();
        for (const auto& [key, value] : wanted) {
            writer.String(key);
            writer.String(value);
        }
        writer.EndObject();
        const std::string next = file + ".next";
        const int descriptor = ::open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (descriptor < 0) {
            return false;
        }
        const bool written =
            ::write(descriptor, text.GetString(), text.GetSize()) == static_cast<ssize_t>(text.GetSize()) &&
            ::fsync(descriptor) == 0;
        return ::close(descriptor) == 0 && written && std::rename(next.c_str(), file.c_str()) == 0;
    }

    std::string file;
    Values values;
    std::mutex mutex;
};
