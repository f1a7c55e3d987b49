#pragma once

#include <string>
#include <vector>

namespace WireTests {

/// A frame with one fault, and what the fault is, for example "/payload/to was removed".
struct Mutation {
    std::string frame;
    std::string fault;
};

/// `frame`, a JSON object, with a member too many, a member too few, or a member of another type, at each place.
std::vector<Mutation> mutationsOf(const std::string& frame);

}  // namespace WireTests
