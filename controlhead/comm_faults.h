// What a head does when an exchange or a screen fails.
#pragma once

#include <cstdint>

#include "controlhead/head.h"
#include "platform/run_time_error.h"

namespace ampdesk {

// Paints the communication error screen: kind 1 is the RS-485 bus, 2 a modem, any other value
// keeps the last kind.
void DispCommError(Head& head, std::int16_t kind);

// Counts the failure: of a request after its second try, or of a tick that could not draw a value. The first
// two in a row pass silently; from the third on an amplifier that did not answer gets the communication error
// screen, any other error a message box, once a screen and until a tick has come to its end without one.
void Error_handler_local(Head& head, const RunTimeError& error);

// Runs the action; a run-time error in it ends in Error_handler_local. Returns whether the action
// came to its end.
template <class Action>
bool guarded(Head& head, Action action) {
    try {
        action();
        return true;
    } catch (const RunTimeError& error) {
        Error_handler_local(head, error);
        return false;
    }
}

// Runs one statement; a run-time error in it is dropped, as the next tick meets it too. Returns whether the
// statement came to its end.
template <class Statement>
bool attempted(Statement statement) {
    try {
        statement();
        return true;
    } catch (const RunTimeError&) {
        return false;
    }
}

}  // namespace ampdesk
