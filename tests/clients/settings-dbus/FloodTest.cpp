#include <memory>

#include <systemd/sd-bus.h>

#include "FakeHost.h"
#include "Fixture.h"

using namespace SettingsDbusTests;

namespace {

using Bus = std::unique_ptr<sd_bus, decltype(&sd_bus_unref)>;

class DbusFlood : public Fixture {
protected:
    void SetUp() override {
        startBus();
        std::filesystem::create_directory(folder / "settings-host");
        fake.emplace(socketPath());
        bridge.emplace(Words{SETTINGS_DBUS_PROGRAM}, environment());
        fake->accept();
        waitForLog("connected to");
    }
    Bus connect() const {
        sd_bus* opened = nullptr;
        sd_bus_new(&opened);
        sd_bus_set_address(opened, ("unix:path=" + busPath()).c_str());
        sd_bus_set_bus_client(opened, 1);
        sd_bus_start(opened);
        return {opened, &sd_bus_unref};
    }
    /// Sends a change and waits for nothing.
    static void send(const Bus& bus, const std::string& value, sd_bus_message_handler_t handler, void* data) {
        sd_bus_call_method_async(bus.get(), nullptr, busName, mainObject, busName, "Set", handler, data, "ss",
                                 "timezone", value.c_str());
    }

    std::optional<FakeHost> fake;
};

int countErrors(sd_bus_message* reply, void* errors, sd_bus_error* /*error*/) {
    const sd_bus_error* const error = sd_bus_message_get_error(reply);
    ++(*static_cast<std::map<std::string, int>*>(errors))[error == nullptr ? "done" : error->name];
    return 0;
}

}  // namespace

TEST_F(DbusFlood, OfOneCallerLeavesTheOthersServed) {
    constexpr int calls = 500;
    std::map<std::string, int> results;
    const Bus flooding = connect();
    for (int number = 0; number < calls; ++number) {
        send(flooding, "flood", countErrors, &results);
    }
    sd_bus_flush(flooding.get());
    // The host has the first change, and keeps the bridge waiting.
    std::string change = fake->nextChange();
    std::map<std::string, int> ownResults;
    const Bus other = connect();
    send(other, "other", countErrors, &ownResults);
    sd_bus_flush(other.get());

    int changes = 1;
    for (bool isServed = false; !isServed; ++changes) {
        fake->answer(change, R"("outcome":"unchanged")");
        change = fake->nextChange();
        isServed = change.find("other") != std::string::npos;
    }
    // Far fewer than there are before it: most of the flood is refused, which costs the host nothing.
    EXPECT_LT(changes, 100);
    fake->answer(change, R"("outcome":"unchanged")");
    while (ownResults.empty() && sd_bus_wait(other.get(), UINT64_MAX) >= 0) {
        sd_bus_process(other.get(), nullptr);
    }
    EXPECT_EQ(ownResults, (std::map<std::string, int>{{"done", 1}}));
    while (results["done"] + results["org.freedesktop.DBus.Error.LimitsExceeded"] < calls) {
        if (sd_bus_process(flooding.get(), nullptr) == 0 && sd_bus_wait(flooding.get(), 1000) == 0) {
            fake->answer(fake->nextChange(), R"("outcome":"unchanged")");
        }
    }
    EXPECT_GT(results["org.freedesktop.DBus.Error.LimitsExceeded"], calls / 2);
    EXPECT_GE(results["done"], 16);
}
