#pragma once

#include <string>
#include <vector>

namespace WireTests {

/// One frame of an example.
struct Step {
    /// "socket", "page" or "device": the listener.
    std::string at;
    /// Whether the client sends it; otherwise the client receives it.
    bool sent = false;
    std::string frame;
    /// The name of its schema; empty when no schema accepts it.
    std::string schema;
};

/// A file of docs/examples: the frames of both directions, in order.
struct Example {
    std::string name;
    std::vector<Step> steps;
};

Example exampleNamed(const std::string& name);

/// All examples, ordered by name.
std::vector<Example> allExamples();

/// A frame that its schema rejects and a host refuses.
struct RefusedFrame {
    std::string at;
    std::string frame;
    /// The schema that a valid frame of this type has.
    std::string schema;
    /// The code of the host's refusal; empty when the host drops the frame.
    std::string code;
};

/// The frames of docs/examples/refused/frames.json.
std::vector<RefusedFrame> refusedFrames();

}  // namespace WireTests
