#include "server/sockets/LineFramer.h"

namespace SettingsHandlerKit {

namespace {

/// Everything that the framer has now; "TOO LARGE" for a frame over the limit.
std::vector<std::string> framesOf(LineFramer& framer) {
    std::vector<std::string> frames;
    while (const auto frame = framer.next()) {
        frames.push_back(frame->tooLarge ? "TOO LARGE" : frame->text);
    }
    return frames;
}

void append(LineFramer& framer, const std::string& bytes) {
    framer.append(bytes.data(), bytes.size());
}

using Frames = std::vector<std::string>;

}  // namespace

TEST(LineFramer, CutsAtLineEnds) {
    LineFramer framer(10);
    append(framer, "one\ntwo\nthr");
    EXPECT_EQ(framesOf(framer), (Frames{"one", "two"}));
    append(framer, "ee\n");
    EXPECT_EQ(framesOf(framer), Frames{"three"});
}

TEST(LineFramer, IgnoresBlankLines) {
    LineFramer framer(10);
    append(framer, "\n\r\n  \t\nx\n\n");
    EXPECT_EQ(framesOf(framer), Frames{"x"});
}

TEST(LineFramer, ALastLineWithoutItsEndIsIgnored) {
    LineFramer framer(10);
    append(framer, "unfinished");
    EXPECT_EQ(framesOf(framer), Frames{});
}

TEST(LineFramer, HasRoomForOneFrameOverTheLimitInAll) {
    LineFramer framer(10);
    EXPECT_EQ(framer.room(), 11U);
    append(framer, "one\ntwo\n");
    EXPECT_EQ(framer.room(), 3U);
    EXPECT_EQ(framer.next()->text, "one");
    EXPECT_EQ(framer.room(), 7U) << "what was cut needs none";
    append(framer, "sevenxx");
    EXPECT_EQ(framer.room(), 1U);
    EXPECT_EQ(framesOf(framer), Frames{"two"});
    EXPECT_EQ(framer.room(), 4U);
    append(framer, "more");
    EXPECT_EQ(framesOf(framer), Frames{"TOO LARGE"});
    EXPECT_EQ(framer.room(), 11U) << "the rest is skipped";
}

TEST(LineFramer, FreesTheMemoryOfLargeFramesThatAreTaken) {
    LineFramer framer(65536);
    append(framer, std::string(65536, 'x'));
    EXPECT_GE(framer.memory(), 65536U);
    append(framer, "\n");
    EXPECT_EQ(framesOf(framer).size(), 1U);
    EXPECT_EQ(framer.memory(), 0U);
    append(framer, "a");
    EXPECT_LE(framer.memory(), 4096U) << "it was kept all the same";
}

TEST(LineFramer, KeepsNulCharacters) {
    LineFramer framer(10);
    append(framer, std::string("a\0b\n", 4));
    EXPECT_EQ(framesOf(framer), Frames{std::string("a\0b", 3)});
}

TEST(LineFramer, TakesAFrameOfExactlyTheLimit) {
    LineFramer framer(5);
    append(framer, "12345\n123456\n12345\n");
    EXPECT_EQ(framesOf(framer), (Frames{"12345", "TOO LARGE", "12345"}));
}

TEST(LineFramer, ReportsALargeFrameOnceAndSkipsItsRest) {
    LineFramer framer(5);
    append(framer, "1234567");
    EXPECT_EQ(framesOf(framer), Frames{"TOO LARGE"});
    for (int piece = 0; piece < 1000; ++piece) {
        append(framer, "{\"type\":7}");
        EXPECT_EQ(framesOf(framer), Frames{});
    }
    append(framer, "end\nnext\n");
    EXPECT_EQ(framesOf(framer), Frames{"next"});
}

TEST(LineFramer, DoesNotDependOnTheChunksOfTheBytes) {
    const std::string stream = "one\n\n1234567890\nsix\r\n12345\n  \nlast";
    LineFramer whole(5);
    append(whole, stream);
    const Frames expected = framesOf(whole);
    EXPECT_EQ(expected, (Frames{"one", "TOO LARGE", "six\r", "12345"}));
    for (std::size_t size = 1; size < stream.size(); ++size) {
        LineFramer framer(5);
        Frames frames;
        for (std::size_t from = 0; from < stream.size(); from += size) {
            append(framer, stream.substr(from, size));
            for (const auto& frame : framesOf(framer)) {
                frames.push_back(frame);
            }
        }
        EXPECT_EQ(frames, expected) << size;
    }
}

}  // namespace SettingsHandlerKit
