#pragma once

#include <chrono>

namespace zib {

/// Turns the program away from a desktop's message bus that takes connections and answers none, as a stopped
/// one does: the toolkit would wait for it for ever, before the first window and deaf to every signal.
/// Nor does it wait where there is no bus, nor a program that could start one: the bus library would copy the
/// whole process to look for that program. Without the bus the program lacks what others do through it, such
/// as reading the screen aloud.
///
/// Changes the environment, for programs that are started later too: before any other thread is made.
/// @param patience for the bus; one that answers takes less than a millisecond, on a busy machine some.
void leaveMuteSessionBus(std::chrono::milliseconds patience = std::chrono::seconds(5));

} // namespace zib
