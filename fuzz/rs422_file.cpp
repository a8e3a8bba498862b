// "rs422.dat".
#include "buslink/settings_files.h"
#include "fuzz/memory_file.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    static fuzz::MemoryFile file;
    const auto read = read_rs422(file.put(fuzz::text_of(data, size)));
    if (!read)
        return 0;
    const auto settings = line_settings(*read);
    if (settings) {
        check(code_of_baud(settings->baud) == read->baud_code, "a baud rate that has a code");
        check(settings->data_bits >= 5 && settings->data_bits <= 8, "5 to 8 data bits");
        check(settings->stop_bits == 1 || settings->stop_bits == 2, "1 or 2 stop bits");
        check(!settings_string(*settings).empty(), "settings in words");
    }
    std::string again = "RS-422\r\n" + read->port_name;
    for (const int code : {read->baud_code, read->data_bits_code, read->parity_code, read->stop_bits_code})
        again += "\r\n" + std::to_string(code);
    const auto second = read_rs422(file.put(again));
    const auto settings_again = second ? line_settings(*second) : std::nullopt;
    check(second && settings.has_value() == settings_again.has_value() &&
              (!settings || settings_string(*settings) == settings_string(*settings_again)),
          "what is written means the same");
    return 0;
}
