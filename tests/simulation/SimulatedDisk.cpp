#include "simulation/SimulatedDisk.h"

#include <algorithm>
#include <utility>

#include <sqlite3.h>

#include "simulation/DiskLayer.h"

namespace SettingsSimulation {

namespace {

std::error_code errorOf(std::errc error) {
    return std::make_error_code(error);
}

}  // namespace

/// A name that was given, taken away, or both.
struct SimulatedDisk::NameChange {
    std::string from;
    std::string to;
    std::shared_ptr<SimulatedFile> file;

    bool isIn(const std::string& folder) const { return folderOf(to.empty() ? from : to) == folder; }
};

SimulatedDisk::SimulatedDisk(Choices& allChoices, Sleep letTimePass)
    : choices(allChoices),
      sleep(std::move(letTimePass)),
      former(sqlite3_vfs_find(nullptr)),
      layer(std::make_unique<sqlite3_vfs>(diskLayer(*this, *former))) {
    sqlite3_vfs_register(layer.get(), 1);
    // Its random numbers begin anew, from this layer.
    sqlite3_randomness(0, nullptr);
    const auto root = std::make_shared<SimulatedFile>();
    root->isFolder = true;
    names["/"] = root;
    keptNames = names;
}

SimulatedDisk::~SimulatedDisk() {
    sqlite3_vfs_register(former, 1);
    sqlite3_vfs_unregister(layer.get());
    sqlite3_randomness(0, nullptr);
}

std::string SimulatedDisk::databaseLayer() const {
    return layer->zName;
}

std::string SimulatedDisk::folderOf(const std::string& path) {
    const std::size_t end = path.rfind('/');
    return end == 0 ? "/" : path.substr(0, end);
}

bool SimulatedDisk::fails() {
    if (isLookedAt) {
        return false;
    }
    ++callCount;
    if (isCutOff) {
        return true;
    }
    if (callCount == cutOffCall) {
        isCutOff = true;
        std::exchange(cutOffAction, nullptr)();
        return true;
    }
    const bool failed = callCount >= firstFailure && callCount <= lastFailure;
    failureCount += failed ? 1 : 0;
    return failed;
}

std::error_code SimulatedDisk::failure() const {
    return errorOf(std::errc::io_error);
}

void SimulatedDisk::failCalls(long first, long count) {
    firstFailure = callCount + first;
    lastFailure = firstFailure + count - 1;
}

void SimulatedDisk::cutOffAt(long number, std::function<void()> action) {
    cutOffCall = callCount + number;
    cutOffAction = std::move(action);
}

void SimulatedDisk::work() {
    isCutOff = false;
    cutOffCall = 0;
    firstFailure = 0;
    lastFailure = 0;
}

SimulatedFile* SimulatedDisk::fileAt(const std::string& path) const {
    const auto found = names.find(path);
    return found == names.end() ? nullptr : found->second.get();
}

std::shared_ptr<SimulatedFile> SimulatedDisk::create(const std::string& path) {
    auto made = std::make_shared<SimulatedFile>();
    names[path] = made;
    pendingNames.push_back({"", path, made});
    return made;
}

void SimulatedDisk::remove(const std::string& path) {
    names.erase(path);
    pendingNames.push_back({path, "", nullptr});
}

void SimulatedDisk::keep(const NameChange& change) {
    keptNames.erase(change.from);
    if (change.file) {
        keptNames[change.to] = change.file;
    }
}

void SimulatedDisk::keepNames(const std::string& folder) {
    const auto others = std::stable_partition(pendingNames.begin(), pendingNames.end(),
                                              [&](const auto& change) { return change.isIn(folder); });
    std::for_each(pendingNames.begin(), others, [this](const auto& change) { keep(change); });
    pendingNames.erase(pendingNames.begin(), others);
}

/// To sync a new file takes its name to the disk, and the changes of names before that.
void SimulatedDisk::keepName(const SimulatedFile& file) {
    const auto made = std::find_if(pendingNames.begin(), pendingNames.end(),
                                   [&](const auto& change) { return change.file.get() == &file; });
    if (made != pendingNames.end()) {
        std::for_each(pendingNames.begin(), made + 1, [this](const auto& change) { keep(change); });
        pendingNames.erase(pendingNames.begin(), made + 1);
    }
}

std::error_code SimulatedDisk::createFolder(const std::string& folder) {
    if (fails()) {
        return failure();
    }
    if (fileAt(folder) != nullptr) {
        return errorOf(std::errc::file_exists);
    }
    create(folder)->isFolder = true;
    return {};
}

std::error_code SimulatedDisk::createFile(const std::string& file) {
    if (fails()) {
        return failure();
    }
    if (fileAt(file) == nullptr) {
        create(file);
    }
    return {};
}

std::error_code SimulatedDisk::copyFile(const std::string& from, const std::string& to) {
    if (fails()) {
        return failure();
    }
    const SimulatedFile* const source = fileAt(from);
    if (source == nullptr || fileAt(to) != nullptr) {
        return errorOf(source == nullptr ? std::errc::no_such_file_or_directory : std::errc::file_exists);
    }
    const auto copy = create(to);
    if (fails()) {
        return failure();
    }
    copy->change({false, 0, source->content});
    return {};
}

std::error_code SimulatedDisk::renameFile(const std::string& from, const std::string& to) {
    if (fails()) {
        return failure();
    }
    const auto source = names.find(from);
    if (source == names.end()) {
        return errorOf(std::errc::no_such_file_or_directory);
    }
    const auto file = source->second;
    names.erase(source);
    names[to] = file;
    pendingNames.push_back({from, to, file});
    return {};
}

std::error_code SimulatedDisk::removeFile(const std::string& file) {
    if (fails()) {
        return failure();
    }
    if (fileAt(file) == nullptr) {
        return errorOf(std::errc::no_such_file_or_directory);
    }
    remove(file);
    return {};
}

std::error_code SimulatedDisk::sync(const std::string& path) {
    if (fails()) {
        return failure();
    }
    SimulatedFile* const file = fileAt(path);
    if (file == nullptr) {
        return errorOf(std::errc::no_such_file_or_directory);
    }
    if (file->isFolder) {
        keepNames(path);
    } else {
        file->sync();
        keepName(*file);
    }
    return {};
}

std::optional<SettingsHandlerKit::Disk::FileState> SimulatedDisk::find(const std::string& path) const {
    const SimulatedFile* const file = fileAt(path);
    return file == nullptr ? std::nullopt : std::optional(FileState{file->content.size(), file->changed});
}

std::error_code SimulatedDisk::tryOpen(const std::string& file, bool /*writing*/) const {
    return fileAt(file) == nullptr ? errorOf(std::errc::no_such_file_or_directory) : std::error_code();
}

std::error_code SimulatedDisk::list(const std::string& folder, std::vector<std::string>& found) const {
    if (fileAt(folder) == nullptr) {
        return errorOf(std::errc::no_such_file_or_directory);
    }
    for (const auto& entry : names) {
        if (entry.first != "/" && folderOf(entry.first) == folder) {
            found.push_back(entry.first.substr(entry.first.rfind('/') + 1));
        }
    }
    return {};
}

void SimulatedDisk::losePower() {
    const auto changes = std::exchange(pendingNames, {});
    const std::size_t left = changes.empty() ? 0 : choices.pick(3, "what a power cut leaves of the names' changes");
    for (const auto& change : changes) {
        if (left == 0 || (left == 2 && choices.pick(2, "does a change of a name survive") == 0)) {
            keep(change);
        }
    }
    names = keptNames;
    for (const auto& entry : names) {
        entry.second->losePower(choices);
    }
}

std::map<std::string, std::string> SimulatedDisk::rows(const std::string& file, const std::string& table) {
    std::map<std::string, std::string> found;
    const auto present = names;
    const auto pending = pendingNames;
    const std::string copy = "/copy";
    for (const std::string suffix : {"", "-wal", "-journal"}) {
        if (const SimulatedFile* const original = fileAt(file + suffix)) {
            const auto copied = std::make_shared<SimulatedFile>();
            copied->content = original->content;
            names[copy + suffix] = copied;
        }
    }
    isLookedAt = true;
    sqlite3* database = nullptr;
    sqlite3_open_v2(copy.c_str(), &database, SQLITE_OPEN_READWRITE, layer->zName);
    const std::string sql = "PRAGMA locking_mode=EXCLUSIVE; SELECT key, value FROM " + table;
    const auto take = [](void* rows, int columns, char** values, char**) {
        if (columns == 2) {
            (*static_cast<std::map<std::string, std::string>*>(rows))[values[0]] = values[1];
        }
        return 0;
    };
    sqlite3_exec(database, sql.c_str(), take, &found, nullptr);
    sqlite3_close(database);
    isLookedAt = false;
    names = present;
    pendingNames = pending;
    return found;
}

std::map<std::string, std::string> SimulatedDisk::contents() const {
    std::map<std::string, std::string> found;
    for (const auto& [path, file] : names) {
        if (!file->isFolder) {
            found[path] = file->content;
        }
    }
    return found;
}

}  // namespace SettingsSimulation
