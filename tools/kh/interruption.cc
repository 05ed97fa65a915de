#include "interruption.h"

#include <csignal>
#include <initializer_list>

namespace tool {

namespace {

volatile std::sig_atomic_t came = 0;

extern "C" void take_interruption(int signal)
{
    came = signal;
}

} // namespace

void defer_interruptions()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
            continue;
        action.sa_handler = take_interruption;
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

bool is_interrupted()
{
    return came != 0;
}

void obey_interruption()
{
    if (came == 0)
        return;
    std::signal(came, SIG_DFL);
    std::raise(came);
}

} // namespace tool
