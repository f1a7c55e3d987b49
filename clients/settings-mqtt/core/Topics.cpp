#include "Topics.h"

namespace SettingsMqtt {

bool isTopicName(std::string_view name) {
    constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
    return !name.empty() && name.size() <= 64 && name.find_first_not_of(allowed) == std::string_view::npos;
}

Topics::Topics(std::string deviceId, const std::vector<std::string>& groups)
    : id(std::move(deviceId)),
      own("settings/" + id + "/"),
      commands{{own + "set/", false}, {own + "desired/", true}, {"settings/all/set/", false}} {
    for (const auto& group : groups) {
        commands.emplace_back("settings/group/" + group + "/set/", false);
        commands.emplace_back("settings/group/" + group + "/desired/", true);
    }
}

std::vector<std::string> Topics::subscriptions() const {
    std::vector<std::string> filters;
    for (const auto& [start, isDesired] : commands) {
        filters.push_back(start + "+");
    }
    return filters;
}

std::optional<Command> Topics::commandOf(const Message& message) const {
    for (const auto& [start, isDesired] : commands) {
        if (message.topic.rfind(start, 0) == 0 && message.topic.find('/', start.size()) == std::string::npos) {
            return Command{message.topic.substr(start.size()), isDesired, message.retained, message.payload, "", 0};
        }
    }
    return std::nullopt;
}

}  // namespace SettingsMqtt
