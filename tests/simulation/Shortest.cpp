#include "simulation/Shortest.h"

#include <algorithm>

#include "model/Json.h"
#include "simulation/Run.h"

namespace SettingsSimulation {

namespace {

using SettingsHandlerFuzz::Envelope;
using SettingsHandlerFuzz::stringText;

class Search {
public:
    Search(std::uint64_t itsSeed, std::string itsFinding, int runs)
        : seed(itsSeed), finding(std::move(itsFinding)), left(runs) {}

    /// Leaves out parts, smaller and smaller ones.
    std::vector<Operation> withoutParts(std::vector<Operation> operations) {
        for (std::size_t size = std::max<std::size_t>(operations.size() / 2, 1); left > 0;) {
            bool isShorter = false;
            for (std::size_t first = 0; first < operations.size() && left > 0;) {
                std::vector<Operation> fewer = operations;
                const auto begin = fewer.begin() + static_cast<std::ptrdiff_t>(first);
                fewer.erase(begin, begin + static_cast<std::ptrdiff_t>(std::min(size, operations.size() - first)));
                if (finds(fewer)) {
                    operations = std::move(fewer);
                    isShorter = true;
                } else {
                    first += size;
                }
            }
            if (size == 1 && !isShorter) {
                break;
            }
            size = std::max<std::size_t>(size / 2, 1);
        }
        return operations;
    }

    /// One after the other where that is enough.
    std::vector<Operation> inOrder(std::vector<Operation> operations) {
        for (std::size_t index = 0; index < operations.size() && left > 0; ++index) {
            std::vector<Operation> simpler = operations;
            simpler[index].steps = -1;
            if (operations[index].steps >= 0 && finds(simpler)) {
                operations = std::move(simpler);
            }
        }
        return operations;
    }

private:
    bool finds(std::vector<Operation>& operations) {
        --left;
        Run run(seed, false);
        const auto found = run.play(operations);
        if (!found || kindOf(found->what()) != finding) {
            return false;
        }
        operations.resize(std::min(operations.size(), run.done()));
        return true;
    }

    std::uint64_t seed;
    std::string finding;
    int left;
};

std::string lineOf(const Step& step, std::int64_t begin) {
    const std::string head =
        "{\"time\": " + std::to_string(step.time - begin) + ", \"at\": " + stringText(step.at) + ", ";
    if (step.kind == "sent" || step.kind == "received") {
        const bool isObject = Envelope(step.text).isObject();
        return head +
               (isObject ? "\"" + step.kind + "\": " + step.text
                         : "\"" + step.kind + "Text\": " + stringText(step.text)) +
               "}\n";
    }
    return head + (step.kind == "did" ? "\"did\": " + stringText(step.text) : "\"" + step.kind + "\": true") + "}\n";
}

}  // namespace

std::string kindOf(const std::string& finding) {
    std::string kind;
    std::copy_if(finding.begin(), finding.end(), std::back_inserter(kind),
                 [](char character) { return character < '0' || character > '9'; });
    return kind;
}

std::vector<Operation> shortest(std::uint64_t seed, std::vector<Operation> operations, const std::string& finding,
                                int runs) {
    Search search(seed, kindOf(finding), runs);
    operations = search.inOrder(search.withoutParts(std::move(operations)));
    return search.withoutParts(std::move(operations));
}

std::string scenarioOf(std::uint64_t seed, const std::vector<Operation>& operations,
                       const std::vector<Operation>& all) {
    Run whole(seed, true);
    whole.play(all);
    Run run(seed, true, whole.texts());
    const auto found = run.play(operations);
    const bool hasPowerCut = std::any_of(operations.begin(), operations.end(), [](const Operation& each) {
        return each.type == Operation::Type::POWER_CUT || each.type == Operation::Type::POWER_CUT_AT ||
               each.type == Operation::Type::POWER_CUT_TWICE;
    });
    std::string text = R"({"scenario": 1, "title": "Seed )" + std::to_string(seed) + " of the simulation" +
                       (hasPowerCut ? ", with power cuts in place of kills" : "") + R"(", "description": )" +
                       stringText(found ? found->what() : "No finding.") + "}\n";
    const std::int64_t begin = run.steps().empty() ? 0 : run.steps().front().time;
    for (const auto& step : run.steps()) {
        text += lineOf(step, begin);
    }
    return text;
}

}  // namespace SettingsSimulation
