#include "files.h"

#include "condition.h"
#include "interruption.h"
#include "progress.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <iostream>
#include <map>
#include <mutex>
#include <new>
#include <thread>

namespace tool {

namespace {

/// More text than this of one file is shown while the file is still worked on.
constexpr std::size_t large = 1U << 16;

/// Puts what threads report side by side into the order of the names.
class Queue {
public:
    Queue(std::size_t size, const FileOptions& options, Output& output)
        : results_(size), options_(options), output_(output)
    {
    }

    /// Text of one name: shown at once if it is that name's turn.
    void write(std::size_t index, std::string& text, bool begins)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (index == turn_) {
            show(results_[index]);
            show_text(text, begins);
        } else {
            results_[index].begins = results_[index].begins || begins;
            results_[index].text += text;
        }
        text.clear();
    }

    void end(std::size_t index, ExitCode code, std::vector<std::string> messages)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        results_[index].code = code;
        results_[index].messages = std::move(messages);
        results_[index].ended = true;
        while (turn_ < results_.size() && results_[turn_].ended && !stopped_) {
            show(results_[turn_]);
            for (const std::string& message : results_[turn_].messages)
                output_.message(message);
            code_ = graver(code_, results_[turn_].code);
            stopped_ = results_[turn_].code >= options_.stops_at && !options_.keep_going;
            results_[turn_++] = Result();
        }
    }

    bool stopped() const { return stopped_; }
    ExitCode code() const { return code_; }
    std::mutex& mutex() { return mutex_; }

private:
    struct Result {
        std::string text;
        bool begins = false;
        bool ended = false;
        ExitCode code = done;
        std::vector<std::string> messages;
    };

    void show(Result& result)
    {
        show_text(result.text, result.begins);
        result.text.clear();
        result.begins = false;
    }

    void show_text(const std::string& text, bool begins)
    {
        if (stopped_)
            return;
        if (begins && output_.json())
            output_.begin_element();
        if (!text.empty())
            output_.write(text);
    }

    std::mutex mutex_;
    std::vector<Result> results_;
    std::size_t turn_ = 0;
    std::atomic<bool> stopped_{false};
    const FileOptions& options_;
    ExitCode code_ = done;
    Output& output_;
};

/// Does the work of one name, and turns what it throws into a report.
void work_on(Report& report, const std::function<ExitCode(Report&)>& work, ExitCode& code)
{
    try {
        code = work(report);
    } catch (const Failure& failure) {
        report.fail(failure);
    } catch (const std::bad_alloc&) {
        report.fail(Failure(cannot_read, Place{report.file(), 0, 0}, "memory ran out"));
    } catch (const std::exception& error) {
        report.fail(Failure(cannot_read, Place{report.file(), 0, 0}, error.what()));
    }
    code = graver(code, report.code());
    report.flush();
}

} // namespace

void FileOptions::declare_list(Command& command)
{
    command.flag("-k,--keep-going", keep_going, "go on with the next file after a failure");
    command.option("-j,--jobs", "N", &jobs, "work on N files at a time; 0: as many as there are processors");
    command.flag("--no-progress", no_progress, "show no progress bar");
}

void FileOptions::declare(Command& command)
{
    command
        .option(
            "-w,--where", "PATH=VALUE", &conditions,
            "take only files with that value; PATH!=VALUE without it, PATH with any; repeated: all must hold")
        .completion = Completion::path;
    declare_list(command);
}

void Report::line(const std::vector<std::string>& cells)
{
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0)
            text_ += '\t';
        text_ += escaped(cells[i]);
    }
    text_ += '\n';
    flush_if_large();
}

void Report::row(std::vector<std::string> cells)
{
    if (many_)
        cells.insert(cells.begin(), file_);
    line(cells);
}

void Report::text(std::string_view text)
{
    text_ += text;
    flush_if_large();
}

JsonWriter& Report::json()
{
    flush_if_large();
    return json_;
}

void Report::fail(const Failure& failure)
{
    code_ = graver(code_, failure.code());
    messages_.push_back(failure.message());
    // An object that has begun cannot become one that tells of a failure.
    if (!is_json_ || begun_ || !text_.empty())
        return;
    json_.begin_object().member("file", file_).key("error").begin_object();
    if (failure.place().line > 0)
        json_.member("line", failure.place().line);
    if (failure.place().column > 0)
        json_.member("column", failure.place().column);
    json_.member("code", static_cast<long>(failure.code())).member("text", failure.what()).end().end();
}

void Report::flush_if_large()
{
    if (text_.size() > large)
        flush();
}

void Report::flush()
{
    if (text_.empty())
        return;
    flush_(text_, !begun_);
    begun_ = true;
}

std::vector<Column> columns_of(const std::vector<std::string>& files, std::vector<Column> columns)
{
    if (files.size() > 1)
        columns.insert(columns.begin(), {"file", Style::name});
    return columns;
}

std::vector<std::string> expand_list(const std::vector<std::string>& arguments)
{
    std::vector<std::string> names;
    for (const std::string& argument : arguments) {
        if (argument != "-") {
            names.push_back(argument);
            continue;
        }
        for (std::string line; std::getline(std::cin, line);) {
            if (!line.empty())
                names.push_back(line);
        }
        if (std::ferror(stdin) != 0)
            throw Failure(cannot_read, "the list on standard input cannot be read");
    }
    return names;
}

ExitCode for_each_name(const std::vector<std::string>& names, const FileOptions& options, Output& output,
                       const std::function<ExitCode(Report&)>& work)
{
    if (options.jobs < 0)
        throw Failure(usage, "no negative number of files can be worked on");
    Queue queue(names.size(), options, output);
    Progress progress(names, queue.mutex(), !options.no_progress);
    output.before_printing = [&] { progress.make_room(); };
    std::atomic<std::size_t> next{0};
    const auto work_on_names = [&] {
        for (std::size_t i = next++; i < names.size() && !queue.stopped() && !is_interrupted(); i = next++) {
            progress.begin(i);
            Report report(names[i], output.json(), names.size() > 1,
                          [&](std::string& text, bool begins) { queue.write(i, text, begins); });
            ExitCode code = done;
            work_on(report, work, code);
            queue.end(i, code, report.messages());
            progress.end();
        }
    };

    const std::size_t asked = options.jobs > 0 ? static_cast<std::size_t>(options.jobs)
                                               : std::max(std::thread::hardware_concurrency(), 1U);
    const std::size_t count = std::min({asked, names.size(), std::size_t{64}});
    std::vector<std::thread> threads;
    for (std::size_t i = 1; i < count; ++i)
        threads.emplace_back(work_on_names);
    work_on_names();
    for (std::thread& thread : threads)
        thread.join();
    progress.stop();
    output.before_printing = nullptr;
    const bool arrived = output.finish();
    obey_interruption();
    if (!arrived)
        throw Failure(cannot_write, "standard output cannot be written");
    return queue.code();
}

ExitCode for_each_file(const std::vector<std::string>& arguments, const FileOptions& options, Output& output,
                       const std::function<ExitCode(Document&, Report&)>& work, Document::Missing missing)
{
    const std::vector<Condition> conditions = parse_conditions(options.conditions);
    return for_each_name(expand_list(arguments), options, output, [&](Report& report) {
        Document document(report.file(), missing);
        return meets(document, conditions) ? work(document, report) : done;
    });
}

} // namespace tool
