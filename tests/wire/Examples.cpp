#include "wire/Examples.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "wire/Json.h"

namespace WireTests {

namespace {

Step stepFrom(const rapidjson::Value& value) {
    Step step;
    step.at = value["at"].GetString();
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

void setIfThere(rapidjson::Value& object, const char* name, rapidjson::Value value) {
    if (object.IsObject() && object.HasMember(name)) {
        object[name] = value;
    }
}

void blankEvent(rapidjson::Value& event) {
    if (event.HasMember("sequence")) {
        setIfThere(event, "messageId", rapidjson::Value("…"));
        setIfThere(event, "timestamp", rapidjson::Value(0));
    }
}

/// Blanks the member at `path`, if it is there.
void blankAt(rapidjson::Document& document, const char* path) {
    if (auto* const value = rapidjson::Pointer(path).Get(document)) {
        if (value->IsNumber()) {
            *value = 0;
        } else {
            *value = rapidjson::Value("…");
        }
    }
}

/// Removes from a trace what differs between runs.
void blankTrace(rapidjson::Value& trace, rapidjson::Document& document) {
    setIfThere(trace, "timestamp", rapidjson::Value(0));
    if (trace.HasMember("client") && trace["client"].IsInt()) {
        trace["client"] = 1;
    }
    if (trace.HasMember("text") && trace["text"].IsString()) {
        trace["text"].SetString(comparable(trace["text"].GetString()), document.GetAllocator());
    }
}

}  // namespace

Example exampleNamed(const std::string& name) {
    const rapidjson::Document document = parsed(contentOf(std::string(EXAMPLE_FOLDER) + "/" + name + ".json"));
    if (!document.IsObject() || !document.HasMember("steps")) {
        throw std::runtime_error("the example " + name + " has no steps");
    }
    Example example{name, {}};
    for (const auto& step : document["steps"].GetArray()) {
        example.steps.push_back(stepFrom(step));
    }
    return example;
}

std::vector<Example> allExamples() {
    std::vector<Example> examples;
    for (const auto& entry : std::filesystem::directory_iterator(EXAMPLE_FOLDER)) {
        if (entry.path().extension() == ".json") {
            examples.push_back(exampleNamed(entry.path().stem().string()));
        }
    }
    std::sort(examples.begin(), examples.end(), [](const auto& one, const auto& two) { return one.name < two.name; });
    return examples;
}

std::vector<Example> examplesIn(const std::string& document) {
    const std::string mark = "```text example=";
    std::istringstream lines(contentOf(std::string(DOCUMENT_FOLDER) + "/" + document));
    std::vector<Example> examples;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(mark, 0) == 0) {
            examples.push_back(exampleNamed(line.substr(mark.size())));
        }
    }
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

std::string comparable(const std::string& frame) {
    rapidjson::Document document = parsed(frame);
    if (!document.IsObject()) {
        return frame;
    }
    blankEvent(document);
    if (auto* const events = rapidjson::Pointer("/history/events").Get(document)) {
        for (auto& event : events->GetArray()) {
            blankEvent(event);
        }
    }
    if (document.HasMember("trace") && document["trace"].IsObject()) {
        blankTrace(document["trace"], document);
    }
    if (auto* const code = rapidjson::Pointer("/error/code").Get(document); code != nullptr && *code == "not-stored") {
        // It names a file.
        blankAt(document, "/error/message");
    }
    for (const auto* const path :
         {"/page/address", "/hello/run", "/backup/file", "/status/health/version", "/status/health/uptimeSeconds",
          "/status/versions/host", "/status/disk/free", "/status/disk/total", "/status/now"}) {
        blankAt(document, path);
    }
    return compact(document);
}

}  // namespace WireTests
