#include <kalv/InternalError.h>

namespace KALV {

InternalError::InternalError(const std::string& name, long code, long subcode, long severity, long count,
                             const long* codes)
    : name_(name), code_(code), subcode_(subcode), severity_(severity), count_(count),
      codes_(codes, codes + (codes && count > 0 ? count : 0))
{
}

InternalError::InternalError(const InternalError&) = default;
InternalError::~InternalError() = default;
InternalError& InternalError::operator=(const InternalError&) = default;

void InternalError::getCodes(std::vector<long>& codes) const
{
    codes.insert(codes.end(), codes_.begin(), codes_.end());
}

void InternalError::getMsg(std::vector<std::string>& messages) const
{
    messages.push_back(name_);
}

InternalError* InternalError::clone() const
{
    return new InternalError(*this);
}

} // namespace KALV
