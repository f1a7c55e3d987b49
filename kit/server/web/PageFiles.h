#pragma once

#include <map>
#include <memory>
#include <string>

namespace SettingsHandlerKit {

/// A file of the pages.
struct PageFile {
    std::string contentType;
    std::shared_ptr<const std::string> content;
};

/// The files of a folder and its sub-folders, read once, so that no spelling of a path leads to any other file. Links,
/// hidden files and everything that is not a regular file are left out.
class PageFiles {
public:
    static constexpr std::size_t maximumSize = 16UL * 1024UL * 1024UL;

    /// No files.
    PageFiles() = default;
    /// Reads `folder`. Errors: `std::runtime_error` as a message for a person, also when there is no "index.html" or
    /// the files are larger than `maximumSize` in all.
    explicit PageFiles(const std::string& folder);

    bool isEmpty() const { return files.empty(); }
    /// The file at `path` of an address: "/assets/main.js"; "/" is index.html, "/device" is device.html. Null when
    /// there is none.
    const PageFile* find(const std::string& path) const;

private:
    std::map<std::string, PageFile> files;
};

}  // namespace SettingsHandlerKit
