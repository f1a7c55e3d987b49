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

void TrafficRecord::frameReceived(const SettingsHandlerKit::Client& /*client*/, const std::string& frame) {
    if (reports.received.empty()) {
        reports.startsWithReceived = reports.sent.empty() && reports.handled.empty() && reports.refused.empty();
    }
    reports.received.push_back(frame);
}

void TrafficRecord::frameSent(const SettingsHandlerKit::Client* receiver, const std::string& frame) {
    reports.sent.push_back({receiver == nullptr, frame});
}

void TrafficRecord::frameRefused(const std::string& code) {
    reports.refused.push_back("refused " + code);
}

void TrafficRecord::requestHandled(int type, SettingsHandlerKit::RequestOutcome outcome) {
    static const char* const names[] = {"ANSWERED", "CHANGED", "SILENT", "REJECTED", "FAILED"};
    reports.handled.push_back("handled " + std::to_string(type) + " " + names[static_cast<int>(outcome)]);
}

TrafficRecord::Reports TrafficRecord::take() {
    return std::exchange(reports, {});
}

std::string codeOf(const std::string& frame) {
    const Envelope json(frame);
    return json.textIn("error", "code").value_or("");
}

}  // namespace SettingsHandlerFuzz
