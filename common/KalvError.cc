#include <kalv/KalvError.h>

namespace KALV {

namespace {

std::string text_of(const InternalError& error)
{
    std::vector<std::string> messages;
    error.getMsg(messages);
    std::string text;
    for (const std::string& message : messages)
        text += (text.empty() ? "" : ": ") + message;
    return text;
}

} // namespace

KalvError::KalvError(const InternalError& error) : std::runtime_error(text_of(error)), error_(error.clone())
{
}

// Copied, never moved: an exception that has been moved from would have no error to ask.
KalvError::KalvError(const KalvError&) noexcept = default;
KalvError::~KalvError() = default;
KalvError& KalvError::operator=(const KalvError&) noexcept = default;

void KalvError::getCodes(std::vector<long>& codes) const
{
    error_->getCodes(codes);
}

void KalvError::getMsg(std::vector<std::string>& messages) const
{
    error_->getMsg(messages);
}

} // namespace KALV
