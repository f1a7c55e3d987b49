#include "simulation/Operations.h"

#include <algorithm>
#include <map>
#include <utility>

#include "simulation/Choices.h"

namespace SettingsSimulation {

namespace {

using Texts = std::vector<std::string>;

constexpr long long firstTimestamp = 1700000000000;

/// Few, so that clients conflict.
const std::vector<std::pair<std::string, Texts>>& settings() {
    static const std::vector<std::pair<std::string, Texts>> all{
        {"deviceName", {"TV", "Den", "Küche \\\"1\\\"", ""}},
        {"friendlyName", {"TV", "Telly", "Voice SDK", ""}},
        {"orliaLocale",
         {R"([\"fr-FR\"])", R"([\"fr-FR\", \"en-US\"])", R"([\"en-US\"])", "fr-FR", "[]", "{}", R"([\"\"])",
          R"([\"de-DE\",7])"}},
        {"timezone", {"Europe/Paris", "America/Vancouver", "UTC", ""}},
        {"handsFreeEnabled", {"true", "false", "TRUE"}},
        {"handsFreeAlwaysOnEnabled", {"true", "false"}},
        {"pttAlwaysOnEnabled", {"true", "false"}},
        {"captionsFontSize", {"FONT_LARGE", "FONT_SMALL", "FONT_MEDIUM"}},
        {"companionDevice", {R"([\"phone\",\"1\"])", R"([\"\",\"\"])"}},
        {"captionsEnabled", {"true", "false"}},
        {"tovanEntitlementStatus", {"yes", "no", ""}},
        {"x", {"1", "2", ""}},
        {"y", {"1", "2"}},
    };
    return all;
}

const std::string& longKey() {
    static const std::string key(257, 'k');
    return key;
}

class Generator {
public:
    explicit Generator(std::uint64_t seed) : choices(seed), isCalm(below(4) == 0) {}

    std::vector<Operation> make(std::size_t count) {
        while (made.size() < count) {
            add();
        }
        return std::move(made);
    }

private:
    std::size_t below(std::size_t count) { return choices.pick(count, "operation"); }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <typename Of>
    const Of& oneOf(const std::vector<Of>& all) {
        return all[below(all.size())];
    }

    void add() {
        // A fault does not stay for long.
        if (!faultsOn.empty() && oneIn(12)) {
            const auto fault = faultsOn.begin() + static_cast<std::ptrdiff_t>(below(faultsOn.size()));
            device(R"({"command":"fault","name":")" + *fault + R"(","enabled":false})");
            faultsOn.erase(fault);
            return;
        }
        const std::size_t kind = below(1000);
        if (kind < 740) {
            return push(Operation::Type::SEND, below(7), settingsFrame());
        }
        if (kind < 860) {
            return device(deviceFrame());
        }
        if (kind < 890) {
            return push(Operation::Type::RESUME, below(7), oneIn(3) ? "phone" : "", resumeDistance(), resumeRun());
        }
        if (kind < 905) {
            return hostile();
        }
        if (kind < 955) {
            return push(Operation::Type::ADVANCE, 0, "", duration());
        }
        world();
    }

    void world() {
        using Type = Operation::Type;
        // Some hosts run for long, until their history is full.
        switch (below(isCalm && !oneIn(100) ? 8 : 14)) {
            case 0:
            case 1:
            case 2:
                return push(Type::CLOSE, below(8));
            case 3:
                return push(Type::SEND_PART, below(8), settingsFrame());
            case 4:
                return push(Type::END_OUTPUT, below(4));
            case 5:
                push(Type::PAUSE, below(7));
                return;
            case 6:
            case 7:
                return push(Type::READ, below(7));
            case 8:
                return push(Type::KILL);
            case 9:
                return push(Type::POWER_CUT);
            case 10:
                return push(oneIn(2) ? Type::STOP : Type::POWER_CUT_TWICE, 0, "", static_cast<long>(1 + below(40)));
            case 11:
                return push(Type::KILL_AT, 0, "", static_cast<long>(1 + below(30)));
            case 12:
                return push(Type::POWER_CUT_AT, 0, "", static_cast<long>(1 + below(30)));
            default:
                return push(Type::FAIL_AT, 0, "", static_cast<long>(1 + below(12)), static_cast<long>(1 + below(3)));
        }
    }

    void push(Operation::Type type, std::size_t slot = 0, std::string text = "", long number = 0, long other = 0) {
        const int steps = oneIn(4) ? static_cast<int>(below(6)) : -1;
        made.push_back({type, slot, std::move(text), number, other, steps});
    }

    void device(std::string frame) { push(Operation::Type::SEND, 7, std::move(frame)); }

    std::string messageId() { return R"("messageId":"m)" + std::to_string(++messages) + '"'; }

    const std::pair<std::string, Texts>& setting() { return settings()[std::min(below(20), below(20)) * 13 / 20]; }

    /// Mostly newer than all before.
    long long timestamp() {
        const auto newest = firstTimestamp + static_cast<long long>(made.size());
        if (oneIn(6)) {
            return newest - static_cast<long long>(below(40));
        }
        return oneIn(200) ? newest + 1000 : newest;
    }

    std::string setRequest(bool asks) {
        const auto& [key, values] = setting();
        const std::string& value = oneOf(values);
        std::string text = R"({"type":24)";
        text += asks ? "," + messageId() + R"(,"answer":true)" : "";
        text += oneIn(25) ? "" : ",\"timestamp\":" + std::to_string(timestamp());
        text += oneIn(15) ? R"(,"client":"remote")" : "";
        text += R"(,"payload":{"settingDBId":")" + (oneIn(80) ? longKey() : key) + '"';
        return text + (oneIn(40) ? "}}" : R"(,"to":")" + value + "\"}}");
    }

    std::string getRequest(bool all) {
        std::string keys;
        for (std::size_t count = all ? 0 : 1 + below(3); count > 0; --count) {
            keys += (keys.empty() ? "\"" : ",\"") + setting().first + '"';
        }
        return R"({"type":7,)" + messageId() + R"(,"payload":{"settings":[)" + keys + "]}}";
    }

    std::string batchRequest() {
        std::string requests;
        for (std::size_t count = 1 + below(4); count > 0; --count) {
            requests += requests.empty() ? "" : ",";
            requests += oneIn(6) ? getRequest(oneIn(3)) : setRequest(oneIn(2));
        }
        return R"({"batch":[)" + requests + "]}";
    }

    std::string settingsFrame() {
        const std::size_t kind = below(100);
        if (kind < 64) {
            return setRequest(kind < 36);
        }
        if (kind < 74) {
            return batchRequest();
        }
        if (kind < 84) {
            return getRequest(kind < 77);
        }
        // A log-out empties the history.
        if (kind < 86 && (!isCalm || oneIn(30))) {
            return R"({"type":22,)" + messageId() + (oneIn(3) ? "}" : R"(,"answer":true})");
        }
        if (kind < 88) {
            return R"({"type":)" + std::string(oneIn(2) ? "18" : "19") + "," + messageId() +
                   (oneIn(2) ? "}" : R"(,"answer":true})");
        }
        return queryFrame(kind);
    }

    std::string queryFrame(std::size_t kind) {
        const std::string begin = "{" + messageId() + ",";
        if (kind < 90) {
            return begin + R"("hello":{"client":")" + (oneIn(2) ? "kitchen" : "phone") + "\"}}";
        }
        if (kind < 95) {
            const std::string key = oneIn(2) ? R"("settingDBId":")" + setting().first + '"' : "";
            const std::string limit = oneIn(2) ? "\"limit\":" + std::to_string(1 + below(8)) : "";
            return begin + R"("history":{)" + key + (key.empty() || limit.empty() ? "" : ",") + limit + "}}";
        }
        if (kind < 98) {
            return begin + R"("status":{}})";
        }
        if (kind < 99) {
            return begin + (oneIn(2) ? R"("catalogue":{}})" : R"("backup":{}})");
        }
        return begin + R"("page":{)" + (oneIn(2) ? R"("newKey":true}})" : "}}");
    }

    std::string deviceFrame() {
        const std::string onOff = oneIn(2) ? "true" : "false";
        switch (below(14)) {
            case 0:
                return R"({"command":"locale","value":")" + oneOf(Texts{"fr-FR", "en-US", "de-DE"}) + "\"}";
            case 1:
                return R"({"command":"locales","values":)" +
                       oneOf(Texts{R"(["fr-FR","en-US"])", R"(["en-US"])", "[]"}) + "}";
            case 2:
                return R"({"command":"timezone","value":")" + oneOf(Texts{"Europe/Paris", "UTC", ""}) + "\"}";
            case 3:
            case 4:
                return R"({"command":"handsfree","enabled":)" + onOff + "}";
            case 5:
                return R"({"command":"captions","enabled":)" + onOff + "}";
            case 6:
                return R"({"command":"doNotDisturb","enabled":)" + onOff + "}";
            case 7:
                return R"({"command":"show"})";
            case 8:
            case 9: {
                const auto& [key, values] = setting();
                return R"({"command":"setting","key":")" + key + R"(","value":")" + oneOf(values) + "\"}";
            }
            case 10:
                return oneIn(4) ? R"({"command":"fly"})" : R"({"command":"faults"})";
            case 11:
                return R"({"command":"fault","name":"sdk-changes","enabled":true,"value":")" +
                       oneOf(Texts{"orliaLocale", "captionsEnabled", "doNotDisturbEnabled", "handsFreeEnabled",
                                   "handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled", "friendlyName", "timezone"}) +
                       "\"}";
            default:
                return fault();
        }
    }

    std::string fault() {
        const Texts all{"storage-full",
                        R"(storage-slow","value":20,"on":")",
                        "storage-failing",
                        R"(sdk-refuses","value":"friendlyName","on":")",
                        R"(sdk-refuses","value":"orliaLocale","on":")",
                        R"(sdk-refuses","value":"handsFreeEnabled","on":")",
                        R"(sdk-refuses","value":"pttAlwaysOnEnabled","on":")",
                        R"(sdk-slow","value":15,"on":")",
                        R"(replies-late","value":700,"on":")",
                        R"(replies-late","value":250,"on":")",
                        "events-dropped",
                        R"(clock-jump","value":-3600000,"on":")",
                        R"(clock-jump","value":7200000,"on":")",
                        "restart"};
        const std::string& name = oneOf(all);
        faultsOn.push_back(name.substr(0, name.find('"')));
        return R"({"command":"fault","enabled":true,"name":")" + name + "\"}";
    }

    long resumeDistance() { return static_cast<long>(oneIn(8) ? below(60) : below(6)) - (oneIn(20) ? 5 : 0); }
    long resumeRun() { return oneIn(6) ? static_cast<long>(1 + below(2)) : 0; }

    long duration() {
        static const std::vector<long> all{1, 10, 100, 250, 500, 700, 2000, 14999, 16000, 31000};
        // Pages are pinged four times a minute: a long time costs as much as hundreds of other operations.
        constexpr long hour = 3600000;
        constexpr long moreThanADay = 90000000;
        return oneIn(100) ? moreThanADay : oneIn(20) ? hour : oneOf(all);
    }

    void hostile() {
        static const Texts frames{
            "hello",
            "[7]",
            R"({"type":8})",
            R"({"type":24})",
            R"({"batch":[]})",
            R"({"batch":[{"type":22}]})",
            "7",
            R"({"hello":{}})",
            R"({"messageId":"a","hello":[]})",
            R"({"messageId":"a","hello":{"client":""}})",
            R"({"messageId":"a","history":{"limit":0}})",
            R"({"messageId":"a","hello":{"resume":{}}})",
            R"({"type":24,"answer":true,"timestamp":1,"payload":{"settingDBId":"x","to":"y"}})",
            R"({"type":"24"})",
            "{\"a\":\"\xff\"}",
            R"({"messageId":"\ud800","type":18})",
            R"({"type":24,"timestamp":1e3,"payload":{"settingDBId":"deviceName","to":"T"}})",
            R"({"type":24,"timestamp":1700000000000,"payload":{"settingDBId":"deviceName","to":7}})",
            R"({"batch":[{"type":24,"answer":true,"timestamp":1,"payload":{}},{"type":18,"messageId":"b"}]})"};
        const std::size_t slot = below(8);
        if (slots()[slot] == Kind::PAGE) {
            return push(Operation::Type::SEND, slot, oneOf(frames));
        }
        switch (below(6)) {
            case 0:
                return push(Operation::Type::SEND_BYTES, slot, "\n \r\n\n");
            case 1:
                return push(Operation::Type::SEND_BYTES, slot, std::string(70000, '{') + "\n");
            case 2:
                return push(Operation::Type::SEND, slot, std::string(40, '[') + std::string(40, ']'));
            default:
                return push(Operation::Type::SEND, slot, oneOf(frames));
        }
    }

    SeededChoices choices;
    const bool isCalm;
    std::vector<Operation> made;
    Texts faultsOn;
    unsigned messages = 0;
};

}  // namespace

const std::vector<Kind>& slots() {
    static const std::vector<Kind> all{Kind::SOCKET, Kind::SOCKET, Kind::SOCKET, Kind::SOCKET,
                                       Kind::PAGE,   Kind::PAGE,   Kind::PAGE,   Kind::DEVICE};
    return all;
}

std::string describe(const Operation& operation) {
    static const std::map<Operation::Type, std::string> names{
        {Operation::Type::SEND, "send"},
        {Operation::Type::SEND_BYTES, "send bytes"},
        {Operation::Type::SEND_PART, "send half and close"},
        {Operation::Type::RESUME, "resume"},
        {Operation::Type::CLOSE, "close"},
        {Operation::Type::END_OUTPUT, "end output"},
        {Operation::Type::PAUSE, "stop reading"},
        {Operation::Type::READ, "read"},
        {Operation::Type::ADVANCE, "wait"},
        {Operation::Type::KILL, "kill"},
        {Operation::Type::POWER_CUT, "power cut"},
        {Operation::Type::STOP, "stop"},
        {Operation::Type::KILL_AT, "kill at disk call"},
        {Operation::Type::POWER_CUT_AT, "power cut at disk call"},
        {Operation::Type::FAIL_AT, "failing disk calls from"},
        {Operation::Type::POWER_CUT_TWICE, "power cut, and at disk call of the start"},
    };
    constexpr std::size_t enough = 200;
    return names.at(operation.type) + " (client " + std::to_string(operation.slot) + ", " +
           std::to_string(operation.number) + ", " + std::to_string(operation.other) + ", steps " +
           std::to_string(operation.steps) + ") " + operation.text.substr(0, enough);
}

std::vector<Operation> operationsOf(std::uint64_t seed, std::size_t count) {
    return Generator(seed).make(count);
}

}  // namespace SettingsSimulation
