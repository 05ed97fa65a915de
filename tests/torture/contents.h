// What the torture programs write into files.
#ifndef KALV_TORTURE_CONTENTS_H
#define KALV_TORTURE_CONTENTS_H

#include <cstddef>
#include <string>

namespace torture {

std::string repeated(std::size_t count, const std::string& piece);

/// An ASCII text in UTF-16, with its mark.
std::string utf16(const std::string& text);

/// A text as a gzip file.
std::string gzip(const std::string& text);

/// A gzip file of `count` blanks between two texts, made without that memory.
std::string gzip_bomb(const std::string& before, std::size_t count, const std::string& after);

} // namespace torture

#endif
