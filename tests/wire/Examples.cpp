#include "wire/Examples.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "wire/Json.h"

namespace WireTests {

namespace {

Step stepFrom(const rapidjson::Value& value) {
    Step step;
    const std::string connection = value["at"].GetString();
    step.at = connection.substr(0, connection.find('-'));
    if (value.HasMember("sentText")) {
        step.sent = true;
        step.frame = value["sentText"].GetString();
    } else {
        step.sent = value.HasMember("sent");
        step.frame = compact(value[step.sent ? "sent" : "received"]);
    }
    if (value.HasMember("schema")) {
        step.schema = value["schema"].GetString();
    }
    return step;
}

}  // namespace

Example exampleNamed(const std::string& name) {
    std::istringstream lines(contentOf(std::string(EXAMPLE_FOLDER) + "/" + name + ".jsonl"));
    Example example{name, {}};
    std::string line;
    // The first one has the title.
    for (std::getline(lines, line); std::getline(lines, line);) {
        example.steps.push_back(stepFrom(parsed(line)));
    }
    if (example.steps.empty()) {
        throw std::runtime_error("the example " + name + " has no steps");
    }
    return example;
}

std::vector<Example> allExamples() {
    std::vector<Example> examples;
    for (const auto& entry : std::filesystem::directory_iterator(EXAMPLE_FOLDER)) {
        if (entry.path().extension() == ".jsonl") {
            examples.push_back(exampleNamed(entry.path().stem().string()));
        }
    }
    std::sort(examples.begin(), examples.end(), [](const auto& one, const auto& two) { return one.name < two.name; });
    return examples;
}

std::vector<RefusedFrame> refusedFrames() {
    const rapidjson::Document document = parsed(contentOf(std::string(EXAMPLE_FOLDER) + "/refused/frames.json"));
    std::vector<RefusedFrame> frames;
    for (const auto& entry : document["frames"].GetArray()) {
        frames.push_back({entry["at"].GetString(), compact(entry["sent"]), entry["schema"].GetString(),
                          entry.HasMember("code") ? entry["code"].GetString() : ""});
    }
    return frames;
}

}  // namespace WireTests
