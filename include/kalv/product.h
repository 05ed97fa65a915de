/** \file product.h
 *  The fixed header of product files, product file names and the search for values. Needs only C99; for the
 *  conventions see status.h. */
#ifndef KALV_PRODUCT_H
#define KALV_PRODUCT_H

#include <kalv/document.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The extension types of product files. */
enum kh_file_extension {
    KH_EXTENSION_KLV = 0, /**< ".KLV": a full product file with a header. */
    KH_EXTENSION_HDR = 1, /**< ".HDR": a header-only file. */
    KH_EXTENSION_DBL = 2, /**< ".DBL": a file that carries no header. */
    KH_EXTENSION_EOF = 4  /**< ".EOF": a full product file with a header. */
};

/** \name Fixed header */
/**@{*/

/** Gives a document the skeleton of the header; the cursor stands on its `Variable_Header`.
 *  \param[in] fd the document
 *  \param[in,out] file_type format version * 10 + extension type; receives the extension type alone: callers
 *                 rely on that change. Format version 3 has names and an item of its own.
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_WARN_HEADER_EXISTS; #KH_ERR_DESCRIPTOR; #KH_ERR_ARGUMENT; else
 *          #KH_ERR_NO_HEADER_TYPE no header for this extension type, or #KH_ERR_CREATE_NODE every other
 *          failure, an unused slot included; the elements made before it stay */
KH_EXPORT long kh_tree_create_header(long* fd, long* file_type, long* ierr);

/** The part of kh_tree_create_header() for full files.
 *  \param[in] fd the document
 *  \param[in] root_name   name of the root, which is made when the document has none
 *  \param[in] header_name name of the header element
 *  \param[in] version     format version
 *  \param[in,out] ierr    the status; not set to 0 on entry
 *  \return the status: 0; #KH_WARN_HEADER_EXISTS; #KH_ERR_ARGUMENT; #KH_ERR_NOT_FOUND the document has
 *          elements in the header's place; #KH_ERR_CREATE_NODE every other failure; #KH_ERR_MEMORY */
KH_EXPORT long KH_tree_create_header_EOF(long* fd, const char* root_name, const char* header_name,
                                         long version, long* ierr);

/** The part of kh_tree_create_header() for header-only files, whose root is the header element.
 *  \param[in] fd the document
 *  \param[in] header_name name of the header element
 *  \param[in] version     format version
 *  \param[in,out] ierr    the status; not set to 0 on entry
 *  \return as KH_tree_create_header_EOF() */
KH_EXPORT long KH_tree_create_header_HDR(long* fd, const char* header_name, long version, long* ierr);

/** Writes one item of the header; the cursor moves to its element.
 *  \param[in] fd    the document
 *  \param[in] item  the item's tag. An element of any other name is found and left as it is, with success:
 *                   callers rely on it.
 *  \param[in] value the text. `File_Version` is taken as a decimal number.
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_WARN_LENGTH the value was cut; #KH_ERR_DESCRIPTOR; #KH_ERR_ARGUMENT;
 *          #KH_ERR_NOT_HEADER_ITEM another name on an unused slot; #KH_ERR_NOT_FOUND no such element, no root
 *          or an unused slot; #KH_ERR_FORMAT the value could not be set */
KH_EXPORT long kh_tree_set_fixed_header_item(long* fd, const char* item, const char* value, long* ierr);

/** Writes thirteen items; `KVSTD_Version` is not among them. Stops at the first failure.
 *  \param[in] fd               the document
 *  \param[in] file_name        `File_Name`
 *  \param[in] file_description `File_Description`
 *  \param[in] notes            `Notes`
 *  \param[in] mission          `Mission`
 *  \param[in] file_class       `File_Class`
 *  \param[in] file_type        `File_Type`
 *  \param[in] validity_start   `Validity_Start`
 *  \param[in] validity_stop    `Validity_Stop`
 *  \param[in] file_version     `File_Version`, by its address
 *  \param[in] system           `System`
 *  \param[in] creator          `Creator`
 *  \param[in] creator_version  `Creator_Version`
 *  \param[in] creation_date    `Creation_Date`
 *  \param[out] ierr            the status
 *  \return the status: 0; #KH_WARN_LENGTH at least one value was cut; #KH_ERR_DESCRIPTOR; #KH_ERR_ARGUMENT
 *          null version; #KH_ERR_FORMAT any other failure: the items before it stay written */
KH_EXPORT long kh_tree_set_fixed_header_items(long* fd, const char* file_name, const char* file_description,
                                              const char* notes, const char* mission, const char* file_class,
                                              const char* file_type, const char* validity_start,
                                              const char* validity_stop, const long* file_version,
                                              const char* system, const char* creator,
                                              const char* creator_version, const char* creation_date,
                                              long* ierr);

/** Reads one item of the header; the cursor moves to its element.
 *  \param[in] fd   the document
 *  \param[in] item the item's tag; any other name reads nothing, with success
 *  \param[in,out] value receives a fresh block for a text, an empty one with #KH_ERR_NO_VALUE; for
 *                  `File_Version` it must point to at least 21 characters of the caller's, which receive the
 *                  number, and stay as they are on failure
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_ERR_DESCRIPTOR; #KH_ERR_ARGUMENT; #KH_ERR_NOT_HEADER_ITEM another name on an
 *          unused slot; #KH_ERR_NO_VALUE; #KH_ERR_READ_ITEM no root, an unused slot, or no such value */
KH_EXPORT long kh_tree_get_fixed_header_item(long* fd, const char* item, char** value, long* ierr);

/** Reads thirteen items, each behind the one before: an item that is out of order is not found. The twelve
 *  texts are fresh blocks, empty where an item cannot be read; such failures are not reported.
 *  `*file_version` stays as it is where there is no such text, and is 0 where the text is no number.
 *  \param[in] fd                the document
 *  \param[out] file_name        `File_Name`
 *  \param[out] file_description `File_Description`
 *  \param[out] notes            `Notes`
 *  \param[out] mission          `Mission`
 *  \param[out] file_class       `File_Class`
 *  \param[out] file_type        `File_Type`
 *  \param[out] validity_start   `Validity_Start`
 *  \param[out] validity_stop    `Validity_Stop`
 *  \param[in,out] file_version  `File_Version`
 *  \param[out] system           `System`
 *  \param[out] creator          `Creator`
 *  \param[out] creator_version  `Creator_Version`
 *  \param[out] creation_date    `Creation_Date`
 *  \param[out] ierr             the status
 *  \return the status: 0; #KH_ERR_DESCRIPTOR; #KH_ERR_NO_DOCUMENT or #KH_ERR_NO_ROOT, with empty texts;
 *          #KH_ERR_ARGUMENT; #KH_ERR_MEMORY a value is lost, and its text empty or null */
KH_EXPORT long kh_tree_get_fixed_header_items(long* fd, char** file_name, char** file_description,
                                              char** notes, char** mission, char** file_class,
                                              char** file_type, char** validity_start, char** validity_stop,
                                              long* file_version, char** system, char** creator,
                                              char** creator_version, char** creation_date, long* ierr);
/**@}*/

/** \name Product file names */
/**@{*/

/** Composes a product file name: mission field, class, "_", type, "_", instance, extension.
 *  \param[in] sat_id              the satellite; one without a mission code gives "XXX_"
 *  \param[in] file_class          at most 4 characters; the empty text gives "XXXX"
 *  \param[in] file_type           at most 10 characters
 *  \param[in] instance_id         at most 42 characters
 *  \param[in] file_extension_type ::kh_file_extension; any other number appends nothing
 *  \param[out] file_name          at least 65 characters
 *  \param[out] ierr               the status
 *  \return the name's length; else #KH_ERR_ARGUMENT, #KH_WARN_LENGTH an item is too long, or
 *          #KH_ERR_FILE_NAME_LENGTH more than 64 characters, of which the first 64 are in the buffer */
KH_EXPORT long kh_create_filename(const long* sat_id, const char* file_class, const char* file_type,
                                  const char* instance_id, const long* file_extension_type, char* file_name,
                                  long* ierr);

/** Splits a product file name.
 *  \param[in] file_name    at most 64 characters
 *  \param[out] sat_id      the satellite of the mission code; 0 for an unknown one
 *  \param[out] file_class  at least 5 characters
 *  \param[out] file_type   at least 11 characters
 *  \param[out] instance_id at least 43 characters; written only for a name of at least six parts: the fourth
 *                          to the sixth
 *  \param[out] ierr        the status
 *  \return the number of parts, also with #KH_WARN_LENGTH in `*ierr`: a part did not fit its buffer and was
 *          not written; else #KH_ERR_ARGUMENT, #KH_ERR_FILE_NAME_LENGTH or #KH_ERR_MEMORY */
KH_EXPORT long kh_read_filename_items(const char* file_name, long* sat_id, char* file_class, char* file_type,
                                      char* instance_id, long* ierr);

/** The satellite of a name.
 *  \param[in] name the name; case matters
 *  \return the satellite's id; 400 for an unknown name and for null */
KH_EXPORT long KH_Get_sat_id(const char* name);

/** The satellite of a name in capital letters.
 *  \param[in] name the name, which is not converted
 *  \return as KH_Get_sat_id() */
KH_EXPORT long KH_Get_sat_id_capital_letters(const char* name);

/** The extension type of a satellite's product files.
 *  \param[in] sat_id the satellite
 *  \return #KH_EXTENSION_KLV or #KH_EXTENSION_EOF, also for an unknown satellite */
KH_EXPORT long KH_Get_file_extension_type(long sat_id);
/**@}*/

/** \name Value search
 *  Finds the first element whose value equals a text. A search that fails leaves the cursor where it was. */
/**@{*/

/** Searches the elements of a name behind the cursor; the cursor moves to the one found.
 *  \param[in] fd           the document
 *  \param[in] element_name the name
 *  \param[in] value        the value
 *  \param[out] path        receives the element's path; the caller provides the room
 *  \param[out] ierr        the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT; #KH_ERR_VALUE_NOT_FOUND; #KH_ERR_MEMORY;
 *          the code of the first read where no value could be read. An element without a value, or with
 *          more than one node, ends the search */
KH_EXPORT long kh_tree_find_string_value_element(long* fd, const char* element_name, const char* value,
                                                 char* path, long* ierr);

/** Searches the nodes of a path with "[*]"; the cursor stays where the array read leaves it.
 *  \param[in] fd         the document
 *  \param[in] array_path the path
 *  \param[in] value      the value
 *  \param[out] path      receives the path with the 1-based index of the first match for the "*": at least
 *                        the path's length plus 20 characters
 *  \param[out] ierr      the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT; #KH_ERR_VALUE_NOT_FOUND; #KH_ERR_MEMORY;
 *          what kh_tree_path_read_string_node_array() reports, warnings included */
KH_EXPORT long kh_tree_find_string_value_path(long* fd, const char* array_path, const char* value, char* path,
                                              long* ierr);
/**@}*/

#ifdef __cplusplus
}
#endif

#endif
