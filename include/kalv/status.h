/** \file status.h
 *  Status codes, reports and the verbose switch. Needs only C99.
 *
 *  Conventions of all procedural calls (`kh_*`, `KH_*`):
 *
 *  1. A call works on a document named by a file descriptor: a `long` that kh_tree_init_parser() or
 *     kh_tree_create() returned. Descriptors, and most numbers, are passed by address.
 *  2. The last argument `ierr` is the address of the caller's status word (element 0 of an array is enough).
 *     It is set to 0 on entry, unless a function says otherwise, and to a code of ::kh_status on failure.
 *     0 is success, a negative value an error, a positive value a warning: the call did its work.
 *     `ierr` may be null; the status is then only returned.
 *  3. A function that needs a document checks its descriptor first, in this order: a null address reports
 *     #KH_ERR_ARGUMENT, a number outside 0 to 511 #KH_ERR_DESCRIPTOR, an unused slot #KH_ERR_NO_DOCUMENT,
 *     and, where it needs a root element, a document without one #KH_ERR_NO_ROOT. "The descriptor checks"
 *     below means these. Functions that have no status word return null or 0 instead.
 *  4. A null pointer where a text, number or output is needed reports #KH_ERR_ARGUMENT, unless said
 *  otherwise.
 *  5. Texts are UTF-8 and end with a zero byte. Texts and arrays that a call hands out are blocks of
 *     `malloc`; the caller releases them with `free`. Texts that a caller hands in stay the caller's.
 *  6. No call throws, ends the process, opens a network connection or depends on the locale.
 *  7. A document is used by one thread at a time. Different documents can be used by different threads.
 *  8. Every failure composes a report: the code's text and one line for each function of the chain of calls.
 *     It is printed on standard error after kh_verbose(), and not otherwise. */
#ifndef KALV_STATUS_H
#define KALV_STATUS_H

#include <kalv/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The codes that a status word can hold. kh_basic_error_msg() gives the text of each. */
enum kh_status {
    KH_OK = 0,                     /**< Everything is OK. */
    KH_ERR_UNKNOWN = -1,           /**< Unknown error code. */
    KH_ERR_GENERIC = -2,           /**< Generic error; not raised by this library. */
    KH_ERR_ARGUMENT = -3,          /**< An argument is null, out of range or malformed. */
    KH_ERR_PARSE = -4,             /**< A file cannot be read or is not well-formed XML. */
    KH_ERR_ROOT_ELEMENT = -5,      /**< A parsed document has no root element. */
    KH_ERR_MEMORY = -6,            /**< Memory ran out. */
    KH_ERR_NO_DOCUMENT = -7,       /**< The descriptor's slot is empty. */
    KH_ERR_NO_REQUEST = -8,        /**< No element (or path) was asked for. */
    KH_ERR_NOT_ELEMENT = -9,       /**< The node is not an element. */
    KH_ERR_NO_ROOT = -10,          /**< The document has no root element. */
    KH_ERR_NOT_FOUND = -11,        /**< No such element, attribute or path. */
    KH_ERR_NOT_INTEGER = -12,      /**< A text does not begin with an integer. */
    KH_ERR_NOT_REAL = -13,         /**< A text does not begin with a real. */
    KH_ERR_RANGE = -14,            /**< A number does not fit its type. */
    KH_ERR_NO_ATTRIBUTE = -15,     /**< The element has no such attribute. */
    KH_ERR_NOT_TERMINAL = -16,     /**< The element holds more than one node. */
    KH_ERR_PATH_LENGTH = -17,      /**< A path has more than 50 nodes. */
    KH_ERR_PATH_NODE_LENGTH = -18, /**< A path node is too long; not raised by this library. */
    KH_ERR_TABLE_FULL = -19,       /**< 512 documents are open. */
    KH_ERR_NO_CURRENT = -20,       /**< The cursor stands on no node. */
    KH_ERR_DESCRIPTOR = -21,       /**< The descriptor is not in 0 to 511. */
    KH_ERR_CREATE_DOCUMENT = -22,  /**< A new document could not be made. */
    KH_ERR_ROOT_EXISTS = -23,      /**< The document already has a root. */
    KH_ERR_CREATE_NODE = -24,      /**< An element (or its indentation) could not be made. */
    KH_ERR_ADD_SIBLING = -25,      /**< A sibling (or its indentation) could not be inserted. */
    KH_ERR_REMOVE_NODE = -26,      /**< A node could not be removed. */
    KH_ERR_FORMAT = -27,           /**< A printing format does not fit its value. */
    KH_ERR_READ_ITEM = -28,        /**< A header item could not be read. */
    KH_ERR_SAVE = -29,             /**< A document could not be saved; the old file is unharmed. */
    KH_ERR_NOT_ARRAY = -30,        /**< The path has no array node "[*]". */
    KH_ERR_NO_VALUE = -31,         /**< The element has no value. */
    KH_ERR_HEADER_TAGS = -32,      /**< Unwanted tags in a header; not raised by this library. */
    KH_ERR_NO_HEADER_TYPE = -33,   /**< This type of file carries no header. */
    KH_ERR_NOT_HEADER_ITEM = -34,  /**< Not an item of the header. */
    KH_ERR_FILE_NAME_LENGTH = -35, /**< A product file name has more than 64 characters. */
    KH_ERR_VALUE_NOT_FOUND = -36,  /**< The requested value was not found. */
    KH_ERR_UNUSED_LOCK = -37,      /**< Not raised by this library; callers find its text in the table. */
    KH_ERR_LOCK = -38,             /**< The document table could not be locked. */
    KH_WARN_ROOT_REACHED = 1,      /**< A path went above the root and stayed there. */
    KH_WARN_LENGTH = 2,            /**< A text was too long: cut, or not taken. */
    KH_WARN_GENERIC = 3,           /**< Generic warning; not raised by this library. */
    KH_WARN_HEADER_EXISTS = 4      /**< The document already has a header. */
};

/** Size of a report's text and of the buffer for kh_basic_error_msg(), terminating zero included. */
#define KH_MESSAGE_SIZE 512

/** The report of one call: what it will print in verbose mode. Lives on the stack of the call. */
typedef struct kh_error_record {
    long code;                     /**< The code last set; 0 at first; -1 after an unknown code. */
    char message[KH_MESSAGE_SIZE]; /**< The text, at most 511 characters and a zero. */
    long length;                   /**< Length of the text. */
} kh_error_record;

/** 1 while reports are printed; 0 (silent) when the library is loaded. Only the value 1 means verbose. */
extern KH_EXPORT int verb_flag;

/** Empties a record: code 0, no text. \param[out] rec the record; null does nothing */
KH_EXPORT void kh_init_error(kh_error_record* rec);

/** Replaces a record's code and text by the table's.
 *  A code outside -38 to 4 is stored as -1 with the text "KH: Unknown error code".
 *  \param[in] code the code
 *  \param[out] rec the record
 *  \return the text's length; 0 for a null record */
KH_EXPORT long kh_set_error(long code, kh_error_record* rec);

/** Appends to a record's text. A piece for which `length + len` reaches 512 is dropped whole, not cut.
 *  \param[in] text the piece; it ends at a zero byte or after `len` characters
 *  \param[in] len  how many characters to append
 *  \param[in,out] rec the record */
KH_EXPORT void kh_add_error_info(const char* text, long len, kh_error_record* rec);

/** Reports: composes the text and, in verbose mode, prints it and a newline on standard error.
 *  The record then holds at most 510 characters; a longer detail is cut.
 *  \param[in,out] rec the call's record
 *  \param[in] code   the status
 *  \param[in] set    non-zero: begin with the code's text; 0: append to what the record holds
 *  \param[in] format printf format of the detail, then its arguments
 *  \return `code`, also where the table does not know it */
KH_EXPORT long kh_handle_error(kh_error_record* rec, long code, long set, const char* format, ...)
    KH_PRINTF(4, 5);

/** Copies the text of a code.
 *  \param[in] code  any number; an unknown one gives "KH: Unknown error code"
 *  \param[out] dst  at least #KH_MESSAGE_SIZE bytes
 *  \return dst */
KH_EXPORT char* kh_basic_error_msg(long code, char* dst);

/** Receives libxml2's own messages: prints them on standard error in verbose mode, drops them otherwise.
 *  kh_tree_init_parser() installs it as libxml2's generic error handler of the calling thread.
 *  \param[in] ctx ignored
 *  \param[in] msg printf format, then its arguments; the text is cut to 1023 characters */
KH_EXPORT void KH_handle_xml_error(void* ctx, const char* msg, ...) KH_PRINTF(2, 3);

/** The last report of the calling thread, in silent mode too: the text of the failure or warning, and behind
 *  it the trace lines of the functions that passed it on, as verbose mode prints them, without the newlines
 *  between them. A file that could not be parsed adds a line "\n\tFILE:LINE:COLUMN: MESSAGE", one that could
 *  not be saved "\n\tFILE: REASON" where the system gave a reason. A call that succeeds leaves the report of an
 *  earlier one.
 *  \param[out] text the report, cut to the buffer, with its terminating zero; null: only its length is asked
 *  \param[in]  size bytes of the buffer; below 1: nothing is written. 8193 bytes hold every report
 *  \return the length of the whole report without its terminating zero; 0 when there is none, also where no
 *          memory could be had for it */
KH_EXPORT long KH_last_report(char* text, long size);

/** From now on reports are printed on standard error, in all threads. */
KH_EXPORT void kh_verbose(void);

/** From now on nothing is printed. */
KH_EXPORT void kh_silent(void);

#ifdef __cplusplus
}
#endif

#endif
