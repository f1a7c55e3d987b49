#include "support/HostSide.h"

#include <utility>

#include "VessaLogger/LogSink.h"
#include "model/Utf8.h"
#include "support/Check.h"

namespace SettingsHandlerFuzz {

LogToJournal::LogToJournal(SettingsHandlerTesting::Journal& journal) {
    VessaLogger::setLogSink([&journal](const VessaLogger::LogLine& line) {
        journal.add("log " + std::to_string(line.level) + " " + line.text);
    });
}

LogToJournal::~LogToJournal() {
    VessaLogger::setLogSink([](const VessaLogger::LogLine&) {});
}

void checkFrame(const Envelope& json, const std::string& frame) {
    check(json.isObject(), "a frame is a JSON object: ", frame);
    check(isUtf8(frame), "a frame is valid UTF-8: ", frame);
    check(frame.find('\n') == std::string::npos, "a frame is one line: ", frame);
}

void FrameCollector::send(const std::shared_ptr<const std::string>& frame) {
    frames.push_back(frame);
}

std::vector<std::string> FrameCollector::take() {
    std::vector<std::string> texts;
    for (const auto& frame : takeUnchecked()) {
        checkFrame(Envelope(*frame), *frame);
        texts.push_back(*frame);
    }
    return texts;
}

std::vector<std::shared_ptr<const std::string>> FrameCollector::takeUnchecked() {
    return std::exchange(frames, {});
}

void TrafficLines::frameReceived(const SettingsHandlerKit::Client& /*client*/, const std::string& frame) {
    lines.push_back("received " + frame);
}

void TrafficLines::frameSent(const SettingsHandlerKit::Client* receiver, const std::string& frame) {
    lines.push_back((receiver == nullptr ? "sent to all " : "sent to one ") + frame);
}

void TrafficLines::frameRefused(const std::string& code) {
    lines.push_back("refused " + code);
}

void TrafficLines::requestHandled(int type, SettingsHandlerKit::RequestOutcome outcome) {
    static const char* const names[] = {"ANSWERED", "CHANGED", "SILENT", "REJECTED", "FAILED"};
    lines.push_back("handled " + std::to_string(type) + " " + names[static_cast<int>(outcome)]);
}

std::vector<std::string> TrafficLines::take() {
    return std::exchange(lines, {});
}

std::string codeOf(const std::string& frame) {
    const Envelope json(frame);
    return json.has("error") ? Envelope(json.compact("error")).text("code").value_or("") : "";
}

}  // namespace SettingsHandlerFuzz
