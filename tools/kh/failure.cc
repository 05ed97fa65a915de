#include "failure.h"

namespace tool {

std::string Failure::message() const
{
    std::string message = place_.file.empty() ? "kh" : place_.file;
    if (place_.line > 0) {
        message += ':' + std::to_string(place_.line);
        if (place_.column > 0)
            message += ':' + std::to_string(place_.column);
    }
    return message + ": " + what();
}

} // namespace tool
