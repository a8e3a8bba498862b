// A mailbox and the wait that it ends, between real threads.
#include "platform/mailbox.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <thread>

#include "platform/line_wait.h"
#include "platform/posix/system_clock.h"

namespace ampdesk {
namespace {

constexpr int k_senders = 3;
constexpr int k_steps = 20'000;  // of each sender
constexpr int k_keys = 4;        // of each sender
constexpr std::chrono::seconds k_patience{30};

struct Letter {
    int sender = 0;
    int key = -1;  // none
    int step = 0;
    std::string text;  // on the heap, so that a torn value shows
};

std::string text_of(int sender, int key, int step) {
    return "sender " + std::to_string(sender) + " key " + std::to_string(key) + " step " +
           std::to_string(step);
}

// Fault: a value is lost, doubled, torn or comes behind a newer one of its sender or key; the reader sleeps
// though something waits.
TEST(MailboxThreads, EveryValueArrivesAndWakesItsReader) {
    SystemClock clock;
    const std::unique_ptr<LineWait> line_wait = make_line_wait(clock);
    Mailbox<Letter, int> box;
    box.on_first = [&] { line_wait->wake(); };

    // The last step of each key, as sent; read when the senders have ended.
    std::array<std::array<int, k_keys>, k_senders> last_sent{};
    std::array<int, k_senders> plain_sent{};
    std::vector<std::jthread> senders;
    for (int sender = 0; sender < k_senders; ++sender) {
        senders.emplace_back([&, sender] {
            const auto me = static_cast<std::size_t>(sender);
            std::minstd_rand random(static_cast<unsigned>(sender) + 1);
            for (int step = 1; step <= k_steps; ++step) {
                const int key = static_cast<int>(random() >> 8U) % (2 * k_keys) - k_keys;
                if (key < 0) {
                    box.put({sender, -1, step, text_of(sender, -1, step)});
                    ++plain_sent[me];
                } else {
                    box.put_newest(sender * k_keys + key, {sender, key, step, text_of(sender, key, step)});
                    last_sent[me][static_cast<std::size_t>(key)] = step;
                }
                if (random() % 256 < 8)
                    std::this_thread::yield();
            }
            box.put({sender, -1, k_steps + 1, text_of(sender, -1, k_steps + 1)});
        });
    }

    std::array<std::array<int, k_keys>, k_senders> last_taken{};
    std::array<int, k_senders> plain_taken{};
    std::array<int, k_senders> last_plain{};
    int ended = 0;
    bool in_time = true;
    while (ended < k_senders && in_time) {
        const Instant limit = clock.now() + k_patience;
        line_wait->wait({}, limit);
        in_time = clock.now() < limit;
        for (const Letter& letter : box.take_all()) {
            const auto sender = static_cast<std::size_t>(letter.sender);
            ASSERT_EQ(letter.text, text_of(letter.sender, letter.key, letter.step));
            int& before = letter.key < 0 ? last_plain[sender]
                                         : last_taken[sender][static_cast<std::size_t>(letter.key)];
            ASSERT_GT(letter.step, before);
            before = letter.step;
            if (letter.step > k_steps)
                ++ended;
            else if (letter.key < 0)
                ++plain_taken[sender];
        }
    }
    senders.clear();  // when they have ended
    EXPECT_TRUE(in_time) << "nobody woke the reader";
    EXPECT_EQ(plain_taken, plain_sent);
    EXPECT_EQ(last_taken, last_sent);
}

}  // namespace
}  // namespace ampdesk
