// The files that amplifiers are opened from, "com" + number + ".dat": where they stand, what they lead to,
// how they are written.
#pragma once

#include <optional>
#include <string>

#include "buslink/settings_files.h"
#include "controlhead/services.h"

namespace ampdesk {

class AmplifierFiles {
  public:
    explicit AmplifierFiles(const HeadServices& services) : services_(services) {}

    // "com1234.dat"
    static std::string name_of(const std::string& number);

    // A name as it stands in the program's folder; a full path stays as it is.
    std::string path_of(const std::string& name) const;

    // Why whoever opens that file next does not end up at that address on the line in use: "is damaged",
    // "holds address 7" …; nothing when he does, or when there is no such file.
    std::optional<std::string> stale_state(const std::string& name, int address) const;
    bool exists(const std::string& name) const;

    // The file of a new amplifier: a copy of "rs485.dat" where that tells this address on the line in use,
    // else written anew. Throws what writing throws.
    void make(int address, const std::string& name) const;

    // With the settings of the line that is open. Without one it throws: a file that is there stays as it is,
    // as what else it could be given is a guess.
    void write(int address, const std::string& path) const;

    // As far as an amplifier file tells a line.
    static bool same_line(const LineSettings& a, const LineSettings& b);

  private:
    bool leads_to(const Rs485File& file, int address) const;

    const HeadServices& services_;
};

}  // namespace ampdesk
