// The missions whose product files carry structured names.
#ifndef KALV_PRODUCT_MISSION_H
#define KALV_PRODUCT_MISSION_H

namespace kh {

/// One satellite of the family.
struct Mission {
    long satellite_id;
    const char* name;
    long extension_type;   ///< ::kh_file_extension of its product files
    const char* code;      ///< of the mission field of file names; null where it has none
    int written_width = 0; ///< characters of that field, "_" filling it up; 0 where none is written
};

/// The mission of a satellite; null for an unknown one.
const Mission* mission_of_satellite(long satellite_id) noexcept;

/// The mission that a code in a file name stands for, the first one where several share it; null for an
/// unknown code.
const Mission* mission_of_code(const char* code) noexcept;

} // namespace kh

#endif
