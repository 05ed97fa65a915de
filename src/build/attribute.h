// Attributes by the name that stands in the file: "xsi:x" is one name, and "xmlns" and "xmlns:p" name the
// element's namespace declarations. No element ever gets two of one name, which no parser would read.
#ifndef KALV_BUILD_ATTRIBUTE_H
#define KALV_BUILD_ATTRIBUTE_H

#include "build/identifier.h"

namespace kh {

/// The attribute that is written with a name; null where there is none.
xmlAttr* attribute_written(const xmlNode* element, const char* name) noexcept;

/// The namespace declaration that is written with a name; null where there is none.
xmlNs* declaration_written(const xmlNode* element, const char* name) noexcept;

/// A value that an attribute or a namespace declaration is about to get. Everything that takes memory happens
/// while it is made; nothing has changed until put_in(), which cannot fail. What makes one returns false when
/// memory runs out.
class NewValue {
public:
    /// For what is written with a name. An element gets the attribute that it lacks.
    bool make(xmlNode* element, const char* name, const char* value) noexcept;

    /// For the attribute of a local name in a namespace, or the one that is written alike. May throw
    /// std::bad_alloc.
    bool make_in(xmlNode* element, xmlNs* space, const char* local_name, const char* value);

    /// For a declaration: its URI.
    bool make_uri(xmlNs* declaration, const char* uri) noexcept;

    /// Called at most once. Does nothing where none was made.
    void put_in() noexcept;

private:
    struct FreeAttribute {
        void operator()(xmlAttr* attribute) const noexcept { xmlFreeProp(attribute); }
    };

    bool make_text(xmlAttr* attribute, const char* value) noexcept;
    bool make_attribute(xmlNode* element, xmlNs* space, const xmlChar* local_name,
                        const char* value) noexcept;

    xmlNs* declaration_ = nullptr;
    XmlText uri_;
    xmlAttr* attribute_ = nullptr;
    xmlNs* space_ = nullptr; ///< that the attribute is in from now on, if it changes
    XmlNode text_;
    std::unique_ptr<xmlAttr, FreeAttribute> added_; ///< the attribute, where the element lacks it
    NewIdentifier identifier_;                      ///< undone before the attribute is freed
};

/// Sets an attribute, or the URI of a declaration; makes the attribute when the element lacks it.
/// \return false when memory runs out, and nothing has changed
bool set_attribute(xmlNode* element, const char* name, const char* value) noexcept;

/// Makes the namespace URIs that an element declares fit to be written: the parser leaves a "<", a tab or a line break
/// in them, and the serialiser writes it as it stands, which no parser reads as the same. \return false when memory
/// runs out
bool escape_declarations(const xmlNode* element) noexcept;

/// Takes an attribute off its element and frees it. \return false when it is not one of that element's
bool remove_attribute(xmlAttr* attribute) noexcept;

/// An attribute that is about to be removed: it is off its element, and comes back where it was unless it is
/// dropped. Several come back in the reverse order.
class RemovedAttribute {
public:
    /// \param attribute may be null
    explicit RemovedAttribute(xmlAttr* attribute) noexcept;
    ~RemovedAttribute();
    RemovedAttribute(const RemovedAttribute&) = delete;
    RemovedAttribute& operator=(const RemovedAttribute&) = delete;

    void drop() noexcept;

private:
    xmlAttr*& link_to() const noexcept;

    xmlAttr* attribute_;
};

} // namespace kh

#endif
