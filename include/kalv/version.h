/** \file version.h
 *  The version at compile time and at run time. Needs only C99. */
#ifndef KALV_VERSION_H
#define KALV_VERSION_H

#include <kalv/export.h>

/** The version of these headers: the first number, which changes with what programs were built on. */
#define KH_VERSION_MAJOR 4
/** The second number, which grows with each version. */
#define KH_VERSION_MINOR 27
/** Both in one number that can be compared: 4.27 is 4027. */
#define KH_VERSION_NUMBER (KH_VERSION_MAJOR * 1000 + KH_VERSION_MINOR)
/** The version as text. */
#define KH_VERSION_TEXT "4.27"

#ifdef __cplusplus
extern "C" {
#endif

/** "KH_VERS_4.27", zero-filled. */
extern KH_EXPORT const char KH_FILE_HANDLING_VERSION[100];

/** The compatibility marks, one a row: "KH_KH_COMPAT_4.27". */
extern KH_EXPORT const char KH_Library_compat[1][100];

/** Copies "KH_VERS_4.27".
 *  \param[out] dst at least 13 bytes
 *  \return dst */
KH_EXPORT char* KH_Get_lib_version(char* dst);

/** The version of the library that the program runs with. The headers that it was built with may be older.
 *  \return its #KH_VERSION_NUMBER: major number * 1000 + minor number */
KH_EXPORT long KH_Get_lib_version_number(void);

/** The library's compatibility mark.
 *  \return "KH_KH_COMPAT_4.27", inside ::KH_Library_compat; never to be freed or written */
KH_EXPORT char* KH_Get_compatibility_table(void);

/** Tells whether two texts are equal. Note the sense: callers rely on 1 for equal texts.
 *  \param[in] a one text
 *  \param[in] b the other
 *  \return 1 for equal texts, else 0; 0 when either is null */
KH_EXPORT long KH_strcmp(const char* a, const char* b);

/** Prints the banner of the family's libraries with this library's version on standard output.
 *  \return 0 */
KH_EXPORT long kh_check_library_version(void);

#ifdef __cplusplus
}
#endif

#endif
