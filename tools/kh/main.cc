// kh: looks into product files, changes and checks them, from the shell.
#include "command_line.h"

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    return tool::run_command_line(std::vector<std::string>(argv + 1, argv + argc));
}
