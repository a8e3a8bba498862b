// What becomes of received chunks in the text box, and which lines the line buffer finds in them.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "terminal/line_buffer.h"
#include "terminal/received_text.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

std::string shown_after(const Texts& chunks) {
    std::string text;
    for (const std::string& chunk : chunks) {
        const ShownText shown = ShowData(text.size(), chunk);
        text.erase(0, shown.drop);
        text += shown.insert;
    }
    return text;
}

TEST(ReceivedText, BackspacesLineFeedsAndTheLimit) {
    const std::tuple<const char*, Texts, std::string> table[] = {
        {"the character before a backspace stays", {"AB\bC"}, "AC"},
        {"more backspaces than characters take one too many", {"A\b\b\bB"}, "B"},
        {"a backspace at a chunk's start reaches into what is shown", {"AB", "\bC"}, "ABC"},
        {"a backspace splits a line feed from its removal", {"A\n\bB"}, "AB"},
        {"a backspace does not take a line break of its own chunk", {"A\r\bB"}, "AB"},
        {"LF CR, a lone LF, and CR LF over two chunks", {"A\n\rB\nC\r", "\nD"}, "A\rBC\rD"},
        {"other control characters are eaten", {"\x06\x7F"}, "\x06\x7F"},
    };
    for (const auto& [fault, chunks, shown] : table) EXPECT_EQ(shown_after(chunks), shown) << fault;
    // The limit counted in characters instead of two bytes each, checked after instead of before the
    // chunk, or the wrong end cut.
    for (const auto& [shown, drop] : {std::pair{8191U, 0U}, {8192U, 4096U}, {12287U, 4096U}})
        EXPECT_EQ(ShowData(shown, "x").drop, drop) << shown;
    EXPECT_EQ(shown_after({std::string(4096, 'a'), std::string(4096, 'b'), "\n"}), std::string(4096, 'b'));
}

TEST(LineBuffer, FindsTheLinesOfARemoteStation) {
    const std::string fifty(50, 'x');
    const std::string more = fifty + "x";
    const struct {
        const char* fault;
        std::string chunks;
        Texts requests;
        bool marked = false;
        bool overflowed = false;
        std::size_t left = 0;
    } table[] = {
        // Chunks with "|" between them; "^" stands for an ACK.
        {"a request byte by byte", "^|^|>|0|5|,|X|\r", {">05,X"}},
        {"a line without marker is taken for one", ">05,X\r^>05,Y\r>05,^Z^\r", {}},
        {"the CR is missing", "^^>05,X", {}, true, false, 7},
        {"what stands before the marker goes along", "a\rbc^^>5,X\rd", {">5,X"}, true, false, 1},
        {"what was gathered before a marker's chunk goes along", "junk|^^>05,X\r", {">05,X"}, true},
        {"the second request of a chunk is lost", "^^>1,A\r^^>2,B\r", {">1,A", ">2,B"}, true},
        {"a third ACK", "^^^>1,A\r", {">1,A"}, true},
        {"half a request stands in front of the next one", "^^>1,^^>2,B\r", {">2,B"}, true},
        {"50 characters are too many already", fifty + "|\r", {}},
        {"51 characters are not", more + "|y", {}, false, true, 1},
        {"a line end in the next chunk comes too late", "^|^|" + more + "|\r", {}, false, true},
        {"a marker's chunk asks for a hang-up", more + "|^^>1,A\r", {">1,A"}, true},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.fault);
        LineBuffer buffer;
        Texts requests;
        bool marked = false;
        bool overflowed = false;
        std::istringstream in(row.chunks);
        for (std::string chunk; std::getline(in, chunk, '|');) {
            std::replace(chunk.begin(), chunk.end(), '^', '\x06');
            const LineBuffer::Received one = buffer.receive(chunk);
            marked |= one.marked;
            overflowed |= one.overflowed;
            requests.insert(requests.end(), one.requests.begin(), one.requests.end());
        }
        EXPECT_EQ(requests, row.requests);
        EXPECT_EQ(marked, row.marked);
        EXPECT_EQ(overflowed, row.overflowed);
        EXPECT_EQ(buffer.size(), row.left);
    }
}

}  // namespace
}  // namespace ampdesk
