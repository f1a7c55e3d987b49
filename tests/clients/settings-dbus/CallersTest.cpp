#include <memory>
#include <numeric>

#include <systemd/sd-bus.h>

#include "Fixture.h"

using namespace SettingsDbusTests;

namespace {

using Bus = std::unique_ptr<sd_bus, decltype(&sd_bus_unref)>;

class DbusCallers : public Fixture {
protected:
    void SetUp() override {
        std::filesystem::create_directory(folder / "settings-host");
        startAllWith(fake.emplace(socketPath()));
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

    /// Returns when the bus has passed on what was sent.
    static void finishSending(const Bus& bus) {
        sd_bus_call_method(bus.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId", nullptr, nullptr,
                           "");
    }

    std::optional<FakeHost> fake;
};

int note(sd_bus_message* message, void* notes, sd_bus_error* /*error*/) {
    const char* const signal = sd_bus_message_get_member(message);
    static_cast<Words*>(notes)->emplace_back(signal == nullptr ? "answer" : signal);
    return 0;
}

int countErrors(sd_bus_message* reply, void* errors, sd_bus_error* /*error*/) {
    const sd_bus_error* const error = sd_bus_message_get_error(reply);
    ++(*static_cast<std::map<std::string, int>*>(errors))[error == nullptr ? "done" : error->name];
    return 0;
}

}  // namespace

TEST_F(DbusCallers, HaveTheirTurns) {
    Words ignored;
    const Bus first = connect();
    const Bus second = connect();
    send(first, "held", note, &ignored);
    finishSending(first);
    const std::string held = fake->nextChange();
    for (int number = 0; number < 10; ++number) {
        send(first, "first", note, &ignored);
    }
    finishSending(first);
    send(second, "second", note, &ignored);
    finishSending(second);
    fake->answer(held, R"("outcome":"unchanged")");
    EXPECT_NE(fake->nextChange().find("second"), std::string::npos);
}

TEST_F(DbusCallers, HaveTheSignalsBeforeTheAnswer) {
    Words notes;
    const Bus caller = connect();
    sd_bus_match_signal(caller.get(), nullptr, busName, mainObject, nullptr, nullptr, note, &notes);
    send(caller, "Asia/Tokyo", note, &notes);
    finishSending(caller);
    const std::string change = fake->nextChange();
    fake->sendLine(R"({"type":25,"messageId":"h","timestamp":1,"sequence":1,"origin":"socket","payload":{)"
                   R"("settingDBId":"timezone","from":"","to":"Asia/Tokyo"}})");
    fake->answer(change, R"("outcome":"changed")");
    while (notes.size() < 3 && sd_bus_wait(caller.get(), UINT64_MAX) >= 0) {
        while (sd_bus_process(caller.get(), nullptr) > 0) {
        }
    }
    EXPECT_EQ(notes, (Words{"PropertiesChanged", "Changed", "answer"}));
}

TEST_F(DbusCallers, ThatFloodTheBridgeLeaveTheOthersServed) {
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
    // What still waits ends with the host.
    fake.reset();
    const auto answered = [&] {
        return std::accumulate(results.begin(), results.end(), 0,
                               [](int sum, const auto& entry) { return sum + entry.second; });
    };
    while (answered() < calls && sd_bus_wait(flooding.get(), UINT64_MAX) >= 0) {
        while (sd_bus_process(flooding.get(), nullptr) > 0) {
        }
    }
    EXPECT_GT(results["org.freedesktop.DBus.Error.LimitsExceeded"], calls / 2);
}
