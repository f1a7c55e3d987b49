#include "mosquitto/MosquittoBroker.h"

#include <algorithm>
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

void check(int code, const std::string& what) {
    if (code != MOSQ_ERR_SUCCESS) {
        throw std::runtime_error(what + ": " + mosquitto_strerror(code));
    }
}

const char* orNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

MosquittoBroker& brokerAt(void* place) {
    return *static_cast<MosquittoBroker*>(place);
}

}  // namespace

MosquittoBroker::MosquittoBroker(MosquittoOptions chosen)
    : options(std::move(chosen)),
      isVersion5(options.protocol == "5"),
      pauses(Pauses::Seconds(options.firstPause), Pauses::Seconds(options.longestPause), options.seed),
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
    if (code == MOSQ_ERR_SUCCESS) {
        ++unacknowledged;
    } else if (lossReason.empty()) {
        lossReason = mosquitto_strerror(code);
    }
    return number;
}

/// Files are read anew for each connection, so that new certificates need no restart.
void MosquittoBroker::configure() {
    mosquitto* const library = connection.get();
    const Message& will = options.lastWill;
    check(mosquitto_int_option(library, MOSQ_OPT_PROTOCOL_VERSION, isVersion5 ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311),
          "protocol");
    check(mosquitto_int_option(library, MOSQ_OPT_TCP_NODELAY, 1), "TCP");
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
    if (isVersion5) {
        // The call that does not wait has no properties, but keeps those of this one, which fails without an address.
        mosquitto_property* properties = nullptr;
        check(mosquitto_property_add_int32(&properties, MQTT_PROP_MAXIMUM_PACKET_SIZE, largestPacket), "properties");
        mosquitto_connect_bind_v5(library, nullptr, options.port, options.keepalive, nullptr, properties);
        mosquitto_property_free_all(&properties);
    }
}

/// What libmosquitto calls, from within `process` or, when a connection breaks, from within anything.
void MosquittoBroker::watch() {
    using Library = mosquitto;
    using Properties = mosquitto_property;
    Library* const library = connection.get();
    mosquitto_connect_v5_callback_set(
        library, [](Library*, void* self, int code, int, const Properties*) { brokerAt(self).accepted(code); });
    mosquitto_disconnect_v5_callback_set(library, [](Library*, void* self, int code, const Properties*) {
        if (brokerAt(self).lossReason.empty()) {
            brokerAt(self).lossReason = code == 0 ? "the bridge disconnected" : mosquitto_strerror(code);
        }
    });
    mosquitto_message_v5_callback_set(
        library, [](Library*, void* self, const mosquitto_message* message, const Properties*) {
            const auto* const bytes = static_cast<const char*>(message->payload);
            const auto size = static_cast<std::size_t>(message->payloadlen);
            brokerAt(self).listener->received(
                {message->topic, bytes == nullptr ? "" : std::string(bytes, size), message->retain});
        });
    mosquitto_publish_v5_callback_set(library, [](Library*, void* self, int number, int code, const Properties*) {
        if (code >= MQTT_RC_UNSPECIFIED) {
            brokerAt(self).options.log(2,
                                       std::string("the broker refuses a message: ") + mosquitto_reason_string(code));
        }
        --brokerAt(self).unacknowledged;
        brokerAt(self).listener->acknowledged(number);
    });
    mosquitto_subscribe_v5_callback_set(
        library, [](Library*, void* self, int, int count, const int* granted, const Properties*) {
            if (std::any_of(granted, granted + count, [](int quality) { return quality >= MQTT_RC_UNSPECIFIED; })) {
                brokerAt(self).options.log(2, "the broker refuses the subscription to commands");
            }
        });
}

void MosquittoBroker::accepted(int code) {
    if (code != 0) {
        lossReason = isVersion5 ? mosquitto_reason_string(code) : mosquitto_connack_string(code);
        return;
    }
    connectedSince = Clock::now();
    loggedReason.clear();
    options.log(1, "connected to the broker");
    listener->brokerConnected();
}

void MosquittoBroker::open() {
    lossReason.clear();
    connection.reset(mosquitto_new(options.clientId.c_str(), true, this));
    due = Clock::now() + std::chrono::seconds(1);
    try {
        configure();
        watch();
        check(mosquitto_connect_async(connection.get(), options.address.c_str(), options.port, options.keepalive),
              "connection");
    } catch (const std::runtime_error& error) {
        close(error.what());
    }
}

void MosquittoBroker::close(const std::string& reason) {
    const auto now = Clock::now();
    const auto since = std::exchange(connectedSince, std::nullopt);
    const auto pause = std::chrono::ceil<std::chrono::milliseconds>(pauses.next(now - since.value_or(now)));
    connection.reset();
    unacknowledged = 0;
    due = now + pause;
    options.log(reason == loggedReason ? 0 : 2, (since ? "the broker is lost: " : "cannot reach the broker: ") +
                                                    reason + "; next attempt in " + std::to_string(pause.count()) +
                                                    " ms");
    loggedReason = reason;
    if (since) {
        listener->brokerLost();
    }
}

SettingsBridge::Source::Wanted MosquittoBroker::wanted() {
    if (!connection) {
        return {-1, 0, listener == nullptr ? std::nullopt : std::optional(due)};
    }
    const bool isWriting = mosquitto_want_write(connection.get());
    return {mosquitto_socket(connection.get()), static_cast<short>(isWriting ? POLLIN | POLLOUT : POLLIN),
            lossReason.empty() ? due : Clock::now()};
}

void MosquittoBroker::process(short events) {
    if (!connection) {
        return open();
    }
    int code = MOSQ_ERR_SUCCESS;
    if ((events & ~POLLOUT) != 0) {
        code = mosquitto_loop_read(connection.get(), 1);
    }
    if (code == MOSQ_ERR_SUCCESS && (events & POLLOUT) != 0) {
        code = mosquitto_loop_write(connection.get(), 1);
    }
    if (code == MOSQ_ERR_SUCCESS && Clock::now() >= due) {
        code = mosquitto_loop_misc(connection.get());
        due = Clock::now() + std::chrono::seconds(options.keepalive) / 4;
    }
    if (code != MOSQ_ERR_SUCCESS || !lossReason.empty()) {
        close(lossReason.empty() ? mosquitto_strerror(code) : lossReason);
    }
}

void MosquittoBroker::disconnect() {
    if (!connection) {
        return;
    }
    const auto end = Clock::now() + std::chrono::seconds(2);
    while (isConnected() && unacknowledged > 0 && Clock::now() < end &&
           mosquitto_loop(connection.get(), 100, 1) == MOSQ_ERR_SUCCESS) {
    }
    mosquitto_disconnect(connection.get());
    mosquitto_loop_write(connection.get(), 1);
}

}  // namespace SettingsMqtt
