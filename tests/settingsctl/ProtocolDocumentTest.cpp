#include <fstream>
#include <vector>

#include <gtest/gtest.h>

#include "RunningHost.h"
#include "support/LineClient.h"

using namespace SettingsCtlTests;
using TestSupport::LineClient;

namespace {

using Example = std::vector<std::string>;

/// The fenced blocks of the protocol's document, line by line.
std::vector<Example> examples() {
    std::ifstream document(PROTOCOL_DOCUMENT);
    std::vector<Example> blocks;
    bool inBlock = false;
    for (std::string line; std::getline(document, line);) {
        if (line.rfind("```", 0) == 0) {
            inBlock = !inBlock;
            if (inBlock) {
                blocks.emplace_back();
            }
        } else if (inBlock) {
            blocks.back().push_back(line);
        }
    }
    return blocks;
}

/// Replaces what stands between `begin` and the next character out of `ends`.
void blank(std::string& frame, const std::string& begin, const char* ends) {
    const std::size_t found = frame.find(begin);
    if (found != std::string::npos) {
        const std::size_t from = found + begin.size();
        frame.replace(from, frame.find_first_of(ends, from) - from, "");
    }
}

/// A frame of the host without what is different in every run.
std::string comparable(std::string frame) {
    blank(frame, R"("messageId":"host-)", "\"");
    blank(frame, R"("timestamp":)", ",");
    return frame;
}

bool startsWith(const std::string& text, const std::string& start) {
    return text.rfind(start, 0) == 0;
}

/// Sends and expects what an example says.
void play(const Example& example, LineClient& client, LineClient& device) {
    for (const auto& line : example) {
        const bool isDevice = startsWith(line, "device");
        LineClient& side = isDevice ? device : client;
        const std::string rest = line.substr(isDevice ? 6 : 0);
        if (startsWith(rest, "> ")) {
            ASSERT_TRUE(side.sendLine(rest.substr(2)));
        } else {
            ASSERT_TRUE(startsWith(rest, "< ")) << line;
            EXPECT_EQ(comparable(side.receiveLine().value_or("nothing")), comparable(rest.substr(2)));
        }
    }
    for (LineClient* const side : {&client, &device}) {
        side->finishSending();
        EXPECT_EQ(side->receiveAll(), "") << "more than the document says";
    }
}

}  // namespace

TEST(ProtocolDocument, ShowsWhatTheHostDoes) {
    const RunningHost host;
    const std::vector<Example> all = examples();
    ASSERT_FALSE(all.empty());
    for (const auto& example : all) {
        LineClient client(host.socketPath());
        LineClient device(host.devicePath());
        // An answered question tells that the client is known and will get events.
        client.sendLine(R"({"type":18,"messageId":"first"})");
        ASSERT_TRUE(client.receiveLine());
        play(example, client, device);
    }
}
