#include "server/web/PageFiles.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace SettingsHandlerKit {

namespace {

namespace fs = std::filesystem;

std::string contentTypeOf(const fs::path& file) {
    static const std::map<std::string, std::string> types{
        {".html", "text/html; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".json", "application/json"},
        {".map", "application/json"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"},
        {".ico", "image/x-icon"},
        {".woff2", "font/woff2"},
        {".txt", "text/plain; charset=utf-8"},
    };
    const auto type = types.find(file.extension().string());
    return type == types.end() ? "application/octet-stream" : type->second;
}

bool isHidden(const fs::path& file) {
    return file.filename().string().front() == '.';
}

std::string contentOf(const fs::path& file, std::size_t size) {
    std::ifstream stream(file, std::ios::binary);
    std::string content;
    // Exactly as much as needed: it stays in memory.
    content.reserve(size);
    content.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    if (!stream) {
        throw std::runtime_error("cannot read " + file.string());
    }
    return content;
}

}  // namespace

PageFiles::PageFiles(const std::string& folder) {
    std::error_code problem;
    fs::recursive_directory_iterator entry(folder, problem);
    if (problem) {
        throw std::runtime_error("cannot read the pages' folder " + folder + ": " + problem.message());
    }
    std::size_t size = 0;
    for (; entry != fs::recursive_directory_iterator(); ++entry) {
        if (isHidden(entry->path())) {
            entry.disable_recursion_pending();
            continue;
        }
        if (!entry->is_regular_file() || entry->is_symlink()) {
            continue;
        }
        const auto fileSize = static_cast<std::size_t>(entry->file_size());
        size += fileSize;
        if (size > maximumSize) {
            throw std::runtime_error("the pages' folder " + folder + " holds more than 16 MiB");
        }
        const std::string path = "/" + entry->path().lexically_relative(folder).generic_string();
        files[path] = {contentTypeOf(entry->path()),
                       std::make_shared<const std::string>(contentOf(entry->path(), fileSize))};
    }
    if (files.count("/index.html") == 0) {
        throw std::runtime_error("the pages' folder " + folder + " has no index.html");
    }
}

const PageFile* PageFiles::find(const std::string& path) const {
    const auto file = files.find(path == "/" ? "/index.html" : path == "/device" ? "/device.html" : path);
    return file == files.end() ? nullptr : &file->second;
}

}  // namespace SettingsHandlerKit
