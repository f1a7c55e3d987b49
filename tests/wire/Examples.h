#pragma once

#include <string>
#include <vector>

namespace WireTests {

/// One frame of an example.
struct Step {
    /// "socket", "page" or "device": the listener.
    std::string at;
    /// By the client; else the client receives it.
    bool sent = false;
    std::string frame;
    /// The name of its schema; empty when it is valid under none.
    std::string schema;
};

/// A file of docs/examples: what goes to and fro, in order.
struct Example {
    std::string name;
    std::vector<Step> steps;
};

Example exampleNamed(const std::string& name);

/// All of them, by name.
std::vector<Example> allExamples();

/// Those that the document in docs/ shows, in its order.
std::vector<Example> examplesIn(const std::string& document);

/// A frame that is refused by its schema and by a host.
struct RefusedFrame {
    std::string at;
    std::string frame;
    /// The schema of what it was meant to be.
    std::string schema;
    /// What the host answers; empty when it drops the frame.
    std::string code;
};

/// Those of docs/examples/refused/frames.json.
std::vector<RefusedFrame> refusedFrames();

/// The frame without what differs from run to run: the event's id, all times, a client's number, the pages' address.
/// What is no JSON object stays as it is.
std::string comparable(const std::string& frame);

}  // namespace WireTests
