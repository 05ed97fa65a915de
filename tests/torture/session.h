// A session: a row of calls of the library whose results are written down, so that the same row under faults
// can be held against it.
#ifndef KALV_TORTURE_SESSION_H
#define KALV_TORTURE_SESSION_H

#include "torture/harness.h"
#include "torture/memory.h"

#include <kalv/KalvError.h>
#include <kalv/file_handling.h>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace torture {

/// The calls of one step, and what they deliver.
class Call {
public:
    explicit Call(std::set<std::string>* names) : names_(names) {}

    /// Calls a function whose last argument is the status word.
    template <class Function, class... Arguments>
    auto operator()(Function* function, Arguments... arguments)
    {
        return plain(function, arguments..., &status);
    }

    /// Calls a function without a status word.
    template <class Function, class... Arguments>
    auto plain(Function* function, Arguments... arguments)
    {
        remember(reinterpret_cast<const void*>(function));
        const memory::Inside inside;
        return function(arguments...);
    }

    /// Runs what uses the object interface; an exception becomes a status.
    template <class Body>
    void object(Body body)
    {
        std::vector<long> codes;
        codes.reserve(1);
        try {
            const memory::Inside inside;
            body();
        } catch (const KALV::KalvError& error) {
            error.getCodes(codes);
            status = codes.front();
        } catch (const std::bad_alloc&) {
            status = KH_ERR_MEMORY;
        }
    }

    Call& operator<<(const char* text)
    {
        const memory::Outside outside;
        result += text ? text : "(null)";
        result += '|';
        return *this;
    }
    Call& operator<<(const std::string& text) { return *this << text.c_str(); }
    Call& operator<<(long number)
    {
        const memory::Outside outside;
        return *this << std::to_string(number);
    }
    Call& operator<<(double number)
    {
        const memory::Outside outside;
        return *this << std::to_string(number);
    }
    Call& operator<<(const struct _xmlNode* node);

    long status = KH_OK;
    std::string result;

private:
    void remember(const void* function);

    std::set<std::string>* names_;
};

/// What a step that failed may leave behind.
enum class Leaves {
    nothing,     ///< the trees are as before, and the step can be repeated
    indentation, ///< trees and files may lack indentation, and the step can be repeated
    remains      ///< they may differ, and the step cannot be repeated
};

/// How a step may tell that memory ran out.
struct Failure {
    std::vector<long> codes = {KH_ERR_MEMORY};
    Leaves leaves = Leaves::nothing;
};

/// What a step did, and how it left the documents and files.
struct Step {
    long status;
    std::string result;
    std::string positions;
    std::string trees;
    std::string files;
};

class Session {
public:
    /// Writes down what happens.
    Session() = default;
    /// Compares with what happened without faults.
    Session(const std::vector<Step>& right, memory::Failing failing) : right_(&right), failing_(failing) {}

    /// Runs a step, which must not depend on where the cursor stands.
    template <class Body>
    void step(Body body, const Failure& failure = {})
    {
        const auto perform = [&] {
            Call call(right_ ? nullptr : &names_);
            body(call);
            return call;
        };
        if (lost_) {
            perform();
            return;
        }
        const Call call = perform();
        if (right_ && !memory::has_failed() && goes_on_as(right_->at(next_), call))
            return;
        const Step done = described(call);
        const std::string files_before = std::exchange(files_, done.files);
        if (!right_)
            steps_.push_back(done);
        else if (judge(done, failure, files_before))
            judge_repeated(described(perform()));
    }

    /// A call that tells nothing of failures: it did its work, or changed nothing.
    template <class Body>
    void silent_step(Body body)
    {
        step([&](Call& call) {
            body(call);
            if (right_ && !lost_ && memory::has_failed() && trees() == trees_before() &&
                trees_before() != right_->at(next_).trees)
                call.status = KH_ERR_MEMORY;
        });
    }

    /// From now on what a file holds belongs to each step's result.
    void watch(const std::string& file);

    const std::vector<Step>& steps() const { return steps_; }
    const std::set<std::string>& names() const { return names_; }
    const std::string& complaint() const { return complaint_; }

private:
    Step described(const Call& call) const;

    /// Goes on without looking at all documents while there was no fault yet. \return whether that is right
    bool goes_on_as(const Step& right, const Call& call);
    std::string files() const;
    static std::string trees();
    /// The trees before the step that is made; all steps so far have been right.
    std::string trees_before() const { return next_ > 0 ? right_->at(next_ - 1).trees : std::string(); }

    /// \return whether the step has failed and is to be repeated
    bool judge(const Step& step, const Failure& failure, const std::string& files_before);
    void judge_repeated(const Step& step);
    void complain(const std::string& what, const Step& step, const Step& right);

    const std::vector<Step>* right_ = nullptr;
    memory::Failing failing_ = memory::Failing::once;
    std::size_t next_ = 0;
    bool lost_ = false;
    std::vector<Step> steps_;
    std::set<std::string> names_;
    std::vector<std::string> watched_;
    std::string files_; ///< what they held last
    std::string complaint_;
};

} // namespace torture

#endif
