// "ampdesk.dat", the settings of the terminal's port.
#include "terminal/terminal_settings.h"

#include "fuzz/memory_file.h"
#include "platform/run_time_error.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    static fuzz::MemoryFile file;
    const std::string path = file.put(fuzz::text_of(data, size));
    TerminalSettings read;
    try {
        read = read_terminal_settings(path);
    } catch (const RunTimeError& error) {
        check(error.number() == 321, "a file of another kind, and nothing else, is refused");
        return 0;
    }
    check(!read.port || (*read.port >= 1 && *read.port <= 4), "COM1 to COM4");
    check(code_of_baud(read.baud).has_value(), "a baud rate that is offered");
    check(read.data_bits >= 5 && read.data_bits <= 8, "5 to 8 data bits");
    check(read.parity_code >= 0 && read.parity_code <= 2, "a parity");
    check(read.stop_bits == 1 || read.stop_bits == 2, "1 or 2 stop bits");
    check(read.handshake >= Handshake::none && read.handshake <= Handshake::rts_cts, "a handshake");
    port_settings(read, PortMap{});

    std::string again = "ampdesk settings\r\n";
    for (const int value : {read.port.value_or(0), read.baud, read.data_bits, read.parity_code,
                            read.stop_bits, static_cast<int>(read.handshake), static_cast<int>(read.echo)})
        again += std::to_string(value) + "\r\n";
    check(read_terminal_settings(file.put(again)) == read, "what is written reads the same");
    return 0;
}
