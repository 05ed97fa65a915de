// How a status becomes an exception, and the switch of the reports.
#include "object/call.h"

#include <kalv/FileHandlingError.h>
#include <kalv/FileHandlingFunc.h>
#include <kalv/KalvError.h>
#include <kalv/status.h>

namespace KALV {

FileHandlingError::FileHandlingError(const std::string& functionName, long n, const long* codes)
    : InternalError(functionName, codes ? *codes : long{KH_ERR_UNKNOWN}, 0, n, 1, codes)
{
}

FileHandlingError::FileHandlingError(const FileHandlingError&) = default;
FileHandlingError::~FileHandlingError() = default;
FileHandlingError& FileHandlingError::operator=(const FileHandlingError&) = default;

void FileHandlingError::getCodes(std::vector<long>& codes) const
{
    codes.push_back(code_);
}

void FileHandlingError::getMsg(std::vector<std::string>& messages) const
{
    char text[KH_MESSAGE_SIZE];
    messages.push_back(name_);
    messages.push_back(kh_basic_error_msg(code_, text));
}

FileHandlingError* FileHandlingError::clone() const
{
    return new FileHandlingError(*this);
}

void FileHandlingFunc::setVerbose()
{
    kh_verbose();
}

void FileHandlingFunc::setSilent()
{
    kh_silent();
}

} // namespace KALV

namespace kh {

namespace {

/// The thread's last report without the text that it begins with.
std::string details_behind(const std::string& message)
{
    std::string report(static_cast<std::size_t>(KH_last_report(nullptr, 0)) + 1, '\0');
    KH_last_report(report.data(), static_cast<long>(report.size()));
    report.pop_back();
    return report.compare(0, message.size(), message) == 0 ? report.substr(message.size()) : "\n" + report;
}

/// The error as it is made into an exception, whose what() is to hold the code and the report. What the
/// exception keeps is a plain FileHandlingError, whose messages are two.
class ReportedError final : public KALV::FileHandlingError {
public:
    using FileHandlingError::FileHandlingError;

    void getMsg(std::vector<std::string>& messages) const override
    {
        FileHandlingError::getMsg(messages);
        const std::string details = details_behind(messages.back());
        messages.back() += " (" + std::to_string(code_) + ")" + details;
    }
};

} // namespace

} // namespace kh

void kh::throw_error(const char* method, long code)
{
    throw KALV::KalvError(ReportedError(method, 0, &code));
}
