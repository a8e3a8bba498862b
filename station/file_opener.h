// Opens amplifiers from their files, one after another: which checks a file passes before its control head
// opens, and in which words a failure is told.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "station/opening.h"

namespace ampdesk {

class Station;

class FileOpener {
  public:
    FileOpener(Station& station, BusLink& bus, Operator& person)
        : station_(station), bus_(bus), operator_(person) {}

    // As the start of the program does: nobody is asked, and a failure names the file. `name` is what it is
    // called, `path` where it stands; a file that is not there is told, too.
    void open_automatically(const std::string& name, const std::string& path);

    // As Amplifier > Open does.
    void open(const std::string& path);

    // What has not been opened is not opened any more.
    void cancel();

    bool busy() const { return opening_ || !waiting_.empty(); }

    // To be called now and then: begins the next file when the one before has come to its end.
    void step();

    // The last file has come to its end.
    std::function<void()> on_idle;

  private:
    // What is said when a file does not pass, and whether somebody is there to be asked.
    struct Texts {
        bool interactive = false;
        std::string corrupted;
        std::string address_used;
        std::string port_failed;
        std::string probe_failed;
        std::string no_serial_number;
        std::string no_identity;
    };
    struct File {
        std::string path;
        Texts texts;
        std::string missing;  // told when the file is not there
    };
    void begin(const File& file);
    bool open_line(const struct Rs485File& file, const Texts& texts);
    void opened(const Texts& texts);
    void tell_outcome(const Opening& opening, const Texts& texts);
    void end();
    void tell_idle();

    Station& station_;
    BusLink& bus_;
    Operator& operator_;
    std::deque<File> waiting_;
    std::unique_ptr<Opening> opening_;  // that is under way
    bool over_ = false;                 // the opening has come to its end and goes with the next step
};

}  // namespace ampdesk
