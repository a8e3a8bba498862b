#include "controlhead/band.h"

#include <string>
#include <utility>

#include "amplifier/commands.h"
#include "platform/numbers.h"

namespace ampdesk {

namespace {

struct Band {
    const char* name;
    const char* fwd_label;
};

// Nothing for a band 2 of an amplifier whose bands are not known.
const Band* band_of(std::int16_t number, std::int16_t capability) {
    static constexpr Band k_ku{"KU", "Ku Fwd Pwr "};
    static constexpr Band k_x{"X", "X Fwd Pwr  "};
    static constexpr Band k_c{"C", "C Fwd Pwr  "};
    static constexpr Band k_k{"K", "K Fwd Pwr  "};
    static constexpr Band k_dbs{"DBS", "DBS Fwd Pw "};
    if (number < 2)
        return number == 0 ? &k_ku : &k_x;
    switch (capability) {
        case 1:
        case 2:
            return &k_c;
        case 3:
            return &k_k;
        case 4:
            return &k_dbs;
        default:
            return nullptr;
    }
}

// Nothing protects a text reply: with one digit damaged it names another band. What would change the
// label has to come twice in a row, and be a number: any other text would count as band 0. False when
// none of the reads brought that.
bool read_band(Head& head) {
    constexpr int k_reads = 4;
    std::string before;
    for (int read = 0; read < k_reads; ++read) {
        before = std::exchange(head.band.band_reply, head.amplifier.read_item(k_band_word));
        if (head.band.band_reply.find_first_of("+-.0123456789") != 0)
            continue;
        const bool stands =
            !head.band.band_name.empty() && lenient_number(head.band.band_reply) == head.band.band_index;
        if (stands || head.band.band_reply == before)
            return true;
    }
    return false;
}

}  // namespace

std::int16_t band_capability(const HeadOptions& options, std::string_view model) {
    static constexpr std::string_view k_bands[] = {"C/KU/X", "C/KU", "KU/K", "KU/DBS"};
    for (std::int16_t i = 0; i < 4; ++i)
        if (model == k_bands[i])
            return static_cast<std::int16_t>(i + 1);
    const auto configured = options.model_capabilities.find(std::string(model));
    return configured == options.model_capabilities.end() ? std::int16_t{0}
                                                          : static_cast<std::int16_t>(configured->second);
}

std::int16_t find_band(Head& head) {
    if (!read_band(head) && !head.band.band_name.empty())
        return 1;  // the label that stands is the best that is known
    const std::int16_t number = round_to_int16(lenient_number(head.band.band_reply));
    if (number < 0 || number > 2) {
        head.tell("Read Band Error");
        return 0;
    }
    head.band.band_index = number;
    if (const Band* band = band_of(number, head.band.band_count)) {
        head.band.band_name = band->name;
        head.band.fwd_label = band->fwd_label;
    }
    return 1;
}

std::string next_band_command(const Head& head) {
    if (head.band.band_count < 1 || head.band.band_count > 4)
        return {};
    const int below = head.band.band_count == 1 ? head.band.band_index - 1 : 0;
    return set_band_command(head.band.band_index == 0 ? 2 : below);
}

}  // namespace ampdesk
