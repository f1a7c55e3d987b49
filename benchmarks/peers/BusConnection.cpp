#include "BusConnection.h"

#include <cstring>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Benchmarks {

namespace {

using Clock = std::chrono::steady_clock;

struct Observer {
    const PropertyPlace& place;
    const Report& report;
};

/// From the body of PropertiesChanged: the interface, then the new values by name.
int reportChange(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
    const auto time = Clock::now();
    const auto& observer = *static_cast<Observer*>(data);
    const char* interface = nullptr;
    check(sd_bus_message_read(message, "s", &interface), "PropertiesChanged");
    if (std::string_view(interface) != observer.place.interface) {
        return 0;
    }
    check(sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}"), "PropertiesChanged");
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* name = nullptr;
        check(sd_bus_message_read(message, "s", &name), "PropertiesChanged");
        if (std::strcmp(name, observer.place.name) == 0) {
            const char* value = nullptr;
            check(sd_bus_message_read(message, "v", "s", &value), "PropertiesChanged");
            observer.report.seen(time, value);
            return 0;
        }
        check(sd_bus_message_skip(message, "v"), "PropertiesChanged");
        check(sd_bus_message_exit_container(message), "PropertiesChanged");
    }
    return 0;
}

class PropertySetter : public Setter {
public:
    PropertySetter(Bus connected, const PropertyPlace& chosen) : bus(std::move(connected)), place(chosen) {}

    void set(const std::string& value) override {
        check(sd_bus_set_property(bus.get(), place.service, place.object, place.interface, place.name, nullptr, "s",
                                  value.c_str()),
              "setting of the property");
    }

private:
    Bus bus;
    const PropertyPlace& place;
};

}  // namespace

std::unique_ptr<Setter> propertySetter(const std::string& address, const PropertyPlace& place) {
    return std::make_unique<PropertySetter>(connectToBus(address), place);
}

void check(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string(what) + ": " + std::strerror(-result));
    }
}

Bus connectToBus(const std::string& address) {
    sd_bus* raw = nullptr;
    check(sd_bus_new(&raw), "bus");
    Bus bus(raw, &sd_bus_flush_close_unref);
    check(sd_bus_set_address(bus.get(), address.c_str()), "bus address");
    check(sd_bus_set_bus_client(bus.get(), 1), "bus client");
    check(sd_bus_start(bus.get()), "connection to the bus");
    return bus;
}

void observeProperty(const std::string& address, const PropertyPlace& place, const Report& report) {
    const Bus bus = connectToBus(address);
    Observer observer{place, report};
    check(sd_bus_match_signal(bus.get(), nullptr, place.service, place.object, "org.freedesktop.DBus.Properties",
                              "PropertiesChanged", reportChange, &observer),
          "subscription");
    report.ready();
    for (;;) {
        const int work = sd_bus_process(bus.get(), nullptr);
        check(work, "bus");
        if (work == 0) {
            check(sd_bus_wait(bus.get(), UINT64_MAX), "bus");
        }
    }
}

}  // namespace Benchmarks
