// From the words of the command line to a command that runs, and to the exit code.
#ifndef KALV_TOOLS_COMMAND_LINE_H
#define KALV_TOOLS_COMMAND_LINE_H

#include <string>
#include <vector>

namespace tool {

int run_command_line(std::vector<std::string> words);

} // namespace tool

#endif
