// Finds the station's command frames in whatever comes down the line: in pieces, behind noise, after
// a frame that broke off.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "buslink/wire/crc16.h"

namespace ampdesk::demo {

struct Request {
    bool text = false;  // came in a text frame
    int address = 0;
    std::string command;
    bool operator==(const Request&) const = default;
};

class RequestFinder {
  public:
    explicit RequestFinder(const Crc16& crc) : crc_(crc) {}

    // Takes the next bytes and returns the requests that are whole now, in their order. A frame with
    // a wrong CRC or checksum is noise. Holds no more than one unfinished frame of each kind.
    std::vector<Request> feed(std::string_view bytes);

  private:
    // What starts at one byte: a whole frame of that length, or perhaps one that is still coming.
    struct Finding {
        std::size_t length = 0;
        bool growing = false;
        Request request{};
    };
    Finding look(std::string_view bytes) const;
    Finding look_binary(std::string_view bytes) const;
    static Finding look_text(std::string_view bytes);

    const Crc16& crc_;
    std::string buffer_;
};

}  // namespace ampdesk::demo
