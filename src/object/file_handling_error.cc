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

void kh::throw_error(const char* method, long code)
{
    const KALV::FileHandlingError error(method, 0, &code);
    throw KALV::KalvError(error);
}
