// What an amplifier says of itself: its serial number and its model. They become file names.
#include "buslink/identity.h"
#include "fuzz/check.h"
#include "platform/run_time_error.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    const std::string_view reply = fuzz::text_of(data, size);
    try {
        const std::string number = amplifier_number(serial_number_of(reply));
        check(number.find_first_not_of("-0123456789") == std::string::npos && number.size() <= 11,
              "a number that can stand in a file name");
    } catch (const RunTimeError& error) {
        check(error.number() == RunTimeError::overflow().number(), "a number too large, nothing else");
    }
    const std::string model = model_of(reply);
    check(model.find(' ') == std::string::npos, "a model is one word");
    check(reply.find(model) != std::string_view::npos, "the amplifier has said it");
    return 0;
}
