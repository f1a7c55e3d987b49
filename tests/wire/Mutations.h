#pragma once

#include <string>
#include <vector>

namespace WireTests {

/// A frame with one fault, and a description of the fault, for example "/payload/to was removed".
struct Mutation {
    std::string frame;
    std::string fault;
};

/// Variants of `frame`, a JSON object, each with one member added, removed or changed to another type.
std::vector<Mutation> mutationsOf(const std::string& frame);

}  // namespace WireTests
