/** \file cursor.h
 *  The cursor of a document and its moves. Needs only C99; for the conventions see status.h.
 *
 *  Names are compared byte for byte and without namespace prefix. An entity reference has no children for any
 *  of these moves. */
#ifndef KALV_CURSOR_H
#define KALV_CURSOR_H

#include <kalv/document.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Moves the cursor to the root element. The requested tag stays as it is.
 *  \param[in] fd    the document
 *  \param[out] ierr the status
 *  \return the status: 0, or what the descriptor checks report */
KH_EXPORT long kh_tree_rewind(long* fd, long* ierr);

/** Moves the cursor forward in document order to the next element called `name`; never to the element that it
 *  stands on.
 *  \param[in] fd   the document
 *  \param[in] name becomes the requested tag; null: the tag requested before
 *  \param[out] ierr the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_NO_REQUEST no tag; #KH_ERR_NOT_FOUND no such element
 *          follows, the cursor stays; #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_go_to_element_node(long* fd, const char* name, long* ierr);

/** Moves the cursor forward in document order to the next element of any name.
 *  \param[in] fd    the document
 *  \param[out] ierr the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_NOT_FOUND none follows, the cursor stays */
KH_EXPORT long kh_tree_go_to_next_element_node(long* fd, long* ierr);

/** The node after another in document order: its first child, else the next sibling of the nearest
 *  ancestor-or-self that has one.
 *  \param[in] node the node
 *  \return the node after it, or null */
KH_EXPORT struct _xmlNode* kh_tree_get_next_node(struct _xmlNode* node);

/** The next sibling of the nearest ancestor-or-self that has one. The climb ends at the document, not at the
 *  root element.
 *  \param[in] node the node
 *  \return the sibling, or null */
KH_EXPORT struct _xmlNode* kh_tree_get_parent_next_node(struct _xmlNode* node);

/** The search behind the two moves: every element met counts as visited.
 *  \param[in] fd   the document
 *  \param[in] mode 1: the next element; any other number: the next element of the requested tag
 *  \return the element, which the cursor then stands on; null when there is none, the cursor stays */
KH_EXPORT struct _xmlNode* kh_tree_get_next_element_node(long* fd, int mode);

/** Sets the requested tag, and the count of visited elements to 0.
 *  \param[in] fd   the document
 *  \param[in] name is copied; null: no tag */
KH_EXPORT void kh_tree_set_requested_tag(long* fd, const char* name);

/** Tells whether the last path ends with an attribute.
 *  \param[in] fd the document
 *  \return 1 when the last node of the last path names an attribute, else 0 */
KH_EXPORT long kh_tree_is_attribute(long* fd);

/** The next following sibling element of a name; the cursor moves to it.
 *  \param[in] fd   the document
 *  \param[in] node the node to start at
 *  \param[in] name the name
 *  \return the element; null when there is none, the cursor stays */
KH_EXPORT struct _xmlNode* kh_tree_go_to_next_sibling(long* fd, struct _xmlNode* node, const char* name);

/** The child element of a name with an index. The cursor moves along the siblings tried after the first
 *  child.
 *  \param[in] fd    the document
 *  \param[in] node  the parent
 *  \param[in] name  the name
 *  \param[in] index 0-based, among the children of that name; below 0 it gives the first child of any kind:
 *                   callers rely on it to reach a text
 *  \return the child, or null */
KH_EXPORT struct _xmlNode* kh_tree_go_to_child(long* fd, struct _xmlNode* node, const char* name, long index);

/** The parent of a node; the cursor stays.
 *  \param[in] fd   the document
 *  \param[in] node the node
 *  \param[out] ierr 0; #KH_WARN_ROOT_REACHED for the root; the descriptor checks; #KH_ERR_ARGUMENT null node
 *  \return the parent; the root for the root; null on failure */
KH_EXPORT struct _xmlNode* kh_tree_go_to_parent(long* fd, struct _xmlNode* node, long* ierr);

/** The attribute of an element.
 *  \param[in] node    the element
 *  \param[in] at_name "@" and the attribute's name; the first character is skipped, whatever it is
 *  \return the attribute, or null */
KH_EXPORT struct _xmlAttr* kh_tree_go_to_attribute(struct _xmlNode* node, const char* at_name);

/** The place of a node among the elements beside it that have its name.
 *  \param[in] node      the element; another node counts as one more
 *  \param[out] total    how many there are, the element included; may be null
 *  \param[out] position the 1-based place; may be null
 *  \return the total; 0 for a null node */
KH_EXPORT long kh_tree_get_sibling_index(struct _xmlNode* node, long* total, long* position);

/** How deep a node stands.
 *  \param[in] fd   the document
 *  \param[in] node the node
 *  \return the number of steps from the node up to the root; 0 for the root and for null; for a node that is
 *          not below the root, the number of steps to the top */
KH_EXPORT long kh_tree_distance_from_root(long* fd, struct _xmlNode* node);

#ifdef __cplusplus
}
#endif

#endif
