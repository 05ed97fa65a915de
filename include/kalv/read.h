/** \file read.h
 *  Reading values. Needs only C99; for the conventions see status.h.
 *
 *  The value of an element is the content of its only child, as it stands: nothing is trimmed, no entity
 *  expanded. Integers and reals are converted by kh_string_to_integer() and kh_string_to_real(); what the
 *  conversion yields is stored beside its code, too. Where the text cannot be read, the number is not
 *  written. */
#ifndef KALV_READ_H
#define KALV_READ_H

#include <kalv/document.h>

#ifdef __cplusplus
extern "C" {
#endif

/** \name The element under the cursor */
/**@{*/

/** The name of the element under the cursor.
 *  \param[in] fd the document
 *  \param[in,out] name null or an earlier result, which is freed; receives a fresh block
 *  \param[out] ierr the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT; #KH_ERR_NO_CURRENT; #KH_ERR_NOT_ELEMENT;
 *          #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_get_current_element_name(long* fd, char** name, long* ierr);

/** The value of the element under the cursor.
 *  \param[in] fd the document
 *  \param[out] value receives a fresh block; what it held is not freed
 *  \param[out] ierr the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT; #KH_ERR_NO_CURRENT; #KH_ERR_NOT_ELEMENT;
 *          #KH_ERR_NO_VALUE no child, and `*value` is a fresh empty text; #KH_ERR_NOT_TERMINAL more than one
 *          child; #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_get_current_element_value(long* fd, char** value, long* ierr);

/** Moves the cursor to the next element of the requested tag and reads its value.
 *  \param[in] fd the document
 *  \param[out] value as kh_tree_get_current_element_value()
 *  \param[out] ierr 0, also where no element follows; else as kh_tree_get_current_element_value()
 *  \return the element; null when none follows */
KH_EXPORT struct _xmlNode* kh_tree_read_next_element(long* fd, char** value, long* ierr);
/**@}*/

/** \name Values of elements, found by name after the cursor */
/**@{*/

/** The value of the next element of a name; the cursor moves to that element.
 *  \param[in] fd      the document
 *  \param[in] element the name; null: the tag requested before, so that repeated reads walk through all
 *                     elements of a name
 *  \param[out] value  the number; or a fresh block with the text, what it held is not freed
 *  \param[out] ierr   the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT null `value`; #KH_ERR_NO_REQUEST;
 *          #KH_ERR_NOT_FOUND; then as kh_tree_get_current_element_value(); for numbers #KH_ERR_NOT_INTEGER,
 *          #KH_ERR_NOT_REAL and #KH_ERR_RANGE */
KH_EXPORT long kh_tree_read_string_element_value(long* fd, const char* element, char** value, long* ierr);
KH_EXPORT long kh_tree_read_integer_element_value(long* fd, const char* element, long* value, long* ierr);
KH_EXPORT long kh_tree_read_real_element_value(long* fd, const char* element, double* value, long* ierr);
/**@}*/

/** \name Values of attributes */
/**@{*/

/** The value of an attribute, of the element under the cursor if that has the name asked for, else of the
 *  next element of that name; the cursor moves to it. Entity references are expanded, and attributes that
 *  the internal subset declares with a default have it.
 *  \param[in] fd        the document
 *  \param[in] element   the element's name; null: the tag requested before
 *  \param[in] attribute the attribute's name
 *  \param[out] value    the number; or a fresh block with the text, what it held is not freed
 *  \param[out] ierr     the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_NO_CURRENT; #KH_ERR_ARGUMENT null `attribute` or
 *          `value`; #KH_ERR_NO_REQUEST; #KH_ERR_NOT_FOUND; #KH_ERR_NO_ATTRIBUTE; #KH_ERR_MEMORY, also for a
 *          value of more than 10,000,000 bytes; for numbers #KH_ERR_NOT_INTEGER, #KH_ERR_NOT_REAL and
 *          #KH_ERR_RANGE */
KH_EXPORT long kh_tree_read_string_attribute(long* fd, const char* element, const char* attribute,
                                             char** value, long* ierr);
KH_EXPORT long kh_tree_read_integer_attribute(long* fd, const char* element, const char* attribute,
                                              long* value, long* ierr);
KH_EXPORT long kh_tree_read_real_attribute(long* fd, const char* element, const char* attribute,
                                           double* value, long* ierr);
/**@}*/

/** \name Values by path */
/**@{*/

/** The value of the element or attribute at a path; the cursor moves to the node reached. Reports of the text
 *  read name "kh_tree_path_read_string_element_value": callers rely on that.
 *  \param[in] fd        the document
 *  \param[in] path      the path, which may end with an attribute
 *  \param[in,out] value the number; or, for a text, null or an earlier result, which is freed: receives a
 *                       fresh block (an empty text for #KH_ERR_NO_VALUE), or null
 *  \param[out] ierr     the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT null `value`; #KH_ERR_NO_REQUEST null path;
 *          what kh_tree_go_to_path_node() reports of the path, #KH_WARN_ROOT_REACHED included;
 *          #KH_ERR_NOT_FOUND; #KH_ERR_NO_VALUE; #KH_ERR_NOT_TERMINAL; for numbers #KH_ERR_NOT_INTEGER,
 *          #KH_ERR_NOT_REAL and #KH_ERR_RANGE. A path with "[*]" is reported, and then read with the index
 *          of the node before. */
KH_EXPORT long kh_tree_path_read_string_node_value(long* fd, const char* path, char** value, long* ierr);
KH_EXPORT long kh_tree_path_read_integer_node_value(long* fd, const char* path, long* value, long* ierr);
KH_EXPORT long kh_tree_path_read_real_node_value(long* fd, const char* path, double* value, long* ierr);
/**@}*/

/** \name Arrays of all elements of a name, from the root */
/**@{*/

/** The values of all elements of a name below the root. A text read that fails leaves the values read before
 *  it; a number read whose texts cannot be read leaves `*values` as it was; one whose texts cannot be
 *  converted stops at the first such text, and the entries behind it are undefined. The caller frees the
 *  texts and the array in every case.
 *  \param[in] fd         the document
 *  \param[in] element    the name
 *  \param[in,out] values null or a block from an earlier call, which is resized
 *  \param[out] count     how many values the array holds
 *  \param[out] ierr      the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT null `values` or `count`;
 *          #KH_ERR_NO_REQUEST null name; #KH_ERR_NOT_FOUND no such element; #KH_ERR_NO_VALUE;
 *          #KH_ERR_NOT_TERMINAL; #KH_ERR_MEMORY, and then `*values` is null and `*count` 0; for numbers
 *          #KH_ERR_NOT_INTEGER, #KH_ERR_NOT_REAL and #KH_ERR_RANGE */
KH_EXPORT long kh_tree_read_string_element_array(long* fd, const char* element, char*** values, long* count,
                                                 long* ierr);
KH_EXPORT long kh_tree_read_integer_element_array(long* fd, const char* element, long** values, long* count,
                                                  long* ierr);
KH_EXPORT long kh_tree_read_real_element_array(long* fd, const char* element, double** values, long* count,
                                               long* ierr);
/**@}*/

/** \name Arrays by a path with one "[*]" */
/**@{*/

/** The values of all nodes of a path: each node that "[*]" stands for is followed down the rest of the path.
 *  What the outputs hold after a failure, see kh_tree_read_string_element_array().
 *  \param[in] fd         the document
 *  \param[in] path       the path, which may end with an attribute
 *  \param[in,out] values null or a block from an earlier call, which is resized
 *  \param[out] count     how many values the array holds
 *  \param[out] ierr      the status
 *  \return the status: 0; #KH_WARN_ROOT_REACHED; the descriptor checks; #KH_ERR_ARGUMENT null output, or a
 *          path that is malformed or has no "[*]"; #KH_ERR_NO_REQUEST null path; #KH_ERR_PATH_LENGTH;
 *          #KH_ERR_NOT_FOUND; #KH_ERR_NO_VALUE; #KH_ERR_NOT_TERMINAL; #KH_ERR_MEMORY; for numbers
 *          #KH_ERR_NOT_INTEGER, #KH_ERR_NOT_REAL and #KH_ERR_RANGE */
KH_EXPORT long kh_tree_path_read_string_node_array(long* fd, const char* path, char*** values, long* count,
                                                   long* ierr);
KH_EXPORT long kh_tree_path_read_integer_node_array(long* fd, const char* path, long** values, long* count,
                                                    long* ierr);
KH_EXPORT long kh_tree_path_read_real_node_array(long* fd, const char* path, double** values, long* count,
                                                 long* ierr);
/**@}*/

/** \name Namespaces */
/**@{*/

/** The namespaces in scope at a node: its own declarations first, then its ancestors', each prefix once.
 *  Strings and arrays are the caller's to free.
 *  \param[in] fd           the document
 *  \param[in] name_or_path the cursor first goes along it as a path, or else to the next element of that
 *                          name; null or empty: the node under the cursor
 *  \param[out] count       how many there are
 *  \param[in,out] prefixes null or an earlier array; receives their prefixes, "" for the default namespace
 *  \param[in,out] uris     null or an earlier array; receives their URIs
 *  \param[out] ierr        the status
 *  \return the status: 0; #KH_WARN_ROOT_REACHED; #KH_ERR_VALUE_NOT_FOUND no such node, or no namespace in
 *          scope; #KH_ERR_ARGUMENT null output; without a name the descriptor checks; #KH_ERR_MEMORY, and
 *          then both arrays are null */
KH_EXPORT long kh_tree_get_namespace(long* fd, const char* name_or_path, long* count, char*** prefixes,
                                     char*** uris, long* ierr);

/** Frees the strings of two arrays and then the two **cells that the arguments point to**, not the arrays:
 *  callers rely on it. So `prefixes` and `uris` must themselves be blocks of `malloc` that hold the arrays'
 *  pointers, and the caller keeps a copy of those pointers to free the arrays with. A cell that holds null is
 *  left alone.
 *  \param[in] count        how many strings each array holds
 *  \param[in,out] prefixes the cell with the array of prefixes; null does nothing
 *  \param[in,out] uris     the cell with the array of URIs; null does nothing */
KH_EXPORT void KH_free_memory_get_namespace(long count, char*** prefixes, char*** uris);
/**@}*/

#ifdef __cplusplus
}
#endif

#endif
