/** \file version.h
 *  The version at compile time and at run time. Needs only C99. */
#ifndef KALV_VERSION_H
#define KALV_VERSION_H

#include <kalv/export.h>

/** The version of these headers, as numbers and as text. */
#define KH_VERSION_MAJOR 4
#define KH_VERSION_MINOR 27
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

/** The library's compatibility mark.
 *  \return "KH_KH_COMPAT_4.27", inside ::KH_Library_compat; never to be freed or written */
KH_EXPORT char* KH_Get_compatibility_table(void);

/** Tells whether two texts are equal. Note the sense: callers rely on 1 for equal texts.
 *  \return 1 for equal texts, else 0; 0 when either is null */
KH_EXPORT long KH_strcmp(const char* a, const char* b);

/** Prints the banner of the family's libraries with this library's version on standard output.
 *  \return 0 */
KH_EXPORT long kh_check_library_version(void);

#ifdef __cplusplus
}
#endif

#endif
