// What is said about the commands: the text of --help, and later the manual pages and the completion, all
// from the one description that each command gives of itself.
#ifndef KALV_TOOLS_PAGES_H
#define KALV_TOOLS_PAGES_H

#include "command.h"

namespace tool {

/// The list of commands.
std::string overview(const CommandList& commands);

/// The commands whose first word is `group`; empty where there is none.
std::string group_overview(const CommandList& commands, const std::string& group);

/// All that the commands say of themselves, as JSON: for the tests, which run every example.
std::string describe(const CommandList& commands);

/// The text of --help.
std::string help(const Command& command);

/// Writes the manual pages and the completion of the shell into a folder, as they are installed below "share".
void write_pages(const CommandList& commands, const std::string& folder);

} // namespace tool

#endif
