// The parts of product file names.
#ifndef KALV_PRODUCT_FILE_NAME_H
#define KALV_PRODUCT_FILE_NAME_H

#include <string>

namespace kh {

/// The items of a product file name; those whose parts the name lacks stay empty.
struct FileNameItems {
    long part_count = 0; ///< how many parts the name has between its "_"
    long satellite_id = 0;
    std::string file_class;
    std::string file_type;
    std::string instance_id;
};

/// Splits a product file name; what is wrong with it is reported as by kh_read_filename_items().
FileNameItems split_file_name(const char* file_name, long* ierr) noexcept;

} // namespace kh

#endif
