#include "scenarios/Scenario.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>

#include "Files.h"
#include "Output.h"
#include "Wire/FrameInspector.h"
#include "Wire/JsonText.h"
#include "Wire/Utf8.h"

namespace SettingsCtl {

namespace {

/// What is wrong with a line.
class LineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

rapidjson::Document objectOf(const std::string& line) {
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(line.data(), line.size());
    if (!Wire::isValidUtf8(line) || document.HasParseError() || !document.IsObject()) {
        throw LineError("is not a JSON object");
    }
    return document;
}

void refuseUnknownMembers(const rapidjson::Document& object, const std::set<std::string>& known) {
    for (const auto& member : object.GetObject()) {
        const std::string name = Wire::textOf(member.name);
        if (known.count(name) == 0) {
            throw LineError("has an unknown member \"" + escaped(name) + "\"");
        }
    }
}

const rapidjson::Value* memberOf(const rapidjson::Value& object, const std::string& name) {
    const auto member = object.FindMember(name);
    return member == object.MemberEnd() ? nullptr : &member->value;
}

std::string textAt(const rapidjson::Value& object, const std::string& name) {
    const auto* const value = memberOf(object, name);
    if (value == nullptr || !value->IsString()) {
        throw LineError("\"" + name + "\" must be a string");
    }
    return Wire::textOf(*value);
}

/// Finds where the object that is a member of the outermost object stands in the text. The iterative parser reports a
/// bracket before it takes it.
class MemberFinder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, MemberFinder> {
public:
    MemberFinder(const rapidjson::StringStream& text, const std::string& member) : stream(text), name(member) {}

    bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
        isInMember = depth > 1 ? isInMember : name == std::string_view(text, length);
        return true;
    }
    bool StartObject() {
        begin = ++depth == 2 && isInMember ? stream.Tell() : begin;
        return true;
    }
    bool EndObject(rapidjson::SizeType /*members*/) {
        end = depth-- == 2 && isInMember ? stream.Tell() + 1 : end;
        return true;
    }
    bool StartArray() {
        ++depth;
        return true;
    }
    bool EndArray(rapidjson::SizeType /*elements*/) {
        --depth;
        return true;
    }

    std::size_t begin = 0;
    std::size_t end = 0;

private:
    const rapidjson::StringStream& stream;
    const std::string& name;
    std::size_t depth = 0;
    bool isInMember = false;
};

/// The object that is the member `name` of the object in `line`, to the last character.
std::string objectAt(const std::string& line, const rapidjson::Value& step, const std::string& name) {
    if (!step[name].IsObject()) {
        throw LineError("\"" + name + "\" must be an object; for other text there is \"" + name + "Text\"");
    }
    rapidjson::StringStream stream(line.c_str());
    MemberFinder finder(stream, name);
    rapidjson::Reader().Parse<Utils::jsonParseFlags>(stream, finder);
    return line.substr(finder.begin, finder.end - finder.begin);
}

/// The number after "socket-", "page-" or "device-"; false: it is no connection.
bool isConnection(const std::string& at) {
    const std::size_t hyphen = at.find('-');
    const std::string kind = at.substr(0, hyphen);
    const std::string number = hyphen == std::string::npos ? "" : at.substr(hyphen + 1);
    return (kind == "socket" || kind == "page" || kind == "device") && !number.empty() && number.front() != '0' &&
           number.find_first_not_of("0123456789") == std::string::npos;
}

constexpr const char* neededMembers =
    R"(needs "time" and "at", and one of "sent", "received", "sentText", "receivedText", "closed", "closedByHost" and "did")";

/// What the step is, and its text.
void readKind(Step& step, const std::string& line, const rapidjson::Document& members) {
    static const std::map<std::string, StepKind> kinds{
        {"sent", StepKind::SENT},         {"sentText", StepKind::SENT},
        {"received", StepKind::RECEIVED}, {"receivedText", StepKind::RECEIVED},
        {"closed", StepKind::CLOSED},     {"closedByHost", StepKind::CLOSED_BY_HOST},
        {"did", StepKind::KILL}};
    static const std::map<std::string, StepKind> actions{
        {"kill", StepKind::KILL}, {"stop", StepKind::STOP}, {"start", StepKind::START}};
    const auto member = std::find_if(members.MemberBegin(), members.MemberEnd(),
                                     [](const auto& one) { return kinds.count(Wire::textOf(one.name)) > 0; });
    // A member that stands twice takes the place of the step's own.
    if (member == members.MemberEnd()) {
        throw LineError(neededMembers);
    }
    const std::string name = Wire::textOf(member->name);
    step.kind = kinds.at(name);
    if (name == "did") {
        const auto action = actions.find(textAt(members, name));
        if (action == actions.end()) {
            throw LineError(R"("did" must be "kill", "stop" or "start")");
        }
        step.kind = action->second;
    } else if (step.kind == StepKind::CLOSED || step.kind == StepKind::CLOSED_BY_HOST) {
        if (!members[name].IsTrue()) {
            throw LineError("\"" + name + "\" must be true");
        }
    } else {
        step.text = name == "sent" || name == "received" ? objectAt(line, members, name) : textAt(members, name);
    }
}

void checkPlace(const Step& step, bool isAction) {
    if ((step.at == "host") != isAction) {
        throw LineError(R"("did" is for "host" alone, and "host" for "did")");
    }
    if (!isAction && step.at != "all" && !isConnection(step.at)) {
        throw LineError(R"("at" must be "socket-N", "page-N", "device-N", "all" or "host")");
    }
    if (step.at == "all" && step.kind != StepKind::RECEIVED) {
        throw LineError("\"all\" is for what is received");
    }
}

Step stepOf(const std::string& line) {
    const rapidjson::Document members = objectOf(line);
    // "schema" is for those who check frames.
    refuseUnknownMembers(members, {"time", "at", "sent", "received", "sentText", "receivedText", "closed",
                                   "closedByHost", "did", "schema"});
    if (members.MemberCount() != (members.HasMember("schema") ? 4U : 3U) || !members.HasMember("time") ||
        !members.HasMember("at")) {
        throw LineError(neededMembers);
    }
    const auto& time = members["time"];
    if (!time.IsUint()) {
        throw LineError("\"time\" must be a number of milliseconds");
    }
    Step step;
    step.time = std::chrono::milliseconds(time.GetUint());
    step.at = textAt(members, "at");
    readKind(step, line, members);
    checkPlace(step, members.HasMember("did"));
    return step;
}

/// The order of the steps, checked as they come.
class Timeline {
public:
    void take(const Step& step) {
        if (step.time < time) {
            throw LineError("\"time\" goes back");
        }
        time = step.time;
        if (step.at == "host") {
            takeAction(step.kind);
        } else if (!hostRuns) {
            throw LineError("the host is not running at this step");
        } else if (step.kind == StepKind::CLOSED || step.kind == StepKind::CLOSED_BY_HOST) {
            if (open.erase(step.at) == 0) {
                throw LineError("\"" + step.at + "\" is not open here");
            }
        } else if (step.at != "all") {
            open.insert(step.at);
        }
    }

private:
    void takeAction(StepKind action) {
        if (hostRuns == (action == StepKind::START)) {
            throw LineError(hostRuns ? "the host is already running" : "the host is not running at this step");
        }
        hostRuns = action == StepKind::START;
        open.clear();
    }

    std::chrono::milliseconds time{};
    std::set<std::string> open;
    bool hostRuns = true;
};

/// The first line.
void readTitle(Scenario& scenario, const std::string& line) {
    const rapidjson::Document members = objectOf(line);
    const auto* const version = memberOf(members, "scenario");
    if (version == nullptr || !version->IsInt() || version->GetInt() != 1) {
        throw LineError("\"scenario\" must be 1");
    }
    refuseUnknownMembers(members, {"scenario", "title", "description", "world"});
    textAt(members, "title");
    if (members.HasMember("description")) {
        textAt(members, "description");
    }
    if (members.HasMember("world")) {
        if (!members["world"].IsObject()) {
            throw LineError("\"world\" must be an object");
        }
        scenario.world = objectAt(line, members, "world");
    }
}

bool isBlank(const std::string& line) {
    return line.find_first_not_of(" \t\r") == std::string::npos;
}

}  // namespace

Failure failureAt(const std::string& file, std::size_t line, const std::string& message) {
    return {REFUSED, escaped(file) + ":" + std::to_string(line) + ": " + message};
}

Scenario scenarioIn(const std::string& file) {
    Scenario scenario{file, "", {}};
    std::istringstream lines(contentsOf(file));
    std::size_t number = 0;
    try {
        Timeline timeline;
        std::string line;
        for (bool hasTitle = false; std::getline(lines, line);) {
            ++number;
            if (isBlank(line)) {
                continue;
            }
            if (!hasTitle) {
                readTitle(scenario, line);
                hasTitle = true;
                continue;
            }
            scenario.steps.push_back(stepOf(line));
            scenario.steps.back().line = number;
            timeline.take(scenario.steps.back());
        }
        if (scenario.steps.empty()) {
            throw LineError("a scenario has a first line with its title, and steps");
        }
    } catch (const LineError& error) {
        throw failureAt(file, number, error.what());
    }
    return scenario;
}

std::size_t lineForOwnHost(const Scenario& scenario) {
    if (!scenario.world.empty()) {
        return 1;
    }
    const auto action =
        std::find_if(scenario.steps.begin(), scenario.steps.end(), [](const Step& step) { return step.at == "host"; });
    return action == scenario.steps.end() ? 0 : action->line;
}

bool isPage(const std::string& at) {
    return at.rfind("page-", 0) == 0;
}

bool isSettingsConnection(const std::string& at) {
    return isPage(at) || at.rfind("socket-", 0) == 0;
}

}  // namespace SettingsCtl
