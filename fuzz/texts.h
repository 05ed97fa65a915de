// Texts that calls are fed with: often ones that fit, at times any bytes. None holds a zero byte.
#ifndef KALV_FUZZ_TEXTS_H
#define KALV_FUZZ_TEXTS_H

#include "harness.h"

namespace fuzz {

/// The name of an element or attribute.
std::string name(Bytes& bytes);

/// A path, mostly one that leads somewhere in the documents below.
std::string path(Bytes& bytes);

/// A value, which need not be UTF-8.
std::string value(Bytes& bytes);

/// Any bytes but zero ones.
std::string any_text(Bytes& bytes, std::size_t size);

/// A document: by choices, so that it is well-formed more often than not.
std::string document_text(Bytes& bytes);

/// A small document that most paths lead into.
extern const char* const small_document;

} // namespace fuzz

#endif
