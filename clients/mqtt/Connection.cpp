#include "mqtt/Connection.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <poll.h>

#include "mqtt/Credentials.h"

namespace Mqtt {

namespace {

using Clock = std::chrono::steady_clock;

/// A broker of version 5 keeps larger messages to itself.
constexpr std::uint32_t largestPacket = 1048576;

void check(int code, const std::string& what) {
    if (code != MOSQ_ERR_SUCCESS) {
        throw std::runtime_error(what + ": " + mosquitto_strerror(code));
    }
}

const char* orNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

Connection& connectionAt(void* place) {
    return *static_cast<Connection*>(place);
}

}  // namespace

Connection::Connection(ConnectionOptions chosen)
    : options(std::move(chosen)),
      isVersion5(options.protocol == "5"),
      pauses(Pauses::Seconds(options.firstPause), Pauses::Seconds(options.longestPause), options.seed),
      instance(nullptr, mosquitto_destroy) {
    if (!options.credentials.empty()) {
        readCredentials(options.credentials);
    }
    mosquitto_lib_init();
}

Connection::~Connection() {
    instance.reset();
    mosquitto_lib_cleanup();
}

void Connection::subscribe(const std::vector<std::string>& topics) {
    std::vector<std::string> copies = topics;
    std::vector<char*> filters(copies.size());
    std::transform(copies.begin(), copies.end(), filters.begin(), [](std::string& topic) { return topic.data(); });
    mosquitto_subscribe_multiple(instance.get(), nullptr, static_cast<int>(filters.size()), filters.data(), 1, 0,
                                 nullptr);
}

std::optional<int> Connection::publish(const Message& message) {
    int number = 0;
    const int code =
        mosquitto_publish(instance.get(), &number, message.topic.c_str(), static_cast<int>(message.payload.size()),
                          message.payload.data(), 1, message.retained);
    if (code == MOSQ_ERR_SUCCESS) {
        ++unacknowledged;
    } else if (code == MOSQ_ERR_OVERSIZE_PACKET) {
        // It is no reason to reconnect: the broker would not accept it then, either.
        options.log(2, "dropped a message that is too large for the broker: " + message.topic);
        return std::nullopt;
    } else if (lossReason.empty()) {
        lossReason = mosquitto_strerror(code);
    }
    return number;
}

void Connection::configure() {
    mosquitto* const library = instance.get();
    const Message& will = options.lastWill;
    check(mosquitto_int_option(library, MOSQ_OPT_PROTOCOL_VERSION, isVersion5 ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311),
          "protocol");
    check(mosquitto_int_option(library, MOSQ_OPT_TCP_NODELAY, 1), "TCP");
    check(mosquitto_will_set(library, will.topic.c_str(), static_cast<int>(will.payload.size()), will.payload.data(), 1,
                             will.retained),
          "last will");
    if (!options.credentials.empty()) {
        const auto [user, password] = readCredentials(options.credentials);
        check(mosquitto_username_pw_set(library, user.c_str(), password.c_str()), "user");
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
void Connection::watch() {
    using Library = mosquitto;
    using Properties = mosquitto_property;
    Library* const library = instance.get();
    mosquitto_connect_v5_callback_set(
        library, [](Library*, void* self, int code, int, const Properties*) { connectionAt(self).accepted(code); });
    mosquitto_disconnect_v5_callback_set(library, [](Library*, void* self, int code, const Properties*) {
        if (connectionAt(self).lossReason.empty()) {
            connectionAt(self).lossReason = code == 0 ? "disconnected" : mosquitto_strerror(code);
        }
    });
    mosquitto_message_v5_callback_set(
        library, [](Library*, void* self, const mosquitto_message* message, const Properties*) {
            const auto* const bytes = static_cast<const char*>(message->payload);
            const auto size = static_cast<std::size_t>(message->payloadlen);
            connectionAt(self).listener->received(
                {message->topic, bytes == nullptr ? "" : std::string(bytes, size), message->retain});
        });
    mosquitto_publish_v5_callback_set(library, [](Library*, void* self, int number, int code, const Properties*) {
        if (code >= MQTT_RC_UNSPECIFIED) {
            connectionAt(self).options.log(
                2, std::string("the broker refused a message: ") + mosquitto_reason_string(code));
        }
        --connectionAt(self).unacknowledged;
        connectionAt(self).listener->acknowledged(number);
    });
    mosquitto_subscribe_v5_callback_set(
        library, [](Library*, void* self, int, int count, const int* granted, const Properties*) {
            if (std::any_of(granted, granted + count, [](int quality) { return quality >= MQTT_RC_UNSPECIFIED; })) {
                connectionAt(self).options.log(2, "the broker refused a subscription");
            }
        });
}

void Connection::accepted(int code) {
    if (code != 0) {
        lossReason = isVersion5 ? mosquitto_reason_string(code) : mosquitto_connack_string(code);
        return;
    }
    connectedSince = Clock::now();
    loggedReason.clear();
    options.log(1, "connected to the broker");
    listener->brokerConnected();
}

void Connection::open() {
    lossReason.clear();
    instance.reset(mosquitto_new(options.clientId.c_str(), true, this));
    due = Clock::now() + std::chrono::seconds(1);
    try {
        configure();
        watch();
        check(mosquitto_connect_async(instance.get(), options.address.c_str(), options.port, options.keepalive),
              "connection");
    } catch (const std::runtime_error& error) {
        close(error.what());
    }
}

void Connection::close(const std::string& reason) {
    const auto now = Clock::now();
    const auto since = std::exchange(connectedSince, std::nullopt);
    const auto pause = std::chrono::ceil<std::chrono::milliseconds>(pauses.next(now - since.value_or(now)));
    instance.reset();
    unacknowledged = 0;
    due = now + pause;
    options.log(reason == loggedReason ? 0 : 2,
                (since ? "lost the connection to the broker: " : "cannot reach the broker: ") + reason +
                    "; next attempt in " + std::to_string(pause.count()) + " ms");
    loggedReason = reason;
    if (since) {
        listener->brokerLost();
    }
}

Connection::Wanted Connection::wanted() const {
    if (!instance) {
        return {-1, 0, listener == nullptr ? std::nullopt : std::optional(due)};
    }
    const bool isWriting = mosquitto_want_write(instance.get());
    return {mosquitto_socket(instance.get()), static_cast<short>(isWriting ? POLLIN | POLLOUT : POLLIN),
            lossReason.empty() ? due : Clock::now()};
}

void Connection::process(short events) {
    if (!instance) {
        return open();
    }
    int code = MOSQ_ERR_SUCCESS;
    if ((events & ~POLLOUT) != 0) {
        code = mosquitto_loop_read(instance.get(), 1);
    }
    if (code == MOSQ_ERR_SUCCESS && (events & POLLOUT) != 0) {
        code = mosquitto_loop_write(instance.get(), 1);
    }
    if (code == MOSQ_ERR_SUCCESS && Clock::now() >= due) {
        code = mosquitto_loop_misc(instance.get());
        due = Clock::now() + std::chrono::seconds(options.keepalive) / 4;
    }
    if (code != MOSQ_ERR_SUCCESS || !lossReason.empty()) {
        close(lossReason.empty() ? mosquitto_strerror(code) : lossReason);
    }
}

void Connection::disconnect() {
    if (!instance) {
        return;
    }
    const auto end = Clock::now() + std::chrono::seconds(2);
    while (isConnected() && unacknowledged > 0 && Clock::now() < end &&
           mosquitto_loop(instance.get(), 100, 1) == MOSQ_ERR_SUCCESS) {
    }
    mosquitto_disconnect(instance.get());
    mosquitto_loop_write(instance.get(), 1);
}

}  // namespace Mqtt
