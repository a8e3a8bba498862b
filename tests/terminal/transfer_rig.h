// A sender and a receiver face to face over a line that a test may spoil, on a clock that only moves
// while nothing is under way.
#pragma once

#include <functional>
#include <string>

#include "terminal/transfer.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {

class TransferRig {
  public:
    // Changes what is on the line, given its bytes and where in the whole stream of that direction
    // they begin.
    using Spoil = std::function<void(std::string& bytes, std::size_t offset)>;

    struct Direction {
        Spoil spoil;
        std::string stream;  // all that was sent, before it was spoilt
    };

    ManualClock clock;
    Direction forth;  // from the sender
    Direction back;
    std::size_t piece = std::string::npos;  // bytes a feed

    // Until both have ended, or a quarter of an hour has passed on the clock.
    void run(Transfer& sender, Transfer& receiver) {
        const Instant limit = clock.now() + std::chrono::minutes(15);
        while (clock.now() < limit) {
            const bool moved = carry(sender, receiver, forth) | carry(receiver, sender, back);
            if (!moved && sender.finished() && receiver.finished())
                return;
            if (moved)
                continue;
            clock.advance(std::chrono::milliseconds(50));
            sender.tick(clock.now());
            receiver.tick(clock.now());
        }
    }

  private:
    bool carry(Transfer& from, Transfer& to, Direction& direction) const {
        std::string bytes = from.take_output(512);
        const bool moved = !bytes.empty();
        const std::size_t offset = direction.stream.size();
        direction.stream += bytes;
        if (direction.spoil)
            direction.spoil(bytes, offset);
        for (std::size_t at = 0; at < bytes.size(); at += std::min(piece, bytes.size()))
            to.feed(std::string_view(bytes).substr(at, piece), clock.now());
        return moved;
    }
};

// `size` bytes that repeat nowhere near, with every control character of the protocol among them.
inline std::string sample_file(std::size_t size) {
    std::string bytes;
    unsigned value = 1;
    for (std::size_t i = 0; i < size; ++i) {
        value = value * 1103515245U + 12345U;
        bytes += static_cast<char>(value >> 16U);
    }
    return bytes;
}

// As a receiver keeps it.
inline std::string filled_up(std::string bytes, std::size_t block = 128) {
    bytes.resize((bytes.size() + block - 1) / block * block, '\x1A');
    return bytes;
}

}  // namespace ampdesk
