/** \file build.h
 *  Building, editing and writing documents. Needs only C99; for the conventions see status.h.
 *
 *  Where an argument is a path, the cursor first goes along it as kh_tree_go_to_path_node() does, and what
 *  that reports ("a path's code" below) is passed on; "." is the node under the cursor. Names must be names
 *  that XML allows (colons are free, a prefix need not be declared; but none as "a:b:1", which libxml2 does
 *  not read), values must be UTF-8 without characters that XML forbids: anything else reports
 *  #KH_ERR_ARGUMENT and nothing changes.
 *
 *  The adding functions return a number that is not 0 on success, and the status on failure. */
#ifndef KALV_BUILD_H
#define KALV_BUILD_H

#include <kalv/document.h>

#ifdef __cplusplus
extern "C" {
#endif

/** \name Nodes
 *  Added elements stand on a line of their own, two spaces deeper than their parent. */
/**@{*/

/** Gives a document its root element; the cursor stands on it.
 *  \param[in] fd    the document
 *  \param[in] name  the root's name
 *  \param[out] ierr the status
 *  \return not 0; else #KH_ERR_DESCRIPTOR, #KH_ERR_NO_DOCUMENT, #KH_ERR_ARGUMENT, #KH_ERR_ROOT_EXISTS or
 *          #KH_ERR_CREATE_NODE */
KH_EXPORT long kh_tree_create_root(long* fd, const char* name, long* ierr);

/** Adds an element as last child of the node at `path`, in the namespace of that node; the cursor moves to
 *  it. A text directly before it is its indentation and is replaced.
 *  \param[in] fd    the document
 *  \param[in] path  the parent
 *  \param[in] name  the element's name
 *  \param[out] ierr the status
 *  \return not 0; else #KH_ERR_ARGUMENT, a path's code, or #KH_ERR_CREATE_NODE */
KH_EXPORT long kh_tree_add_child(long* fd, const char* path, const char* name, long* ierr);

/** Adds an element right after the node at `path`; the cursor moves to it.
 *  \param[in] fd    the document
 *  \param[in] path  the node beside it
 *  \param[in] name  the element's name
 *  \param[out] ierr the status
 *  \return not 0; else #KH_ERR_ARGUMENT, a path's code, #KH_ERR_CREATE_NODE, or #KH_ERR_ADD_SIBLING, also for
 *          the root, which has no siblings */
KH_EXPORT long kh_tree_add_next_sibling(long* fd, const char* path, const char* name, long* ierr);

/** Adds an element right before the node at `path`; the cursor moves to it.
 *  \param[in] fd    the document
 *  \param[in] path  the node beside it
 *  \param[in] name  the element's name
 *  \param[out] ierr the status
 *  \return as kh_tree_add_next_sibling() */
KH_EXPORT long kh_tree_add_previous_sibling(long* fd, const char* path, const char* name, long* ierr);

/** Inserts a node beside another, and the indentation between them; the cursor moves to it.
 *  \param[in] fd        the document
 *  \param[in] reference a node of the document other than its root
 *  \param[in] added     a node without parent; stays the caller's on failure
 *  \param[in] insert    libxml2's `xmlAddNextSibling` or `xmlAddPrevSibling`
 *  \param[out] ierr     the status
 *  \return not 0; else the descriptor checks, #KH_ERR_ARGUMENT, #KH_ERR_ADD_SIBLING or #KH_ERR_CREATE_NODE */
KH_EXPORT long kh_tree_add_sibling(long* fd, struct _xmlNode* reference, struct _xmlNode* added,
                                   struct _xmlNode* (*insert)(struct _xmlNode*, struct _xmlNode*),
                                   long* ierr);

/** Adds an attribute without value to the element at `path`, where the cursor moves. One that the element
 *  already has, a namespace declaration of that name included, is left as it is, with success.
 *  \param[in] fd    the document
 *  \param[in] path  the element
 *  \param[in] name  the attribute's name
 *  \param[out] ierr the status
 *  \return not 0; else #KH_ERR_ARGUMENT, a path's code, #KH_ERR_NOT_ELEMENT or #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_add_attribute(long* fd, const char* path, const char* name, long* ierr);

/** Removes the attribute at `path`, or the node there with all below it. The text directly before an element
 *  is its indentation and goes too; the cursor moves to the parent. Without root, a document can get a new
 *  one.
 *  \param[in] fd    the document
 *  \param[in] path  the attribute or node
 *  \param[out] ierr the status
 *  \return the status: 0; a path's code; #KH_ERR_NOT_FOUND no such attribute; #KH_ERR_REMOVE_NODE */
KH_EXPORT long kh_tree_remove_node(long* fd, const char* path, long* ierr);

/** Appends a copy of a node of another file, with all below it, to the element at `path`; the cursor stays on
 *  that element. No indentation is added.
 *  \param[in] fd          the document
 *  \param[in] path        the element that gets the copy, from the root
 *  \param[in] source_file the file; it may be the document's own
 *  \param[in] source_path the node in it
 *  \param[out] ierr       the status
 *  \return the status: 0; #KH_ERR_ARGUMENT; the descriptor checks; #KH_ERR_NOT_FOUND for either path,
 *          whatever is wrong with it; #KH_ERR_NOT_ELEMENT; #KH_ERR_PARSE the file could not be opened;
 *          #KH_ERR_MEMORY */
KH_EXPORT long kh_copy_node(long* fd, const char* path, const char* source_file, const char* source_path,
                            long* ierr);
/**@}*/

/** \name Values */
/**@{*/

/** Sets the text of an element, which replaces all its children, or an attribute, which is made when the
 *  element lacks it; the cursor moves to the element.
 *
 *  In an element, "&" begins a reference where it is one (`&amp;`, `&#38;` or an entity that the document
 *  declares), and stands for itself everywhere else.
 *  \param[in] fd     the document
 *  \param[in] path   the element or attribute
 *  \param[in] value  the value; a number by its address
 *  \param[in] format prints the value: at most one conversion, which must fit the type of the value ("%s";
 *                    d i o u x X; a A e E f F g G), without "*" and "n". It is handed to `vsnprintf` in the
 *                    "C" locale: give "%ld" for integers, since "%d" prints the low 32 bits of a `long`. 510
 *                    bytes are kept.
 *  \param[out] ierr  the status
 *  \return the status: 0; #KH_WARN_LENGTH the text was cut; #KH_ERR_ARGUMENT null, not UTF-8, or a forbidden
 *          character; a path's code; #KH_ERR_NOT_ELEMENT; #KH_ERR_FORMAT; #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_set_string_node_value(long* fd, const char* path, const char* value,
                                             const char* format, long* ierr);
KH_EXPORT long kh_tree_set_integer_node_value(long* fd, const char* path, const long* value,
                                              const char* format, long* ierr);
KH_EXPORT long kh_tree_set_real_node_value(long* fd, const char* path, const double* value,
                                           const char* format, long* ierr);

/** The same with the value as last argument, behind the status word, of the type that the format's conversion
 *  asks for: a text, `long` or `double`.
 *  \param[in] fd     the document
 *  \param[in] path   the element or attribute
 *  \param[in] format as for kh_tree_set_string_node_value()
 *  \param[out] ierr  the status
 *  \return as kh_tree_set_string_node_value() */
KH_EXPORT long kh_tree_set_node_value(long* fd, const char* path, const char* format, long* ierr, ...);

/** The same with a text of any length as it is: no format, and "&" always stands for itself.
 *  \param[in] fd    the document
 *  \param[in] path  the element or attribute
 *  \param[in] text  the text
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_ERR_ARGUMENT null, not UTF-8, or a forbidden character; a path's code;
 *          #KH_ERR_NOT_ELEMENT; #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_set_text(long* fd, const char* path, const char* text, long* ierr);
/**@}*/

/** \name Files */
/**@{*/

/** Completes the indentation and saves the document. A file of that name is replaced only when the new one is
 *  complete, and keeps its mode bits; a symbolic link is followed; "-" is standard output. What is not a
 *  regular file, or lies in a folder that cannot be written to, is written in place.
 *  \param[in] fd        the document
 *  \param[in] file_name the file
 *  \param[out] ierr     the status. A failed indentation leaves its code there, and the document is saved all
 *                       the same.
 *  \return the number of bytes written, before compression; else the descriptor checks, #KH_ERR_ARGUMENT or
 *          #KH_ERR_SAVE */
KH_EXPORT long kh_tree_write(long* fd, const char* file_name, long* ierr);

/** Completes the indentation and hands out the bytes that kh_tree_write() writes, never compressed.
 *  \param[in] fd    the document
 *  \param[out] data a fresh block with a zero byte behind the document, to be freed with `free`; null when it
 *                   could not be made. What it held before is not freed
 *  \param[out] size how many bytes, without the zero byte; -1 with null data
 *  \param[out] ierr the status
 *  \return the number of bytes; else the descriptor checks, #KH_ERR_ARGUMENT or #KH_ERR_SAVE. A failed
 *          indentation leaves its code in `*ierr`, and the document is handed out all the same */
KH_EXPORT long kh_tree_write_memory(long* fd, char** data, long* size, long* ierr);

/** Saves the document with the indentation that it has; else as kh_tree_write().
 *  \param[in] fd        the document
 *  \param[in] file_name the file
 *  \param[out] ierr     the status
 *  \return the number of bytes written, before compression; else the descriptor checks, #KH_ERR_ARGUMENT or
 *          #KH_ERR_SAVE */
KH_EXPORT long kh_tree_save(long* fd, const char* file_name, long* ierr);

/** Puts the closing tags of the elements below a node, and of those beside and after it, on lines of their
 *  own.
 *  \param[in] fd    the document
 *  \param[in] node  the node
 *  \param[out] ierr the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT; #KH_ERR_CREATE_NODE;
 *          #KH_ERR_ADD_SIBLING */
KH_EXPORT long kh_tree_traverse_and_format(long* fd, struct _xmlNode* node, long* ierr);
/**@}*/

/** \name Schema references */
/**@{*/

/** Sets or removes the schema references of the element under the cursor. Reports nothing: bad arguments, or
 *  a cursor that is no element, change nothing.
 *  \param[in] fd     the document
 *  \param[in] schema a file name below the family's schema site; or a namespace URI, a space and a location
 *  \param[in] mode   0 sets location, version and default namespace; 1 location and default namespace; 2
 *                    removes the references with all declarations and attributes of the element; 3 removes
 *                    the location if the element declares the prefix "xsi", else as 2 */
KH_EXPORT void KH_Set_Schema(long* fd, const char* schema, const long* mode);

/** Opens a file, sets or removes the schema references of its root, writes it back and closes it.
 *  \param[in] file_name the file
 *  \param[in] schema    as for KH_Set_Schema()
 *  \param[in] mode      as for KH_Set_Schema()
 *  \param[out] ierr     the status
 *  \return the status: 0; #KH_ERR_ARGUMENT null argument, or a text to be set that no file can hold;
 *          #KH_ERR_PARSE; #KH_ERR_ARGUMENT mode outside 0 to 3: the document then stays open, which callers
 *          rely on; #KH_ERR_SAVE */
KH_EXPORT long kh_set_schema(const char* file_name, const char* schema, const long* mode, long* ierr);
/**@}*/

#ifdef __cplusplus
}
#endif

#endif
