/** \file node.h
 *  The nodes of a document, one by one: what they are, and inserting and deleting exactly one of them. Needs
 *  only C99; for the conventions see status.h.
 *
 *  Texts in the structures below are UTF-8 and never null, unless said otherwise; they belong to the document
 *  and are valid until it is edited or released. A node is given as libxml2's pointer, as the cursor is; one
 *  from `kh_tree_describe()` or from another node's description. */
#ifndef KALV_NODE_H
#define KALV_NODE_H

#include <kalv/document.h>

#ifdef __cplusplus
extern "C" {
#endif

struct _xmlNs;

/** What a node is. */
enum kh_node_kind {
    KH_NODE_OTHER = 0,       /**< None of these. */
    KH_NODE_ELEMENT = 1,     /**< An element. */
    KH_NODE_TEXT = 2,        /**< A text. */
    KH_NODE_CDATA = 3,       /**< A CDATA section. */
    KH_NODE_REFERENCE = 4,   /**< A reference to an entity. */
    KH_NODE_COMMENT = 5,     /**< A comment. */
    KH_NODE_INSTRUCTION = 6, /**< A processing instruction. */
    KH_NODE_DOCTYPE = 7      /**< The document type declaration. */
};

/** The description of a node. */
typedef struct kh_node {
    long kind;          /**< A ::kh_node_kind. */
    long line;          /**< The line of the file that it was read from; 0 where that is not known: for a node
                             that was added, and from line 65535 on. */
    const char* prefix; /**< The namespace prefix of an element; else empty. */
    const char* name;   /**< The name of an element without prefix, the target of an instruction, the name of
                             the entity referred to or of the document type; else empty. */
    const char* content;     /**< What a text, CDATA section, comment or instruction holds; else empty. */
    struct _xmlNode* parent; /**< The element above; null for the root and what stands beside it. */
    struct _xmlNode* first_child; /**< Null for a node without children, and for everything but elements. */
    struct _xmlNode* previous;    /**< The sibling before; null for the first. */
    struct _xmlNode* next;        /**< The sibling behind; null for the last. */
} kh_node;

/** Describes a node.
 *  \param[in] node the node; null does nothing
 *  \param[out] description is written; null does nothing
 *  \return 1; 0 where nothing was done */
KH_EXPORT long kh_node_describe(const struct _xmlNode* node, kh_node* description);

/** The description of an attribute or namespace declaration. */
typedef struct kh_attribute {
    const char* prefix; /**< The namespace prefix, or empty; "xmlns" for the declaration of a prefix. */
    const char* name;   /**< The name without prefix; "xmlns" for the declaration of the default namespace. */
    const char* value;  /**< The value of a declaration, in which an ampersand stands as `&#38;`, and what
                             was set or has been written also has references for "<", tabs and line
                             breaks; or of an attribute without references; null for one with
                             references to entities. */
    struct _xmlNode* first_child;    /**< The first text or reference of an attribute's value; null for an
                                          empty one and for a declaration. */
    struct _xmlNs* next_declaration; /**< The library's own. */
    struct _xmlAttr* next_attribute; /**< The library's own. */
} kh_attribute;

/** Describes the first attribute of an element: its namespace declarations come first, then its attributes,
 *  each in the order of the file.
 *  \param[in] element the element
 *  \param[out] description is written where there is an attribute
 *  \return 1; 0 for no attribute, no element and null */
KH_EXPORT long kh_node_first_attribute(const struct _xmlNode* element, kh_attribute* description);

/** Describes the attribute behind the one that was described last.
 *  \param[in,out] description from kh_node_first_attribute(); stays as it is where there is no other
 *  \return 1; 0 where there is no other */
KH_EXPORT long kh_node_next_attribute(kh_attribute* description);

/** The description of a document. */
typedef struct kh_document {
    const char* version;  /**< The version of XML. */
    const char* encoding; /**< The encoding that is declared; empty without one. */
    long standalone; /**< 1 "yes", 0 "no", -1 the file has no declaration, -2 it has one that does not say. */
    long compressed; /**< 1 where the file will be compressed when it is written, else 0. */
    struct _xmlNode* first_node; /**< The first of the nodes that stand beside each other on top: comments,
                                      instructions, the document type and the root; null for none. */
} kh_document;

/** Describes a document, which needs no root.
 *  \param[in] fd the document
 *  \param[out] description is written on success
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_ERR_DESCRIPTOR; #KH_ERR_NO_DOCUMENT; #KH_ERR_ARGUMENT */
KH_EXPORT long kh_tree_describe(long* fd, kh_document* description, long* ierr);

/** The document type declaration, "<!DOCTYPE ...>", as it will be written.
 *  \param[in] fd the document
 *  \param[out] text receives a fresh block; null on failure
 *  \param[out] ierr the status
 *  \return the status: 0; #KH_ERR_DESCRIPTOR; #KH_ERR_NO_DOCUMENT; #KH_ERR_ARGUMENT; #KH_ERR_NOT_FOUND
 *          there is none; #KH_ERR_MEMORY */
KH_EXPORT long kh_tree_get_doctype(long* fd, char** text, long* ierr);

/** Moves the cursor to a node.
 *  \param[in] fd    the document
 *  \param[in] node  the node
 *  \param[out] ierr the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT null, or a node of another document */
KH_EXPORT long kh_tree_go_to_node(long* fd, struct _xmlNode* node, long* ierr);

/** Inserts one node, and no indentation. The cursor stays. Texts that then stand side by side stay two nodes
 *  until the file is read again.
 *  \param[in] fd     the document
 *  \param[in] parent the element that gets it
 *  \param[in] before the child that will stand behind it; null: it becomes the last child
 *  \param[in] kind   #KH_NODE_ELEMENT or #KH_NODE_TEXT
 *  \param[in] text   the element's name, of which a prefix must be declared to be one; or the text, literally
 *  \param[out] ierr  the status: 0; the descriptor checks; #KH_ERR_ARGUMENT null, nodes that are not of this
 *                    document or not parent and child, another kind, a name or text that XML does not allow;
 *                    #KH_ERR_NOT_ELEMENT the parent; #KH_ERR_CREATE_NODE memory ran out
 *  \return the node; null on failure, and nothing has changed */
KH_EXPORT struct _xmlNode* kh_tree_insert_node(long* fd, struct _xmlNode* parent, struct _xmlNode* before,
                                               long kind, const char* text, long* ierr);

/** Deletes a node with all below it, and no text around it. The cursor stays; from a node that is deleted it
 *  goes to the element above. Without root, a document can get a new one.
 *  \param[in] fd    the document
 *  \param[in] node  the node
 *  \param[out] ierr the status
 *  \return the status: 0; the descriptor checks; #KH_ERR_ARGUMENT null, or a node of another document;
 *          #KH_ERR_REMOVE_NODE the document type */
KH_EXPORT long kh_tree_delete_node(long* fd, struct _xmlNode* node, long* ierr);

#ifdef __cplusplus
}
#endif

#endif
