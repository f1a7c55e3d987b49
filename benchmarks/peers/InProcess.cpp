#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#define G_SETTINGS_ENABLE_BACKEND
#include <gio/gio.h>
#include <gio/gsettingsbackend.h>

#include "CommunicationHandler/MessageType.h"
#include "Schema.h"
#include "SettingsHandler/SettingsHandler.h"
#include "VessaLogger/LogSink.h"
#include "support/Arguments.h"
#include "support/QuietCollaborators.h"
#include "support/TemporaryDirectory.h"
#include "support/Texts.h"

namespace Benchmarks {

namespace {

/// What takes a change in the caller's own process and tells of it there.
class Changing {
public:
    Changing() = default;
    virtual ~Changing() = default;
    Changing(const Changing&) = delete;
    Changing& operator=(const Changing&) = delete;

    /// Changes the setting `count` times, to and fro between two texts.
    virtual void change(int count) = 0;
    /// How often a change was told.
    virtual std::uint64_t told() const = 0;
};

class CountingTransport : public QuietTransport {
public:
    std::string sendMessage(int /*messageType*/, rapidjson::Document& /*payload*/) override {
        ++sent;
        return {};
    }

    std::uint64_t sent = 0;
};

/// A SetSettings request from its text to the event, everything but what the collaborators do.
class HandlerChanging : public Changing {
public:
    HandlerChanging() {
        VessaLogger::setLogSink([](const VessaLogger::LogLine&) {});
        others.storage.storedValue = "TV";
        handler = SettingsHandler::SettingsHandler::create(transport, others.storage, others.metrics, others.bridge,
                                                           others.launcher, others.device);
        handler->initializeSettings();
    }

    void change(int count) override {
        const std::string requests[] = {setRequest("deviceName", "Living room"), setRequest("deviceName", "Bedroom")};
        const auto& deliver = transport->handlers.at(CommunicationHandler::SET_SETTINGS);
        for (int index = 0; index < count; ++index) {
            deliver(requests[index % 2]);
        }
    }
    std::uint64_t told() const override { return transport->sent; }

private:
    QuietCollaborators others;
    std::shared_ptr<CountingTransport> transport = std::make_shared<CountingTransport>();
    std::shared_ptr<SettingsHandler::SettingsHandler> handler;
};

/// GSettings with its backend in memory, and a handler of its signal.
class GSettingsChanging : public Changing {
public:
    GSettingsChanging() {
        const TestSupport::TemporaryDirectory folder;
        compileSchema(folder.path());
        ::setenv("GSETTINGS_SCHEMA_DIR", folder.path().c_str(), 1);
        GSettingsBackend* backend = g_memory_settings_backend_new();
        settings.reset(g_settings_new_with_backend(schemaName, backend));
        g_object_unref(backend);
        g_signal_connect(settings.get(), "changed", G_CALLBACK(&GSettingsChanging::count), &changes);
    }

    void change(int count) override {
        const char* const values[] = {"Living room", "Bedroom"};
        for (int index = 0; index < count; ++index) {
            g_settings_set_string(settings.get(), schemaKey, values[index % 2]);
        }
    }
    std::uint64_t told() const override { return changes; }

private:
    static void count(GSettings* /*settings*/, const char* /*key*/, std::uint64_t* changes) { ++*changes; }

    std::unique_ptr<GSettings, decltype(&g_object_unref)> settings{nullptr, &g_object_unref};
    std::uint64_t changes = 0;
};

/// Of this process, in microseconds.
double processorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// Microseconds of processor time for each change. Throws when a change was not told.
double timeOf(Changing& changing, int count) {
    const std::uint64_t before = changing.told();
    const double start = processorTime();
    changing.change(count);
    const double used = processorTime() - start;
    if (changing.told() - before != static_cast<std::uint64_t>(count)) {
        throw std::runtime_error("not every change was told");
    }
    return used / count;
}

Results measure(const Arguments& arguments) {
    HandlerChanging handler;
    GSettingsChanging peer;
    Figure ours{"in-process/SetSettings, nothing stored", "us", {}};
    Figure others{"in-process/GSettings in memory", "us", {}};
    // An even count, so that the first value of a turn is a change, too.
    const int changesInTurn = arguments.quick ? 100 : 4000;
    const int turns = arguments.quick ? 1 : 40;
    timeOf(handler, changesInTurn);
    timeOf(peer, changesInTurn);
    for (int round = 0; round < arguments.rounds; ++round) {
        std::vector<double> ofOurs;
        std::vector<double> ofOthers;
        for (int turn = 0; turn < turns; ++turn) {
            ofOurs.push_back(timeOf(handler, changesInTurn));
            ofOthers.push_back(timeOf(peer, changesInTurn));
        }
        ours.rounds.push_back(median(ofOurs));
        others.rounds.push_back(median(ofOthers));
    }
    Results results;
    results.add(Ratio{"in-process/SetSettings over GSettings", "g_settings_set_string with the memory backend",
                      quotients(ours.rounds, others.rounds), 1.3});
    results.add(std::move(ours));
    results.add(std::move(others));
    return results;
}

}  // namespace

}  // namespace Benchmarks

int main(int count, char** texts) {
    return Benchmarks::measureAndPrint(count, texts, Benchmarks::measure);
}
