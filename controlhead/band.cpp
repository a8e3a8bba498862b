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

bool is_number(const std::string& text) {
    return text.find_first_of("+-.0123456789") == 0;
}

void use_band(Head& head) {
    const double value = lenient_number(head.band.band_reply);
    if (value < -0.5 || value > 2.5)  // halves round to even ones
        return head.tell("Read Band Error");
    head.band.band_index = round_to_int16(value);
    if (const Band* band = band_of(head.band.band_index, head.band.band_count)) {
        head.band.band_name = band->name;
        head.band.fwd_label = band->fwd_label;
    }
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

void find_band(Head& head) {
    constexpr int k_reads = 4;
    if (head.band.reads_left == 0 || !head.wants({Request::Kind::band}))
        head.band.reads_left = k_reads;
    head.want({Request::Kind::band});
}

// Nothing protects a text reply: with one digit damaged it names another band. What would change the
// label has to come twice in a row, and be a number: any other text would count as band 0.
void take_band(Head& head, const Reading& reading) {
    BandState& band = head.band;
    if (band.reads_left == 0)
        return;
    const std::string* text = reading.get<std::string>();
    if (text == nullptr) {
        band.reads_left = 0;  // the label that stands is the best that is known
        return;
    }
    const std::string before = std::exchange(band.band_reply, *text);
    const bool known = !band.band_name.empty();
    const bool stands = known && is_number(*text) && lenient_number(*text) == band.band_index;
    const bool twice = is_number(*text) && *text == before;
    --band.reads_left;
    if (!stands && !twice && band.reads_left > 0)
        return head.want({Request::Kind::band});
    if (stands || twice || !known)
        use_band(head);
    band.reads_left = 0;
}

std::string next_band_command(const Head& head) {
    if (head.band.band_count < 1 || head.band.band_count > 4)
        return {};
    const int below = head.band.band_count == 1 ? head.band.band_index - 1 : 0;
    return set_band_command(head.band.band_index == 0 ? 2 : below);
}

}  // namespace ampdesk
