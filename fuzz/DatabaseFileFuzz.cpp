// Any bytes as the database file: it is opened, set aside or refused with a reason, and kept; the storage then works
// like any other.

#include <algorithm>
#include <fstream>
#include <iterator>

#include <fuzzer/FuzzedDataProvider.h>

#include "SettingsHandlerKit/Storage.h"
#include "VessaLogger/LogSink.h"
#include "support/Check.h"
#include "support/FastFolder.h"

namespace {

using namespace SettingsHandlerFuzz;
using namespace SettingsHandlerKit;

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Returns: whether a file with these bytes exists, under any name.
bool isKept(const FastFolder& folder, const std::string& bytes) {
    const std::filesystem::directory_iterator files(folder.path());
    return std::any_of(begin(files), end(files), [&](const auto& file) { return contentOf(file.path()) == bytes; });
}

/// Whatever the tables contain, the storage works, and what it reports as written can be read.
void use(Storage& storage) {
    const auto state = storage.state("simulation");
    std::string value = "left over";
    storage.getValue("deviceName", value);
    check(value != "left over", "a read sets its output");
    for (const std::string wanted : {"Den", "Living room"}) {
        if (storage.setValue("deviceName", wanted)) {
            storage.getValue("deviceName", value);
            check(value == wanted, "what was written can be read");
        }
    }
    state->load("orliaLocale");
    if (state->save("orliaLocale", "[]")) {
        check(state->load("orliaLocale") == "[]", "what was saved can be loaded");
    }
    storage.setAside("orliaLocale");
    storage.removeValue("timezone");
    storage.health();
    if (storage.clearStorage()) {
        storage.getValue("deviceName", value);
        check(value.empty(), "a cleared storage is empty");
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argumentCount*/, char*** /*arguments*/) {
    VessaLogger::setLogSink([](const VessaLogger::LogLine&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FastFolder folder;
    folder.clear();
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string file = folder / "database";
    std::ofstream(file, std::ios::binary) << bytes;
    try {
        Storage storage(file);
        // SQLite takes a file of a single byte for an empty one.
        const bool isDatabase = bytes.size() <= 1 || bytes.rfind("SQLite format 3", 0) == 0;
        check(isDatabase || isKept(folder, bytes), "a file that is not a database is not overwritten");
        use(storage);
    } catch (const DatabaseError& error) {
        const std::string reason = error.what();
        check(!reason.empty(), "a refusal has a reason");
        check(reason.find("left unchanged") == std::string::npos || isKept(folder, bytes), "a refused file is kept");
    }
    return 0;
}
