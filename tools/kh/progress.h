// A progress bar on the terminal, for work that takes long.
#ifndef KALV_TOOLS_PROGRESS_H
#define KALV_TOOLS_PROGRESS_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tool {

/// Shows itself after a second, and only where standard error is a terminal.
class Progress {
public:
    /// \param printing guards what is printed; it is held when make_room() is called
    Progress(const std::vector<std::string>& names, std::mutex& printing, bool wanted);
    ~Progress() { stop(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void begin(std::size_t index);
    void end();

    /// Wipes the bar away, before something else is printed; it comes back by itself.
    void make_room();
    void stop();

private:
    void run();
    void draw();

    const std::vector<std::string>& names_;
    std::mutex& printing_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::chrono::steady_clock::time_point start_;
    std::size_t current_ = 0;
    std::size_t ended_ = 0;
    bool shown_ = false;
    bool stopping_ = false;
    std::thread thread_;
};

} // namespace tool

#endif
