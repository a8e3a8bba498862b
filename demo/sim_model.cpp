#include "demo/sim_model.h"

namespace ampdesk::demo {

std::vector<int> band_numbers(std::string_view model_name) {
    const std::string_view word = model_name.substr(0, model_name.find(' '));
    if (word == "C/KU/X")
        return {0, 1, 2};
    if (word == "C/KU" || word == "KU/K" || word == "KU/DBS")
        return {0, 2};
    return {0};
}

}  // namespace ampdesk::demo
