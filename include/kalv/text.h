/** \file text.h
 *  Text and number helpers. Needs only C99; for the conventions see status.h. */
#ifndef KALV_TEXT_H
#define KALV_TEXT_H

#include <kalv/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Copies a text into a fresh block.
 *  \param[out] dst receives the block, to be released with `free`; what it held is not freed; null on failure
 *  \param[in] src  the text; null is the empty text
 *  \param[out] ierr written only on failure
 *  \return 0; #KH_ERR_MEMORY; #KH_ERR_ARGUMENT for a null `dst` */
KH_EXPORT long kh_strncpy(char** dst, const char* src, long* ierr);

/** Converts the decimal integer at the start of a text, as `strtol` does: leading blanks are skipped and what
 *  follows the number is accepted ("12abc" is 12).
 *  \param[in] s     the text
 *  \param[out] ierr 0; #KH_ERR_NOT_INTEGER no number; #KH_ERR_RANGE the result is the largest or smallest
 *                   `long`, also where the text spells just that; #KH_ERR_ARGUMENT null text
 *  \return the number; 0 where there is none */
KH_EXPORT long kh_string_to_integer(const char* s, long* ierr);

/** Converts the real at the start of a text, as `strtod` does in the "C" locale. A NaN is a number.
 *  \param[in] s     the text
 *  \param[out] ierr 0; #KH_ERR_NOT_REAL no number; #KH_ERR_RANGE an infinity; #KH_ERR_ARGUMENT null text
 *  \return the number; 0 where there is none; an infinity where it is too large */
KH_EXPORT double kh_string_to_real(const char* s, long* ierr);

/** Splits a text. No token is empty: "/a//b/" split at "/" gives "a" and "b".
 *  \param[in] src     the text
 *  \param[in] delims  the characters to split at
 *  \param[out] buf    receives a copy of the text, cut into the tokens: length of the text plus one bytes
 *  \param[out] tokens receives pointers into `buf`; the number of tokens is not bounded by the call
 *  \param[out] count  receives their number
 *  A null argument gives no token. */
KH_EXPORT void kh_strtoken(const char* src, const char* delims, char* buf, char** tokens, long* count);

/** Resizes an array.
 *  \param[in] n     number of entries
 *  \param[in] size  bytes of an entry
 *  \param[in,out] array address of the block's pointer, which is null or from `malloc`. On failure the old
 *                   block is freed and the pointer null.
 *  \param[in] function_name the name under which a failure is reported
 *  \param[out] ierr written only on failure: #KH_ERR_MEMORY; #KH_ERR_ARGUMENT for a null argument
 *  \return always 0; callers test `*ierr` */
KH_EXPORT long KH_alloc_array(long n, long size, void** array, const char* function_name, long* ierr);

#ifdef __cplusplus
}
#endif

#endif
