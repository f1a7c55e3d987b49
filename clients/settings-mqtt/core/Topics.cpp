#include "Topics.h"

#include <algorithm>

namespace SettingsMqtt {

bool isTopicName(std::string_view name) {
    constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
    return !name.empty() && name.size() <= 64 && name.find_first_not_of(allowed) == std::string_view::npos;
}

Topics::Topics(const std::string& id, const std::vector<std::string>& groups) : own("settings/" + id + "/") {
    using Kind = Target::Kind;
    commands = {{own + "set/", Kind::SET}, {own + "desired/", Kind::DESIRED}, {"settings/all/set/", Kind::SET}};
    for (const auto& group : groups) {
        commands.emplace_back("settings/group/" + group + "/set/", Kind::SET);
        commands.emplace_back("settings/group/" + group + "/desired/", Kind::DESIRED);
    }
}

std::vector<std::string> Topics::subscriptions() const {
    std::vector<std::string> filters;
    std::transform(commands.begin(), commands.end(), std::back_inserter(filters),
                   [](const auto& command) { return command.first + "+"; });
    return filters;
}

std::optional<Topics::Target> Topics::targetOf(const std::string& topic) const {
    for (const auto& [prefix, kind] : commands) {
        if (topic.rfind(prefix, 0) == 0 && topic.find('/', prefix.size()) == std::string::npos) {
            return Target{kind, topic.substr(prefix.size())};
        }
    }
    return std::nullopt;
}

}  // namespace SettingsMqtt
