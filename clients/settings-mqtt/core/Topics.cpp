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

std::optional<Topics::Target> Topics::targetOf(const std::string& topic) const {
    for (const auto& [start, isDesired] : commands) {
        if (topic.rfind(start, 0) == 0 && topic.find('/', start.size()) == std::string::npos) {
            return Target{topic.substr(start.size()), isDesired};
        }
    }
    return std::nullopt;
}

}  // namespace SettingsMqtt
