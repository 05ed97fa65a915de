// kh: looks into product files, changes and checks them, from the shell.
#include "command_line.h"

#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

/// Where a standard stream is closed, a file that is opened later would take its number, and what is printed would go
/// into that file. A descriptor that cannot be used that way takes its place, so that using it fails.
void occupy_closed_streams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0)
            _exit(4);
    }
}

} // namespace

int main(int argc, char** argv)
{
    occupy_closed_streams();
    return tool::run_command_line(std::vector<std::string>(argv + 1, argv + argc));
}
