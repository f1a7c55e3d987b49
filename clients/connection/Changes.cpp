#include "connection/Changes.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "Wire/FrameInspector.h"
#include "Wire/Requests.h"

namespace SettingsClient {

namespace {

constexpr std::size_t maximumBatch = 64;

/// A request that asks for an answer.
struct Asked {
    std::string messageId;
    std::string frame;
    std::string key;
    std::string value;
    std::optional<Answer> answer;
    /// The event of a change to this value, since the request was sent.
    std::optional<Wire::Change> change;
};

Outcome outcomeOf(const std::string& word) {
    static const std::map<std::string, Outcome> outcomes{{"changed", Outcome::CHANGED},
                                                         {"unchanged", Outcome::UNCHANGED},
                                                         {"done", Outcome::DONE},
                                                         {"refused", Outcome::REFUSED}};
    const auto found = outcomes.find(word);
    if (found == outcomes.end()) {
        throw Wire::MalformedFrame();
    }
    return found->second;
}

Answer answerOf(const Wire::HostFrame& frame, const std::string& key) {
    Answer answer;
    answer.outcome = outcomeOf(frame.textAt({"payload", "outcome"}).value_or(""));
    answer.reason = frame.textAt({"payload", "reason"}).value_or("");
    answer.message = frame.textAt({"payload", "message"}).value_or("");
    answer.key = key;
    answer.value = frame.textAt({"payload", "value"});
    answer.applied = frame.booleanAt({"payload", "applied"}).value_or(true);
    answer.newest = frame.integerAt({"payload", "newest"});
    return answer;
}

Answer refusalOf(const Wire::Refusal& refusal, const std::string& key) {
    Answer answer;
    answer.outcome = Outcome::REFUSED;
    answer.reason = refusal.code;
    answer.message = refusal.message;
    answer.key = key;
    return answer;
}

/// Collects the answers to requests that were sent together.
class Answers {
public:
    /// The reply to `fence`, a request after all of them, ends the wait for answers; empty: all of them are answered.
    Answers(std::vector<Asked>& sent, std::string fence) : requests(sent), fenceId(std::move(fence)) {}

    /// Returns: whether nothing more comes.
    bool take(const Wire::HostFrame& frame) {
        if (const auto change = frame.change()) {
            takeChange(*change);
        } else if (const auto refusal = frame.refusal()) {
            if (!takeRefusal(*refusal, frame.integerAt({"error", "index"}))) {
                return true;
            }
        } else if (!fenceId.empty() && frame.isReplyTo(fenceId)) {
            return true;
        } else {
            takeAnswer(frame);
        }
        return fenceId.empty() &&
               std::all_of(requests.begin(), requests.end(), [](const Asked& asked) { return asked.answer; });
    }

    bool any() const { return hasAnswer; }

private:
    void takeChange(const Wire::Change& change) {
        lastFrom[change.key] = change.from;
        for (auto& asked : requests) {
            if (asked.key == change.key && asked.value == change.to) {
                asked.change = change;
            }
        }
    }

    /// A refusal without index is that of the whole frame. Returns: false when it can be that of the fence alone.
    bool takeRefusal(const Wire::Refusal& refusal, const std::optional<std::int64_t>& index) {
        bool isTaken = false;
        for (std::size_t number = 0; number < requests.size(); ++number) {
            if (!requests[number].answer && (!index || static_cast<std::int64_t>(number) == *index)) {
                requests[number].answer = refusalOf(refusal, requests[number].key);
                isTaken = true;
            }
        }
        return isTaken;
    }

    void takeAnswer(const Wire::HostFrame& frame) {
        for (auto& asked : requests) {
            if (frame.isReplyTo(asked.messageId)) {
                asked.answer = answerOf(frame, asked.key);
                hasAnswer = true;
                if (asked.answer->outcome == Outcome::CHANGED && lastFrom.count(asked.key) > 0) {
                    // Nothing comes between the event of a request and its answer.
                    asked.answer->from = lastFrom[asked.key];
                }
            }
        }
    }

    std::vector<Asked>& requests;
    std::string fenceId;
    std::map<std::string, std::string> lastFrom;
    bool hasAnswer = false;
};

/// What came of a request to a host that gives no answers, as far as events and the value now tell.
Answer conclusionOf(const Asked& asked, const std::map<std::string, std::string>& values) {
    Answer answer;
    answer.key = asked.key;
    const auto value = values.find(asked.key);
    if (value != values.end()) {
        answer.value = value->second;
    }
    if (asked.change) {
        answer.outcome = Outcome::CHANGED;
        answer.from = asked.change->from;
    } else if (!asked.key.empty()) {
        answer.outcome = answer.value == asked.value ? Outcome::UNCHANGED : Outcome::REFUSED;
    }
    return answer;
}

std::map<std::string, std::string> valuesOf(Session& session, const std::vector<Asked>& requests) {
    std::vector<std::string> keys;
    for (const auto& asked : requests) {
        if (!asked.answer && !asked.key.empty()) {
            keys.push_back(asked.key);
        }
    }
    if (keys.empty()) {
        return {};
    }
    const std::string messageId = session.newMessageId();
    return session.ask(messageId, Wire::getSettingsRequest(messageId, keys)).stringsAt({"payload", "settings"});
}

/// Sends `frame`, which has these requests, and adds what came of them to `answers`.
void send(Session& session, const std::string& frame, std::vector<Asked>& requests, std::vector<Answer>& answers) {
    std::vector<std::string> frames{frame};
    std::string fence;
    if (!session.answers()) {
        // The host may give no answers: then its reply to this means that the requests were served.
        fence = session.newMessageId();
        frames.push_back(Wire::bareRequest(Wire::IS_ORLIA_SELECTED_VA, fence));
    }
    Answers received(requests, fence);
    session.exchange(frames, [&](const Wire::HostFrame& next) {
        session.tellEventsAtOnce();
        return received.take(next);
    });
    if (received.any()) {
        session.noteAnswer();
    }
    const auto values = valuesOf(session, requests);
    for (const auto& asked : requests) {
        answers.push_back(asked.answer ? *asked.answer : conclusionOf(asked, values));
    }
}

Answer sendAlone(Session& session, Asked asked) {
    std::vector<Asked> requests;
    requests.push_back(std::move(asked));
    std::vector<Answer> answers;
    send(session, requests.front().frame, requests, answers);
    return std::move(answers.front());
}

/// `now` is the time stamp unless the assignment has one.
Asked askedFor(Session& session, const Assignment& assignment, std::int64_t now) {
    Asked asked;
    asked.messageId = session.newMessageId();
    asked.key = assignment.key;
    asked.value = assignment.value;
    asked.frame = Wire::setSettingsRequest(asked.messageId, assignment.timestamp.value_or(now), assignment.key,
                                           assignment.value, Wire::Answered::YES, session.caller);
    return asked;
}

std::string batchOf(const std::vector<Asked>& requests) {
    std::vector<std::string> frames;
    frames.reserve(requests.size());
    for (const auto& asked : requests) {
        frames.push_back(asked.frame);
    }
    return Wire::batchFrame(frames);
}

}  // namespace

Answer setOne(Session& session, const Assignment& assignment) {
    return sendAlone(session, askedFor(session, assignment, session.newTimestamp()));
}

std::vector<Answer> setInBatches(Session& session, const std::vector<Assignment>& assignments) {
    session.requireAnswers("batches");
    std::vector<Answer> answers;
    std::vector<Asked> batch;
    std::size_t size = Wire::batchFrame({}).size();
    // They are set together, whatever the clock does meanwhile.
    const std::int64_t now = session.newTimestamp();
    for (const auto& assignment : assignments) {
        Asked next = askedFor(session, assignment, now);
        if (!batch.empty() && (batch.size() == maximumBatch || size + next.frame.size() + 1 > Wire::maximumFrameSize)) {
            send(session, batchOf(batch), batch, answers);
            batch.clear();
            size = Wire::batchFrame({}).size();
        }
        size += next.frame.size() + 1;
        batch.push_back(std::move(next));
    }
    if (!batch.empty()) {
        send(session, batchOf(batch), batch, answers);
    }
    return answers;
}

Answer request(Session& session, Wire::MessageType type) {
    Asked asked;
    asked.messageId = session.newMessageId();
    asked.frame = Wire::bareRequest(type, asked.messageId, Wire::Answered::YES, session.caller);
    return sendAlone(session, std::move(asked));
}

}  // namespace SettingsClient
