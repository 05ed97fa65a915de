// The last report of each thread, kept for KH_last_report().
#ifndef KALV_FRAME_LAST_REPORT_H
#define KALV_FRAME_LAST_REPORT_H

#include <string_view>

namespace kh {

/// A failure was found: its report replaces what was there.
void begin_last_report(std::string_view text) noexcept;

/// A detail or a trace line came behind it.
void add_to_last_report(std::string_view text) noexcept;

} // namespace kh

#endif
