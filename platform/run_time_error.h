// Failures that end a procedure early and reach the operator by number or text. Expected
// outcomes (a time-out, a NAK, a bad file) are results, not exceptions.
#pragma once

#include <stdexcept>
#include <string>

namespace ampdesk {

class RunTimeError : public std::runtime_error {
  public:
    RunTimeError(int number, const std::string& text) : std::runtime_error(text), number_(number) {}
    int number() const { return number_; }

    static RunTimeError overflow() { return {6, "Overflow"}; }
    static RunTimeError type_mismatch() { return {13, "Type mismatch"}; }
    static RunTimeError file_not_found() { return {53, "File not found"}; }
    static RunTimeError disk_full() { return {61, "Disk full"}; }
    static RunTimeError input_past_end() { return {62, "Input past end of file"}; }
    static RunTimeError permission_denied() { return {70, "Permission denied"}; }
    static RunTimeError path_not_found() { return {76, "Path not found"}; }
    static RunTimeError device_io() { return {57, "Device I/O error"}; }
    static RunTimeError no_answer() { return {k_no_answer, "The amplifier did not answer"}; }

    // The program's own number for an amplifier that did not answer a read.
    static constexpr int k_no_answer = 100;

  private:
    int number_;
};

}  // namespace ampdesk
