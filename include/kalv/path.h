/** \file path.h
 *  The path language. Needs only C99; for the conventions see status.h.
 *
 *      path    = ["/"] segment { "/" segment }       "/a//b" is "/a/b"
 *      segment = name [ "[" index "]" ] | "." | ".." | "@" name
 *      index   = number | "*"
 *
 *  A path that begins with "/" starts at the root, whose name its first segment must be; any other starts at
 *  the cursor. Indices count from 1 among the children of one name; a missing one is 1. "[*]" stands for each
 *  of them and may occur once. "[0]", and an index that is no number, reach the first child of any kind.
 *  A last segment "@name" names an attribute. At most 50 segments. */
#ifndef KALV_PATH_H
#define KALV_PATH_H

#include <kalv/document.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Parses a path into the slot's path stack; its last element name becomes the requested tag.
 *  A refused path leaves the stack empty.
 *  \param[in] fd    the document
 *  \param[in] path  the path
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_ERR_ARGUMENT null, empty, "/", ".x" or a second "[*]"; #KH_ERR_PATH_LENGTH more
 *          than 50 nodes; #KH_ERR_DESCRIPTOR; #KH_ERR_NO_DOCUMENT; #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_chop_path(long* fd, const char* path, long* ierr);

/** Walks the path stack from the root or the cursor; the cursor moves to the node reached. A last attribute
 *  is not walked.
 *  \param[in] fd    the document
 *  \param[out] ierr 0; #KH_WARN_ROOT_REACHED the last ".." met the root; the descriptor checks;
 *                   #KH_ERR_ARGUMENT the path's first node is not the root's name (the root is returned)
 *  \return the node; null, without a status of its own, where the path leads nowhere */
KH_EXPORT struct _xmlNode* kh_tree_go_to_stack_node(long* fd, long* ierr);

/** Moves the cursor along a path.
 *  \param[in] fd    the document
 *  \param[in] path  the path
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_WARN_ROOT_REACHED; the descriptor checks; what kh_tree_chop_path() and
 *          kh_tree_go_to_stack_node() report; #KH_ERR_NOT_FOUND the path leads nowhere: the cursor stays, or
 *          stands on the last sibling tried */
KH_EXPORT long kh_tree_go_to_path_node(long* fd, const char* path, long* ierr);

/** Walks the path stack up to its array node; the cursor moves there. Does not set `*ierr` to 0 on entry.
 *  \param[in] fd the document
 *  \param[in] k  the 0-based index to take at the array node
 *  \param[in,out] ierr #KH_ERR_ARGUMENT null or negative `k`, or a wrong root name (the root is returned);
 *                   #KH_ERR_NOT_ARRAY no array node; #KH_WARN_ROOT_REACHED; the descriptor checks
 *  \return the node, or null */
KH_EXPORT struct _xmlNode* kh_tree_go_to_stack_array_node(long* fd, long* k, long* ierr);

/** Walks the path stack behind its array node, from the cursor; the cursor moves to the node reached. Does
 *  not set `*ierr` to 0 on entry.
 *  \param[in] fd the document
 *  \param[in,out] ierr #KH_ERR_NOT_ARRAY no array node; #KH_WARN_ROOT_REACHED; the descriptor checks
 *  \return the node, or null */
KH_EXPORT struct _xmlNode* kh_tree_go_to_stack_from_array_node(long* fd, long* ierr);

/** Writes the path of the cursor, such as "/Root/List/Item[2]/Value". An index is written where the element
 *  has siblings of its name.
 *  \param[in] fd    the document
 *  \param[out] out  the path; the caller provides the room for all of it
 *  \param[out] ierr the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_NO_CURRENT; #KH_ERR_NOT_ELEMENT; #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_get_path(long* fd, char* out, long* ierr);

#ifdef __cplusplus
}
#endif

#endif
