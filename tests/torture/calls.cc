#include "torture/calls.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

using torture::calls::Effect;
using torture::calls::Fault;
using torture::calls::Made;

bool watched = false;
Fault fault = {};
bool has_fault = false;
std::string struck; ///< name of the call that the fault met
std::vector<Made> made;

template <class Function>
Function* next(Function* /* the replaced one */, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// What a call is to do.
enum class Turn { normal, fail, half, half_and_die, die };

Turn turn_of(const char* name, const char* file = "")
{
    if (!watched)
        return Turn::normal;
    watched = false; // the list's own allocations make no calls, but stay on the safe side
    const std::size_t number = made.size();
    made.push_back({name, file ? file : ""});
    watched = true;
    if (!has_fault)
        return Turn::normal;
    if (number == fault.number)
        struck = name;
    if (number != fault.number && !(fault.from_then_on && number > fault.number && struck == name))
        return Turn::normal;
    switch (fault.effect) {
    case Effect::fails:
        errno = fault.error;
        return Turn::fail;
    case Effect::is_short:
        return Turn::half;
    case Effect::kills:
        return Turn::die;
    default:
        return Turn::half_and_die;
    }
}

[[noreturn]] void die()
{
    kill(getpid(), SIGKILL);
    std::abort();
}

/// Makes a call that moves no bytes. \param failed what it returns on failure
template <class Result, class Call>
Result make(const char* name, const char* file, Result failed, Call call)
{
    switch (turn_of(name, file)) {
    case Turn::fail:
        return failed;
    case Turn::die:
        die();
    case Turn::half_and_die:
        call();
        die();
    default:
        return call();
    }
}

/// Makes a call that moves bytes.
template <class Call>
ssize_t move_bytes(const char* name, std::size_t size, Call call)
{
    const std::size_t half = std::max<std::size_t>(size / 2, std::min<std::size_t>(size, 1));
    switch (turn_of(name)) {
    case Turn::fail:
        return -1;
    case Turn::die:
        die();
    case Turn::half:
        return call(half);
    case Turn::half_and_die:
        call(half);
        die();
    default:
        return call(size);
    }
}

/// The mode that follows the flags of a call that may create a file.
mode_t mode_behind(int flags, va_list arguments)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// The functions are declared by the system's headers; those of large files have the same type here.
extern "C" {

int open(const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_behind(flags, arguments);
    va_end(arguments);
    return make("open", name, -1, [&] { return next(&open, "open")(name, flags, mode); });
}

int open64(const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_behind(flags, arguments);
    va_end(arguments);
    return make("open", name, -1, [&] { return next(&open64, "open64")(name, flags, mode); });
}

int openat(int folder, const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_behind(flags, arguments);
    va_end(arguments);
    return make("open", name, -1, [&] { return next(&openat, "openat")(folder, name, flags, mode); });
}

FILE* fopen(const char* name, const char* mode)
{
    return make<FILE*>("open", name, nullptr, [&] { return next(&fopen, "fopen")(name, mode); });
}

FILE* fopen64(const char* name, const char* mode)
{
    return make<FILE*>("open", name, nullptr, [&] { return next(&fopen64, "fopen64")(name, mode); });
}

int socket(int domain, int type, int protocol) noexcept
{
    return make("socket", "", -1, [&] { return next(&socket, "socket")(domain, type, protocol); });
}

int connect(int fd, const sockaddr* address, socklen_t length)
{
    return make("connect", "", -1, [&] { return next(&connect, "connect")(fd, address, length); });
}

ssize_t read(int fd, void* bytes, std::size_t size)
{
    return move_bytes("read", size, [&](std::size_t count) { return next(&read, "read")(fd, bytes, count); });
}

ssize_t write(int fd, const void* bytes, std::size_t size)
{
    return move_bytes("write", size,
                      [&](std::size_t count) { return next(&write, "write")(fd, bytes, count); });
}

int fchmod(int fd, mode_t mode) noexcept
{
    return make("fchmod", "", -1, [&] { return next(&fchmod, "fchmod")(fd, mode); });
}

int fchown(int fd, uid_t owner, gid_t group) noexcept
{
    return make("fchown", "", -1, [&] { return next(&fchown, "fchown")(fd, owner, group); });
}

int fsync(int fd)
{
    return make("fsync", "", -1, [&] { return next(&fsync, "fsync")(fd); });
}

int rename(const char* from, const char* to) noexcept
{
    return make("rename", to, -1, [&] { return next(&rename, "rename")(from, to); });
}

int unlink(const char* name) noexcept
{
    return make("unlink", name, -1, [&] { return next(&unlink, "unlink")(name); });
}

int stat(const char* name, struct stat* status) noexcept
{
    return make("stat", name, -1, [&] { return next(&stat, "stat")(name, status); });
}

int access(const char* name, int mode) noexcept
{
    return make("access", name, -1, [&] { return next(&access, "access")(name, mode); });
}

ssize_t readlink(const char* name, char* target, std::size_t size) noexcept
{
    return make<ssize_t>("readlink", name, -1,
                         [&] { return next(&readlink, "readlink")(name, target, size); });
}

int dup(int fd) noexcept
{
    return make("dup", "", -1, [&] { return next(&dup, "dup")(fd); });
}

// Whatever close reports, the descriptor is closed.
int close(int fd)
{
    const Turn turn = turn_of("close");
    if (turn == Turn::die)
        die();
    const int error = errno;
    const int result = next(&close, "close")(fd);
    if (turn == Turn::half_and_die)
        die();
    if (turn != Turn::fail)
        return result;
    errno = error;
    return -1;
}

} // extern "C"

namespace torture::calls {

void begin(const Fault* what)
{
    made.clear();
    made.reserve(10000);
    struck.clear();
    has_fault = what;
    fault = what ? *what : Fault();
    watched = true;
}

std::vector<Made> end()
{
    watched = false;
    return std::move(made);
}

} // namespace torture::calls
