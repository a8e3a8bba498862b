// Failures that end a procedure early and reach the operator by number or text. Expected
// outcomes (a time-out, a NAK, a bad file) are results, not exceptions.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace ampdesk {

class RunTimeError : public std::runtime_error {
  public:
    RunTimeError(int number, const std::string& text, std::string detail = {})
        : std::runtime_error(text), number_(number), detail_(std::move(detail)) {}
    int number() const { return number_; }

    // One line below the text: what it is about, or what helps. May be empty.
    const std::string& detail() const { return detail_; }

    static RunTimeError overflow(const std::string& detail = {}) { return {6, "Overflow", detail}; }
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
    std::string detail_;
};

}  // namespace ampdesk
