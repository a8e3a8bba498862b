// "rs485.dat" and amplifier files.
#include "buslink/settings_files.h"
#include "fuzz/memory_file.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    static fuzz::MemoryFile file;
    const auto read = read_rs485(file.put(fuzz::text_of(data, size)));
    if (!read)
        return 0;
    for (const std::string& text : {read->port_name, read->address}) {
        check(text.size() <= 40, "texts are short");
        for (const char c : text) check(c >= ' ' && c <= '~', "texts can be shown");
    }
    const auto settings = line_settings(*read);
    check(settings.has_value() == (read->baud_code >= 0 && read->baud_code <= 7), "eight baud codes");
    const auto address = unit_address(*read);
    check(!address || (*address >= 0 && *address <= 99), "an address that an amplifier can have");
    port_number(read->port_name);

    const std::string again = "RS-485\r\n" + read->port_name + "\r\n" + std::to_string(read->baud_code) +
                              "\r\n" + read->address + "\r\n";
    const auto second = read_rs485(file.put(again));
    check(second && line_settings(*second) == settings && unit_address(*second) == address,
          "what is written means the same");
    return 0;
}
