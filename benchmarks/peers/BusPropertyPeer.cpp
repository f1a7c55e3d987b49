#include <string>

#include "BusConnection.h"
#include "PrivateBus.h"
#include "Worker.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

namespace {

constexpr PropertyPlace place{"benchmark.Peers", "/benchmark/peers", "benchmark.Peers", "DeviceName"};

int getName(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
            sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
    return sd_bus_message_append(reply, "s", static_cast<std::string*>(data)->c_str());
}

int setName(sd_bus* bus, const char* path, const char* interface, const char* property, sd_bus_message* value,
            void* data, sd_bus_error* /*error*/) {
    const char* text = nullptr;
    check(sd_bus_message_read(value, "s", &text), "new value");
    auto& name = *static_cast<std::string*>(data);
    if (name == text) {
        return 1;
    }
    name = text;
    return sd_bus_emit_properties_changed(bus, path, interface, property, nullptr);
}

const sd_bus_vtable table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_WRITABLE_PROPERTY("DeviceName", "s", getName, setName, 0,
                             SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE | SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

void serve(const std::string& address, int socket) {
    const Bus bus = connectToBus(address);
    std::string name = "TV";
    check(sd_bus_add_object_vtable(bus.get(), nullptr, place.object, place.interface, table, &name), "object");
    check(sd_bus_request_name(bus.get(), place.service, 0), "name of the service");
    sendMessage(socket, "", 1);
    for (;;) {
        const int work = sd_bus_process(bus.get(), nullptr);
        check(work, "bus");
        if (work == 0) {
            check(sd_bus_wait(bus.get(), UINT64_MAX), "bus");
        }
    }
}

class BusPropertyPeer : public Peer {
public:
    BusPropertyPeer() {
        char ready = 0;
        receiveMessage(service.descriptor(), &ready, sizeof(ready));
    }

    std::unique_ptr<Setter> connect() const override { return propertySetter(bus.address(), place); }
    void observe(const Report& report) const override { observeProperty(bus.address(), place, report); }

private:
    TestSupport::TemporaryDirectory folder{TestSupport::memoryFolder()};
    PrivateBus bus{folder.path(), {}, {}};
    Worker service{[this](int socket) { serve(bus.address(), socket); }};
};

}  // namespace

std::unique_ptr<Peer> busPropertyPeer() {
    return std::make_unique<BusPropertyPeer>();
}

}  // namespace Benchmarks
