#pragma once

#include <functional>

namespace halvex {

class FormState;

// Lets window, timer and port events run until done() holds. Sleeps in a
// nested event loop that the form state wakes whenever one of its flags is
// written; it never spins.
void waitUntil(FormState& state, const std::function<bool()>& done);

// Lets the events that are already pending run once (a "DoEvents").
void letEventsRun();

}  // namespace halvex
