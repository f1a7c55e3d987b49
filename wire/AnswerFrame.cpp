#include "Wire/AnswerFrame.h"

#include "Wire/ObjectWriter.h"

namespace Wire {

std::string answerFrame(const Answer& answer) {
    ObjectWriter<> frame;
    frame.number("type", answer.type);
    frame.text("messageId", answer.messageId);
    frame.beginObject("payload");
    frame.text("outcome", answer.outcome);
    if (!answer.reason.empty()) {
        frame.text("reason", answer.reason);
        frame.text("message", answer.message);
    }
    if (answer.settingDBId) {
        frame.text("settingDBId", *answer.settingDBId);
    }
    if (answer.value) {
        frame.text("value", *answer.value);
    }
    if (!answer.applied) {
        frame.boolean("applied", false);
    }
    if (answer.newest) {
        frame.number("newest", *answer.newest);
    }
    frame.endObject();
    return frame.finish();
}

}  // namespace Wire
