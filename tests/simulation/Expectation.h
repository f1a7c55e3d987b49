#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace SettingsSimulation {

/// What must come is a text in which some characters stand for what the model does not know.
namespace Unknown {
constexpr char messageId = '\1';
constexpr char timestamp = '\2';
/// The rest of a string in JSON, at least one character.
constexpr char text = '\3';
/// A value in JSON.
constexpr char json = '\4';
/// Anything up to the text after it.
constexpr char anything = '\5';
/// The name of the host's run.
constexpr char run = '\6';
}  // namespace Unknown

inline const std::string anyText(1, Unknown::text);
inline const std::string anyJson(1, Unknown::json);
inline const std::string anyTimestamp(1, Unknown::timestamp);

/// An event that the host has sent.
struct SentEvent {
    long sequence = 0;
    std::string key;
    std::string text;
    std::int64_t begin = 0;
    std::int64_t end = 0;
    /// As it was seen; empty before.
    std::string seen;
};

/// Texts for people that were seen, by what stands before them in their object.
using KnownTexts = std::map<std::string, std::string>;

/// Takes the message of a refusal from a frame.
void learn(const std::string& frame, KnownTexts& texts);

/// A frame that must come: texts and events in turn.
struct Expectation {
    struct Piece {
        std::string text;
        std::shared_ptr<SentEvent> event;
    };

    std::vector<Piece> pieces;
    std::int64_t begin = 0;
    std::int64_t end = 0;

    /// For people.
    std::string shown() const;
    /// The same for frames that are to be the same.
    std::uint64_t digest() const;
    /// A frame that it matches, from this run and with these texts.
    std::string example(const std::string& run, const KnownTexts& texts) const;
};

/// Compares what came with what must come. `run`: the name of the run, learned when it is empty.
/// Returns: whether it is the same.
bool matches(const Expectation& expected, const std::string& frame, std::string& run);

}  // namespace SettingsSimulation
