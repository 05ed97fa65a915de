/** \file document.h
 *  The table of open documents. Needs only C99; for the conventions see status.h. */
#ifndef KALV_DOCUMENT_H
#define KALV_DOCUMENT_H

#include <kalv/export.h>
#include <pthread.h>

struct _xmlAttr;
struct _xmlDoc;
struct _xmlNode;

#ifdef __cplusplus
extern "C" {
#endif

/** How many documents can be open at a time; descriptors are 0 to 511. */
#define KH_MAX_DOCUMENTS 512
/** How many nodes a path can have. */
#define KH_MAX_PATH_NODES 50

/** One open document. Callers may read these fields; the library adds fields of its own behind them. */
typedef struct kh_document_slot {
    struct _xmlDoc* doc;                 /**< The document; owned. */
    char* file_name;                     /**< Name of the parsed file; owned; null for a created document. */
    struct _xmlNode* root;               /**< The root element; null until there is one. */
    struct _xmlNode* current;            /**< The cursor. */
    long visited;                        /**< Elements met by searches since the requested tag was set. */
    int absolute;                        /**< 1 when the last path began with "/", else 0. */
    char* stack_name[KH_MAX_PATH_NODES]; /**< Node names of the last path; owned. */
    long stack_index[KH_MAX_PATH_NODES]; /**< 0-based index of each node of the last path. */
    long stack_count;                    /**< Number of nodes of the last path. */
    long array_position;                 /**< Place of the node written "[*]" in the last path, or -1. */
    char* requested_tag;                 /**< Name of the elements that searches look for; owned; or null. */
} kh_document_slot;

/** The open documents by descriptor; null where none is open. */
extern KH_EXPORT kh_document_slot* global_current_status[KH_MAX_DOCUMENTS];

/** Guards the taking and releasing of slots, and nothing else. Not recursive. In the child of a fork it is free. */
extern KH_EXPORT pthread_mutex_t parser_mutex;

/** Opens an XML file. Its document gets the lowest free descriptor; the cursor stands on the root.
 *  Files compressed with gzip are read as they are; "-" is standard input. The name is a file name, never a
 *  URI. No external entity or subset is loaded. Installs KH_handle_xml_error() as libxml2's generic error
 *  handler of the calling thread.
 *  \param[in] file_name the file
 *  \param[out] ierr 0; #KH_ERR_LOCK; #KH_ERR_TABLE_FULL; #KH_ERR_ARGUMENT null name; #KH_ERR_MEMORY;
 *                   #KH_ERR_PARSE not readable, not well-formed, or too large for the memory;
 *                   #KH_ERR_ROOT_ELEMENT no root element
 *  \return the descriptor. After a failure it names nothing: -1 when the table is full, 0 when it could not
 *          be locked, else the number of the slot that was free. -1 without a status when the table could
 *          not be unlocked. */
KH_EXPORT long kh_tree_init_parser(const char* file_name, long* ierr);

/** Opens an XML document that stands in memory with the bytes of a file, plain or compressed with gzip; else
 * as kh_tree_init_parser(). The document has no file name. \param[in] data the bytes; they are not needed
 * afterwards \param[in] size how many \param[out] ierr 0; the codes of kh_tree_init_parser();
 * #KH_ERR_ARGUMENT null data, or a size below 0 \return the descriptor, or what kh_tree_init_parser() returns
 * after a failure */
KH_EXPORT long kh_tree_init_memory(const char* data, long size, long* ierr);

/** Makes an empty document, which has no root until kh_tree_create_root().
 *  \param[out] ierr 0; #KH_ERR_LOCK; #KH_ERR_TABLE_FULL; #KH_ERR_MEMORY; #KH_ERR_CREATE_DOCUMENT
 *  \return the descriptor. After a failure as kh_tree_init_parser(), but 512 when the table is full: callers
 *          tell the two apart by it. */
KH_EXPORT long kh_tree_create(long* ierr);

/** Releases a document and its slot. An unused descriptor is no error. When it was the last open document and
 *  the process has a single thread, libxml2's `xmlCleanupParser` is called.
 *  \param[in] fd    the document
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_ERR_ARGUMENT null address; #KH_ERR_LOCK; #KH_ERR_DESCRIPTOR */
KH_EXPORT long kh_tree_cleanup_parser(long* fd, long* ierr);

/** Releases all documents. One that another thread is still parsing stays. */
KH_EXPORT void kh_tree_cleanup_all_parser(void);

/** The name of the file that a document was read from.
 *  \param[in] fd the descriptor, by value
 *  \return the slot's own text, valid until the document is released; null for a created document, an unused
 *          descriptor or one out of range */
KH_EXPORT char* KH_get_file_name(long fd);

#ifdef __cplusplus
}
#endif

#endif
