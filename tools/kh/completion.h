// What the shell offers while a command line is typed.
#ifndef KALV_TOOLS_COMPLETION_H
#define KALV_TOOLS_COMPLETION_H

#include "command.h"

namespace tool {

/// The function that bash calls; it asks `kh --complete`, so that all knowledge stays in the command.
std::string bash_completion();

/// What may stand at a place of a command line, each on a line behind a first one: "files" where the shell itself is
/// to offer file names, else "words".
/// \param before  the command line as far as the cursor
/// \param behind  what stands behind the cursor
/// \param current what the shell will replace; it begins a word behind ":" and "=", too
std::string complete(const CommandList& commands, const std::string& before, const std::string& behind,
                     const std::string& current);

} // namespace tool

#endif
