#include "mosquitto/MosquittoBroker.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <poll.h>

namespace SettingsMqtt {

namespace {

using Clock = std::chrono::steady_clock;

/// A broker of version 5 keeps larger messages to itself; payloads up to this size are answered.
constexpr std::uint32_t largestPacket = 1048576;

std::string reasonOf(int code) {
    return mosquitto_strerror(code);
}

void check(int code, const std::string& what) {
    if (code != MOSQ_ERR_SUCCESS) {
        throw std::runtime_error(what + ": " + reasonOf(code));
    }
}

const char* orNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

}  // namespace

/// What libmosquitto calls, from within `process` or, when a connection breaks, from within anything.
struct MosquittoBroker::Callbacks {
    static MosquittoBroker& self(void* broker) { return *static_cast<MosquittoBroker*>(broker); }

    static void connected(mosquitto* /*library*/, void* broker, int code, int /*flags*/,
                          const mosquitto_property* /*properties*/) {
        if (code != 0) {
            const bool isNew = self(broker).options.protocol == "5";
            self(broker).lossReason = isNew ? mosquitto_reason_string(code) : mosquitto_connack_string(code);
            return;
        }
        self(broker).connectedSince = Clock::now();
        self(broker).loggedReason.clear();
        self(broker).options.log(1, "connected to the broker");
        if (const auto listener = self(broker).listener.lock()) {
            listener->brokerConnected();
        }
    }

    static void disconnected(mosquitto* /*library*/, void* broker, int code, const mosquitto_property* /*properties*/) {
        if (self(broker).lossReason.empty()) {
            self(broker).lossReason = code == 0 ? "the bridge disconnected" : reasonOf(code);
        }
    }

    static void received(mosquitto* /*library*/, void* broker, const mosquitto_message* message,
                         const mosquitto_property* /*properties*/) {
        if (const auto listener = self(broker).listener.lock()) {
            const auto* const bytes = static_cast<const char*>(message->payload);
            listener->received(
                {message->topic,
                 bytes == nullptr ? "" : std::string(bytes, static_cast<std::size_t>(message->payloadlen)),
                 message->retain});
        }
    }

    static void published(mosquitto* /*library*/, void* broker, int number, int code,
                          const mosquitto_property* /*properties*/) {
        if (code >= MQTT_RC_UNSPECIFIED) {
            self(broker).options.log(2, std::string("the broker refuses a message: ") + mosquitto_reason_string(code));
        }
        if (const auto listener = self(broker).listener.lock()) {
            listener->acknowledged(number);
        }
    }

    static void subscribed(mosquitto* /*library*/, void* broker, int /*number*/, int count, const int* granted,
                           const mosquitto_property* /*properties*/) {
        if (std::any_of(granted, granted + count, [](int quality) { return quality >= MQTT_RC_UNSPECIFIED; })) {
            self(broker).options.log(2, "the broker refuses the subscription to commands");
        }
    }
};

MosquittoBroker::MosquittoBroker(MosquittoOptions chosen)
    : options(std::move(chosen)),
      pauses(options.firstPause, options.longestPause, options.seed),
      connection(nullptr, mosquitto_destroy) {
    mosquitto_lib_init();
}

MosquittoBroker::~MosquittoBroker() {
    connection.reset();
    mosquitto_lib_cleanup();
}

void MosquittoBroker::subscribe(const std::vector<std::string>& topics) {
    std::vector<std::string> copies = topics;
    std::vector<char*> filters(copies.size());
    std::transform(copies.begin(), copies.end(), filters.begin(), [](std::string& topic) { return topic.data(); });
    mosquitto_subscribe_multiple(connection.get(), nullptr, static_cast<int>(filters.size()), filters.data(), 1, 0,
                                 nullptr);
}

int MosquittoBroker::publish(const Message& message) {
    int number = 0;
    const int code =
        mosquitto_publish(connection.get(), &number, message.topic.c_str(), static_cast<int>(message.payload.size()),
                          message.payload.data(), 1, message.retained);
    if (code != MOSQ_ERR_SUCCESS && lossReason.empty()) {
        lossReason = reasonOf(code);
    }
    return number;
}

/// Files are read anew for each connection, so that new certificates need no restart.
void MosquittoBroker::configure() {
    mosquitto* const library = connection.get();
    const bool isNew = options.protocol == "5";
    check(mosquitto_int_option(library, MOSQ_OPT_PROTOCOL_VERSION, isNew ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311),
          "protocol");
    check(mosquitto_int_option(library, MOSQ_OPT_TCP_NODELAY, 1), "TCP");
    const Message& will = options.lastWill;
    check(mosquitto_will_set(library, will.topic.c_str(), static_cast<int>(will.payload.size()), will.payload.data(), 1,
                             will.retained),
          "last will");
    if (!options.user.empty()) {
        check(mosquitto_username_pw_set(library, options.user.c_str(), options.password.c_str()), "user");
    }
    if (!options.ca.empty()) {
        check(mosquitto_tls_set(library, options.ca.c_str(), nullptr, orNull(options.certificate), orNull(options.key),
                                nullptr),
              "TLS");
    }
    mosquitto_connect_v5_callback_set(library, Callbacks::connected);
    mosquitto_disconnect_v5_callback_set(library, Callbacks::disconnected);
    mosquitto_message_v5_callback_set(library, Callbacks::received);
    mosquitto_publish_v5_callback_set(library, Callbacks::published);
    mosquitto_subscribe_v5_callback_set(library, Callbacks::subscribed);
    if (isNew) {
        // The call that does not wait has no properties, but keeps those of this one, which fails without an address.
        mosquitto_property* properties = nullptr;
        check(mosquitto_property_add_int32(&properties, MQTT_PROP_MAXIMUM_PACKET_SIZE, largestPacket), "properties");
        mosquitto_connect_bind_v5(library, nullptr, options.port, options.keepalive, nullptr, properties);
        mosquitto_property_free_all(&properties);
    }
}

void MosquittoBroker::open() {
    lossReason.clear();
    connection.reset(mosquitto_new(options.clientId.c_str(), true, this));
    nextCare = Clock::now() + std::chrono::seconds(1);
    try {
        configure();
        check(mosquitto_connect_async(connection.get(), options.address.c_str(), options.port, options.keepalive),
              "connection");
    } catch (const std::runtime_error& error) {
        close(error.what());
    }
}

void MosquittoBroker::close(const std::string& reason) {
    const auto now = Clock::now();
    const bool wasConnected = connectedSince.has_value();
    const auto pause =
        pauses.next(wasConnected ? std::chrono::duration_cast<Pauses::Milliseconds>(now - *connectedSince)
                                 : Pauses::Milliseconds());
    connectedSince.reset();
    connection.reset();
    nextAttempt = now + pause;
    options.log(reason == loggedReason ? 0 : 2, (wasConnected ? "the broker is lost: " : "cannot reach the broker: ") +
                                                    reason + "; next attempt in " + std::to_string(pause.count()) +
                                                    " ms");
    loggedReason = reason;
    const auto who = listener.lock();
    if (wasConnected && who) {
        who->brokerLost();
    }
}

SettingsBridge::Source::Wanted MosquittoBroker::wanted() {
    if (!connection) {
        return {-1, 0, listener.expired() ? std::nullopt : std::make_optional(nextAttempt)};
    }
    const bool isWriting = mosquitto_want_write(connection.get());
    return {mosquitto_socket(connection.get()), static_cast<short>(isWriting ? POLLIN | POLLOUT : POLLIN),
            lossReason.empty() ? nextCare : Clock::now()};
}

void MosquittoBroker::process(short events) {
    if (!connection) {
        open();
        return;
    }
    int code = MOSQ_ERR_SUCCESS;
    if ((events & ~POLLOUT) != 0) {
        code = mosquitto_loop_read(connection.get(), 1);
    }
    if (code == MOSQ_ERR_SUCCESS && (events & POLLOUT) != 0) {
        code = mosquitto_loop_write(connection.get(), 1);
    }
    if (code == MOSQ_ERR_SUCCESS && Clock::now() >= nextCare) {
        code = mosquitto_loop_misc(connection.get());
        nextCare = Clock::now() + std::chrono::seconds(options.keepalive) / 4;
    }
    if (code != MOSQ_ERR_SUCCESS || !lossReason.empty()) {
        close(lossReason.empty() ? reasonOf(code) : lossReason);
    }
}

void MosquittoBroker::disconnect() {
    if (connection) {
        mosquitto_disconnect(connection.get());
        mosquitto_loop_write(connection.get(), 1);
    }
}

}  // namespace SettingsMqtt
