// From a tree to a file that is never half written.
#ifndef KALV_BUILD_SAVE_H
#define KALV_BUILD_SAVE_H

#include "tree/xml.h"

namespace kh {

/// Saves a document with the bytes that xmlSaveFile writes. May throw std::bad_alloc, and the old file is
/// unharmed. \return how many bytes, before compression; -1 when it could not be saved
long save(xmlDoc* document, const char* file_name);

} // namespace kh

#endif
