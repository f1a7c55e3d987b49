#include "support/Arguments.h"

#include <cstdio>
#include <exception>

namespace Benchmarks {

namespace {

Arguments parse(int count, const char* const* texts) {
    Arguments arguments;
    bool isChosen = false;
    for (int index = 1; index < count; ++index) {
        const std::string text = texts[index];
        if (text == "--quick") {
            arguments.quick = true;
        } else if (text == "--one-processor") {
            arguments.oneProcessor = true;
        } else if (text == "--rounds" && index + 1 < count) {
            arguments.rounds = std::stoi(texts[++index]);
            isChosen = true;
        } else {
            arguments.others.push_back(text);
        }
    }
    if (arguments.quick && !isChosen) {
        arguments.rounds = 1;
    }
    return arguments;
}

}  // namespace

int measureAndPrint(int count, const char* const* texts, const std::function<Results(const Arguments&)>& measure) {
    try {
        measure(parse(count, texts)).print();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", texts[0], error.what());
        return 1;
    }
}

}  // namespace Benchmarks
