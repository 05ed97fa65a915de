#include "progress.h"

#include "output.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 1000ms;
constexpr auto interval = 100ms;
constexpr std::size_t bar_width = 30;

std::size_t terminal_width()
{
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

Progress::Progress(const std::vector<std::string>& names, std::mutex& printing, bool wanted)
    : names_(names), printing_(printing), start_(std::chrono::steady_clock::now())
{
    if (wanted && is_terminal(STDERR_FILENO))
        thread_ = std::thread([this] { run(); });
}

void Progress::begin(std::size_t index)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    current_ = std::max(current_, index);
}

void Progress::end()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    ++ended_;
}

void Progress::make_room()
{
    if (shown_)
        std::fputs("\r\x1b[K", stderr);
    shown_ = false;
}

void Progress::stop()
{
    if (!thread_.joinable())
        return;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
    make_room();
}

void Progress::run()
{
    std::unique_lock<std::mutex> lock(mutex_);
    auto wait = patience;
    while (!changed_.wait_for(lock, wait, [this] { return stopping_; })) {
        wait = interval;
        lock.unlock();
        draw();
        lock.lock();
    }
}

void Progress::draw()
{
    const std::lock_guard<std::mutex> printing(printing_);
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::size_t filled = bar_width * ended_ / std::max<std::size_t>(names_.size(), 1);
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_);
    std::string line = '[' + std::string(filled, '#') + std::string(bar_width - filled, '.') + "] " +
                       std::to_string(ended_) + '/' + std::to_string(names_.size()) + ' ' +
                       std::to_string(seconds.count()) + " s ";
    const std::size_t room = terminal_width() - 1;
    const std::string& name = names_[current_];
    line += name.size() + line.size() <= room
                ? name
                : name.substr(name.size() - std::min(name.size(), room - std::min(room, line.size())));
    std::fprintf(stderr, "\r%s\x1b[K", line.substr(0, room).c_str());
    shown_ = true;
}

} // namespace tool
