// From a tree to a file that is never half written.
#ifndef KALV_BUILD_SAVE_H
#define KALV_BUILD_SAVE_H

#include "frame/memory.h"
#include "tree/xml.h"

namespace kh {

/// Saves a document with the bytes that xmlSaveFile writes. May throw std::bad_alloc, and the old file is
/// unharmed. \return how many bytes, before compression; -1, and the reason or 0 in errno, when it could not
/// be saved
long save(xmlDoc* document, const char* file_name);

/// The same bytes, never compressed, in a block with a zero byte behind them; null when it could not be made.
Block<char> save_to_memory(xmlDoc* document, long& size) noexcept;

} // namespace kh

#endif
