#include "Object.h"

#include <cstring>
#include <set>

#include "Values.h"

namespace SettingsDbus {

namespace {

constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
/// Who may call what is a matter of the bus's policy.
constexpr std::uint64_t forAll = SD_BUS_VTABLE_UNPRIVILEGED;

/// What `action` returns; an exception becomes `error`.
template <typename Action>
int withErrors(sd_bus_error* error, const Action& action) {
    try {
        return action();
    } catch (const CallError& fault) {
        return sd_bus_error_set(error, fault.name.c_str(), fault.what());
    } catch (const std::exception& fault) {
        return sd_bus_error_set(error, ErrorName::unavailable, fault.what());
    }
}

}  // namespace

Object::Object(Privacy privacy, const Settings& known, CallQueue& calls)
    : objectPath(privacy == Privacy::PERSONAL ? "/org/settingshandler/Settings1/Personal"
                                              : "/org/settingshandler/Settings1"),
      settings(known),
      queue(calls) {
    for (const auto& setting : Wire::catalogue()) {
        if (setting.personal == (privacy == Privacy::PERSONAL)) {
            properties.emplace(propertyOf(setting.key), &setting);
        }
    }
    table = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD_WITH_NAMES("Get", "as", SD_BUS_PARAM(keys), "a{ss}", SD_BUS_PARAM(values), takeGet, forAll),
        SD_BUS_METHOD_WITH_NAMES("Set", "ss", SD_BUS_PARAM(key) SD_BUS_PARAM(value), "", "", takeCall, forAll),
        SD_BUS_METHOD_WITH_NAMES("SetMany", "a{ss}", SD_BUS_PARAM(values), "a{ss}", SD_BUS_PARAM(outcomes), takeCall,
                                 forAll),
        SD_BUS_METHOD_WITH_NAMES("Undo", "s", SD_BUS_PARAM(key), "", "", takeCall, forAll),
        SD_BUS_METHOD("LogOut", "", "", takeCall, forAll),
        SD_BUS_METHOD("OpenSettings", "", "", takeCall, forAll),
        SD_BUS_SIGNAL_WITH_NAMES("Changed", "ssstss",
                                 SD_BUS_PARAM(key) SD_BUS_PARAM(from) SD_BUS_PARAM(to) SD_BUS_PARAM(sequence)
                                     SD_BUS_PARAM(origin) SD_BUS_PARAM(client),
                                 0),
    };
    constexpr std::uint64_t flags = SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE;
    for (const auto& [name, setting] : properties) {
        const char* const signature = signatureOf(setting->kind);
        if (setting->setByDeviceOnly) {
            table.push_back(SD_BUS_PROPERTY(name.c_str(), signature, getProperty, 0, flags));
        } else {
            table.push_back(
                SD_BUS_WRITABLE_PROPERTY(name.c_str(), signature, getProperty, setProperty, 0, flags | forAll));
        }
    }
    table.push_back(SD_BUS_VTABLE_END);
}

void Object::addTo(sd_bus* bus) {
    check("the object cannot be added", sd_bus_add_object(bus, nullptr, objectPath.c_str(), takeAny, this));
    check("the object cannot be added",
          sd_bus_add_object_vtable(bus, nullptr, objectPath.c_str(), serviceName, table.data(), this));
}

const Wire::SettingDescription* Object::settingOf(const std::string& key) const {
    const auto found = key.empty() ? properties.end() : properties.find(propertyOf(key));
    return found != properties.end() && found->second->key == key ? found->second : nullptr;
}

const Wire::SettingDescription& Object::requireKey(const std::string& key) const {
    const auto* const setting = settingOf(key);
    if (setting == nullptr) {
        throw CallError(SD_BUS_ERROR_INVALID_ARGS, objectPath + " has no setting '" + key + "'");
    }
    return *setting;
}

const Wire::SettingDescription& Object::requireProperty(const char* property) const {
    const auto found = properties.find(property);
    if (found == properties.end()) {
        throw CallError(SD_BUS_ERROR_UNKNOWN_PROPERTY, objectPath + " has no property '" + property + "'");
    }
    return *found->second;
}

void Object::announce(sd_bus* bus, const SettingsClient::Event& event, bool isFirst) const {
    if (settingOf(event.key) == nullptr) {
        return;
    }
    // By hand: sd_bus_emit_properties_changed looks the object up and takes a third more time.
    withErrors(nullptr, [&] {
        const std::string property = propertyOf(event.key);
        sd_bus_message* created = nullptr;
        sd_bus_message_new_signal(bus, &created, objectPath.c_str(), propertiesInterface, "PropertiesChanged");
        const Message signal(created, &sd_bus_message_unref);
        sd_bus_message_append(created, "s", serviceName);
        sd_bus_message_open_container(created, 'a', "{sv}");
        sd_bus_message_open_container(created, 'e', "sv");
        sd_bus_message_append(created, "s", property.c_str());
        sd_bus_message_open_container(created, 'v', signatureOf(requireProperty(property.c_str()).kind));
        appendProperty(property.c_str(), created);
        for (int opened = 0; opened < 3; ++opened) {
            sd_bus_message_close_container(created);
        }
        sd_bus_message_append(created, "as", 0);
        return sd_bus_send(bus, created, nullptr);
    });
    if (!isFirst) {
        sd_bus_emit_signal(bus, objectPath.c_str(), serviceName, "Changed", "ssstss", event.key.c_str(),
                           event.from.c_str(), event.to.c_str(), event.sequence, event.origin.c_str(),
                           event.client.c_str());
    }
}

int Object::appendProperty(const char* property, sd_bus_message* reply) const {
    const auto& setting = requireProperty(property);
    const auto value = settings.all().find(setting.key);
    return append(reply, setting.kind, value == settings.all().end() ? "" : value->second);
}

int Object::replyToGet(sd_bus_message* call) const {
    std::set<std::string> keys;
    for (const auto& key : readStrings(call)) {
        keys.insert(requireKey(key).key);
    }
    sd_bus_message* created = nullptr;
    check("the reply", sd_bus_message_new_method_return(call, &created));
    const Message reply(created, &sd_bus_message_unref);
    check("the reply", sd_bus_message_open_container(created, 'a', "{ss}"));
    for (const auto& [key, value] : settings.all()) {
        if (settingOf(key) != nullptr && (keys.empty() || keys.count(key) > 0)) {
            check("the reply", sd_bus_message_append(created, "{ss}", key.c_str(), value.c_str()));
        }
    }
    check("the reply", sd_bus_message_close_container(created));
    return check("the reply", sd_bus_send(nullptr, created, nullptr)) + 1;
}

Call Object::parse(sd_bus_message* message) const {
    Call call{referTo(message), sd_bus_message_get_member(message), {}};
    const char* first = nullptr;
    const char* second = nullptr;
    if (sd_bus_message_is_method_call(message, propertiesInterface, "Set") > 0) {
        check("the call", sd_bus_message_read(message, "ss", &first, &second));
        const auto& setting = requireProperty(second);
        call.assignments.emplace_back(setting.key, readVariant(message, setting));
    } else if (call.method == "Set") {
        check("the call", sd_bus_message_read(message, "ss", &first, &second));
        call.assignments.emplace_back(requireKey(first).key, second);
    } else if (call.method == "Undo") {
        check("the call", sd_bus_message_read(message, "s", &first));
        call.assignments.emplace_back(requireKey(first).key, "");
    } else if (call.method == "SetMany") {
        check("the call", sd_bus_message_enter_container(message, 'a', "{ss}"));
        while (check("the call", sd_bus_message_read(message, "{ss}", &first, &second)) > 0) {
            call.assignments.emplace_back(requireKey(first).key, second);
        }
    }
    return call;
}

int Object::takeAny(sd_bus_message* call, void* object, sd_bus_error* error) {
    // sd-bus would answer a writer of a property before the host did. All else, and what is wrong, is its own.
    const bool isWriting = sd_bus_message_is_method_call(call, propertiesInterface, "Set") > 0 &&
                           sd_bus_message_has_signature(call, "ssv") > 0;
    const char* interface = nullptr;
    if (!isWriting || sd_bus_message_read_basic(call, 's', &interface) < 0 || sd_bus_message_rewind(call, 1) < 0 ||
        std::strcmp(interface, serviceName) != 0) {
        return 0;
    }
    return takeCall(call, object, error);
}

int Object::takeGet(sd_bus_message* call, void* object, sd_bus_error* error) {
    return withErrors(error, [&] { return static_cast<const Object*>(object)->replyToGet(call); });
}

int Object::takeCall(sd_bus_message* call, void* object, sd_bus_error* error) {
    return withErrors(error, [&] {
        auto* const called = static_cast<Object*>(object);
        called->queue.add(called->parse(call));
        return 1;
    });
}

int Object::getProperty(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* property,
                        sd_bus_message* reply, void* object, sd_bus_error* error) {
    return withErrors(error, [&] { return static_cast<const Object*>(object)->appendProperty(property, reply); });
}

int Object::setProperty(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                        sd_bus_message* /*value*/, void* /*object*/, sd_bus_error* error) {
    // `takeAny` comes first.
    return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, "not queued");
}

}  // namespace SettingsDbus
