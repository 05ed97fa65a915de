/** \file export.h
 *  Marks what the shared library shows. Everything else in it is hidden. */
#ifndef KALV_EXPORT_H
#define KALV_EXPORT_H

/** \def KH_EXPORT
 *  Marks what the shared library shows.
 *  \def KH_PRINTF
 *  Lets the compiler check a printf format, its argument `text`, against the arguments from `first` on. */
#if defined(__GNUC__)
#define KH_EXPORT __attribute__((visibility("default")))
#define KH_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define KH_EXPORT
#define KH_PRINTF(text, first)
#endif

#endif
