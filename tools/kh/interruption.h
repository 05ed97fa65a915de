// Interruptions from the keyboard or the system, which must not leave unfinished files behind.
#ifndef KALV_TOOLS_INTERRUPTION_H
#define KALV_TOOLS_INTERRUPTION_H

namespace tool {

/// From now on an interruption only marks that it came; a second one ends the process at once. Signals that the caller
/// has the process ignore stay ignored.
void defer_interruptions();

bool is_interrupted();

/// Ends the process by the interruption that came, if any.
void obey_interruption();

} // namespace tool

#endif
