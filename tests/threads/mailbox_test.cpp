// A mailbox, two lines and the wait that they end, between real threads.
#include "platform/mailbox.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>
#include <utility>

#include "platform/line_wait.h"
#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "tests/platform/far_end.h"

namespace ampdesk {
namespace {

constexpr int k_steps = 5'000;  // of each sender
constexpr std::chrono::seconds k_patience{30};

struct Letter {
    std::size_t sender = 0;
    bool keyed = false;
    int step = 0;
};

struct Sender {
    FarEnd far;
    std::vector<int> letters;   // the steps of those without a key
    int newest = 0;             // the last step of those with one
    std::atomic<int> seen = 0;  // by the reader: the last step
    std::atomic<std::size_t> bytes = 0;
};

// Fault: a value is lost, doubled or comes behind a newer one of its sender; a letter or a byte that comes
// between two waits, or at the end of one, is slept over. In every other step a sender goes on only when all
// is seen, so that whatever is missed is waited for in vain.
TEST(MailboxThreads, EveryValueArrivesAndWakesItsReader) {
    SystemClock clock;
    const std::unique_ptr<LineWait> line_wait = make_line_wait(clock);
    Mailbox<Letter, std::size_t> box;
    box.on_first = [&] { line_wait->wake(); };
    std::array<Sender, 2> senders;
    std::array<PosixSerialPort, 2> lines{PosixSerialPort(clock), PosixSerialPort(clock)};
    std::atomic<bool> stop = false;
    std::vector<std::jthread> threads;
    for (std::size_t number = 0; number < senders.size(); ++number) {
        ASSERT_TRUE(lines[number].open({senders[number].far.device()}).ok());
        threads.emplace_back([&, number] {
            Sender& me = senders[number];
            std::minstd_rand random(static_cast<unsigned>(number) + 1);
            std::size_t bytes = 0;
            for (int step = 1, sent = 0; step <= k_steps && !stop; ++step) {
                const auto what = step == k_steps ? 6 : (random() >> 8U) % 8;
                if (what == 0) {
                    me.far.send("x");
                    ++bytes;
                } else if (what < 4) {
                    box.put_newest(number, {number, true, sent = me.newest = step});
                } else {
                    box.put({number, false, sent = step});
                    me.letters.push_back(step);
                }
                while (what % 2 == 0 && !stop && (me.seen < sent || me.bytes < bytes))
                    std::this_thread::yield();
            }
        });
    }

    std::array<std::vector<int>, 2> letters;
    std::array<int, 2> newest{};
    const std::array<SerialPort*, 2> ports{&lines[0], &lines[1]};
    while (!stop && (senders[0].seen < k_steps || senders[1].seen < k_steps)) {
        const Instant limit = clock.now() + k_patience;
        line_wait->wait(ports, limit);
        stop = clock.now() >= limit;
        for (std::size_t i = 0; i < ports.size(); ++i) senders[i].bytes += ports[i]->read_waiting().size();
        for (const Letter& letter : box.take_all()) {
            Sender& sender = senders[letter.sender];
            if (letter.keyed)
                EXPECT_GT(letter.step, std::exchange(newest[letter.sender], letter.step));
            else
                letters[letter.sender].push_back(letter.step);
            sender.seen = std::max<int>(sender.seen, letter.step);
        }
    }
    threads.clear();  // when they have ended
    EXPECT_FALSE(stop) << "asleep";
    for (std::size_t i = 0; i < senders.size(); ++i) {
        EXPECT_EQ(letters[i], senders[i].letters);
        EXPECT_EQ(newest[i], senders[i].newest);
    }
}

}  // namespace
}  // namespace ampdesk
