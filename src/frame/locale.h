// The "C" locale for one thread, whatever the process has set.
#ifndef KALV_FRAME_LOCALE_H
#define KALV_FRAME_LOCALE_H

#include <clocale>
#include <locale.h>

namespace kh {

/// The "C" locale; it is built into the system's library, so asking for it cannot fail.
inline locale_t c_locale() noexcept
{
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

/// The calling thread uses the "C" locale while this lives.
class CLocale {
public:
    CLocale() noexcept : previous_(uselocale(c_locale())) {}
    ~CLocale() { uselocale(previous_); }
    CLocale(const CLocale&) = delete;
    CLocale& operator=(const CLocale&) = delete;

private:
    locale_t previous_;
};

} // namespace kh

#endif
