#include "Wire/AnswerFrame.h"

#include "Wire/ObjectWriter.h"

namespace Wire {

namespace {

/// Adds `beginning` and `text` as a JSON string. An answer is to cost little beside the change that it tells of, so it
/// is written without the JSON library where that changes nothing.
void add(std::string& frame, std::string_view beginning, std::string_view text) {
    frame.append(beginning);
    if (isPlainAscii(text)) {
        frame.push_back('"');
        frame.append(text);
        frame.push_back('"');
        return;
    }
    rapidjson::StringBuffer buffer;
    Utf8Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    frame.append(buffer.GetString(), buffer.GetSize());
}

}  // namespace

std::string answerFrame(const Answer& answer) {
    constexpr std::size_t namesAndNumbers = 192;
    std::string frame;
    frame.reserve(namesAndNumbers + answer.messageId.size() + answer.message.size() +
                  answer.settingDBId.value_or("").size() + answer.value.value_or("").size());
    frame.append(R"({"type":)").append(std::to_string(answer.type));
    add(frame, R"(,"messageId":)", answer.messageId);
    add(frame, R"(,"payload":{"outcome":)", answer.outcome);
    if (!answer.reason.empty()) {
        add(frame, R"(,"reason":)", answer.reason);
        add(frame, R"(,"message":)", answer.message);
    }
    if (answer.settingDBId) {
        add(frame, R"(,"settingDBId":)", *answer.settingDBId);
    }
    if (answer.value) {
        add(frame, R"(,"value":)", *answer.value);
    }
    if (!answer.applied) {
        frame.append(R"(,"applied":false)");
    }
    if (answer.newest) {
        frame.append(R"(,"newest":)").append(std::to_string(*answer.newest));
    }
    return frame.append("}}");
}

}  // namespace Wire
