#include "simulation/Expectation.h"

#include <cctype>
#include <cstdlib>
#include <string_view>

#include "simulation/Fingerprint.h"

namespace SettingsSimulation {

namespace {

bool isDigit(char character) {
    return std::isdigit(static_cast<unsigned char>(character)) != 0;
}

/// A place in a frame that is compared piece by piece.
class Reader {
public:
    Reader(std::string_view itsFrame, std::string& itsRun) : frame(itsFrame), run(itsRun) {}

    bool isAtEnd() const { return place == frame.size(); }
    std::size_t position() const { return place; }

    bool accept(std::string_view text) {
        if (frame.substr(place, text.size()) != text) {
            return false;
        }
        place += text.size();
        return true;
    }

    bool read(const std::string& pattern, std::int64_t begin, std::int64_t end) {
        std::size_t start = 0;
        for (std::size_t at = 0; at < pattern.size(); ++at) {
            const char character = pattern[at];
            if (character < Unknown::messageId || character > Unknown::run) {
                continue;
            }
            if (!accept(std::string_view(pattern).substr(start, at - start)) ||
                !unknown(character, std::string_view(pattern).substr(at + 1), begin, end)) {
                return false;
            }
            start = at + 1;
        }
        return accept(std::string_view(pattern).substr(start));
    }

private:
    bool unknown(char kind, std::string_view rest, std::int64_t begin, std::int64_t end) {
        switch (kind) {
            case Unknown::messageId:
                return accept("host-") && digits() && accept("-") && digits();
            case Unknown::timestamp: {
                const std::size_t start = place;
                accept("-");
                if (!digits()) {
                    return false;
                }
                const auto value = std::strtoll(std::string(frame.substr(start, place - start)).c_str(), nullptr, 10);
                return value >= begin && value <= end;
            }
            case Unknown::text:
                return textEnd();
            case Unknown::json:
                return jsonEnd();
            case Unknown::anything:
                place = frame.find(rest.substr(0, rest.find(Unknown::timestamp)), place);
                return place != std::string_view::npos;
            default:
                return runName();
        }
    }

    bool digits() {
        const std::size_t start = place;
        while (place < frame.size() && isDigit(frame[place])) {
            ++place;
        }
        return place > start;
    }

    bool textEnd() {
        const std::size_t start = place;
        while (place < frame.size() && frame[place] != '"') {
            place += frame[place] == '\\' ? 2 : 1;
        }
        return place > start && place < frame.size();
    }

    /// A value, or the rest of an object.
    bool jsonEnd() {
        const bool isValue = place < frame.size() && (frame[place] == '{' || frame[place] == '[');
        int depth = 0;
        for (; place < frame.size(); ++place) {
            const char character = frame[place];
            if (character == '"') {
                ++place;
                textEnd();
            } else if (character == '{' || character == '[') {
                ++depth;
            } else if (character == '}' || character == ']') {
                --depth;
                if (depth < 0 || (depth == 0 && isValue)) {
                    place += depth == 0 ? 1 : 0;
                    return true;
                }
            }
        }
        return false;
    }

    bool runName() {
        constexpr std::size_t length = 32;
        const std::string_view name = frame.substr(place, length);
        if (name.size() != length || (!run.empty() && run != name)) {
            return false;
        }
        run = name;
        place += length;
        return true;
    }

    std::string_view frame;
    std::string& run;
    std::size_t place = 0;
};

}  // namespace

namespace {

template <typename Replace>
std::string withUnknown(const std::vector<Expectation::Piece>& pieces, Replace replace) {
    std::string text;
    for (const auto& piece : pieces) {
        text += piece.text;
        if (piece.event) {
            text += piece.event->seen.empty() ? piece.event->text : piece.event->seen;
        }
    }
    std::string readable;
    for (const char character : text) {
        readable += character >= Unknown::messageId && character <= Unknown::run ? replace(character, readable)
                                                                                 : std::string(1, character);
    }
    return readable;
}

}  // namespace

std::uint64_t Expectation::digest() const {
    Fingerprint all;
    for (const auto& piece : pieces) {
        all.add(piece.text);
        if (piece.event) {
            all.add(piece.event->text);
        }
    }
    return all.result();
}

std::string Expectation::shown() const {
    return withUnknown(pieces, [](char /*unknown*/, const std::string& /*before*/) { return std::string("…"); });
}

void learn(const std::string& frame, KnownTexts& texts) {
    const std::string name = R"("message":")";
    for (auto place = frame.find(name); place != std::string::npos; place = frame.find(name, place)) {
        const std::size_t begin = frame.rfind('{', place);
        place += name.size();
        std::size_t end = place;
        while (end < frame.size() && frame[end] != '"') {
            end += frame[end] == '\\' ? 2 : 1;
        }
        texts[frame.substr(begin, place - begin)] = frame.substr(place, end - place);
    }
}

std::string Expectation::example(const std::string& run, const KnownTexts& texts) const {
    return withUnknown(pieces, [&](char unknown, const std::string& before) -> std::string {
        switch (unknown) {
            case Unknown::messageId:
                return "host-1-1";
            case Unknown::timestamp:
                return std::to_string(end);
            case Unknown::json:
                return "{}";
            case Unknown::anything:
                return ",";
            case Unknown::run:
                return run.empty() ? std::string(32, '0') : run;
            default:
                const auto known = texts.find(before.substr(before.rfind('{')));
                return known == texts.end() ? "…" : known->second;
        }
    });
}

bool matches(const Expectation& expected, const std::string& frame, std::string& run) {
    std::string learned = run;
    Reader reader(frame, learned);
    for (const auto& piece : expected.pieces) {
        if (!reader.read(piece.text, expected.begin, expected.end)) {
            return false;
        }
        if (!piece.event) {
            continue;
        }
        SentEvent& event = *piece.event;
        const std::size_t start = reader.position();
        if (!event.seen.empty() ? !reader.accept(event.seen) : !reader.read(event.text, event.begin, event.end)) {
            return false;
        }
        event.seen = frame.substr(start, reader.position() - start);
    }
    if (!reader.isAtEnd()) {
        return false;
    }
    run = learned;
    return true;
}

}  // namespace SettingsSimulation
