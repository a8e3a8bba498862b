// Gathers received text into lines and finds the requests of a remote station among them. Bounded
// whatever arrives: text without line ends is thrown away.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ampdesk {

class LineBuffer {
  public:
    // Two ACK characters stand before a remote station's request.
    static constexpr std::string_view k_remote_marker = "\x06\x06";

    // More than this without a line end when the next chunk comes: the call is broken.
    static constexpr std::size_t k_limit = 50;
    // The same, asked once more when the wait before hanging up is over.
    static constexpr std::size_t k_later_limit = 100;

    struct Received {
        bool marked = false;                // the chunk holds the marker: throw away what waits in the port
        bool overflowed = false;            // the buffer held too much and was emptied: hang up
        bool remote_request = false;        // a line of this chunk holds the marker
        std::vector<std::string> requests;  // what stands after its last marker, a line each
    };

    // One chunk as it was read from the port. A carriage return ends a line.
    Received receive(std::string_view chunk);

    // Empties the buffer when it holds more than k_later_limit; true when it did.
    bool overflows_still();

    std::size_t size() const { return text_.size(); }
    void clear() { text_.clear(); }

  private:
    std::string text_;
};

}  // namespace ampdesk
