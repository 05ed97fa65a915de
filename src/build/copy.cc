// Copying a node with all below it from one document into another. Without recursion: depth is no limit.
#include "build/node_list.h"
#include "read/expand.h"
#include "tree/document.h"

#include <algorithm>
#include <kalv/build.h>
#include <kalv/cursor.h>
#include <kalv/path.h>
#include <libxml/entities.h>
#include <string>
#include <unordered_map>
#include <vector>

namespace kh {

namespace {

const xmlEntity* entity_of(const xmlNode* reference) noexcept
{
    return xmlGetDocEntity(reference->doc, reference->name);
}

/// Thrown where libxml2 cannot make a node, or where entities would multiply beyond every measure.
[[noreturn]] void fail()
{
    throw std::bad_alloc();
}

template <class Pointer>
Pointer made(Pointer pointer)
{
    if (!pointer)
        fail();
    return pointer;
}

/// Copies into a fragment, which becomes part of the target document as a whole or not at all.
class Copier {
public:
    explicit Copier(xmlDoc* document) : document_(document), fragment_(made(xmlNewDocFragment(document))) {}

    /// Copies a node and what is below it.
    void copy(const xmlNode* source)
    {
        copy_node(source, fragment_.get());
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (const xmlNode* node = level.next) {
                level.next = node->next;
                copy_node(node, level.parent);
            } else {
                end_level();
            }
        }
        end_text(fragment_.get());
    }

    /// Appends the copies to an element.
    void append_to(xmlNode* element)
    {
        while (xmlNode* node = fragment_->children) {
            xmlUnlinkNode(node);
            xmlAddChild(element, node);
        }
    }

private:
    /// Nodes of the source under way, the copy that gets them, and the entity that they are the content of,
    /// if any.
    struct Level {
        const xmlNode* next;
        xmlNode* parent;
        const xmlEntity* entity;
    };

    /// Entities may multiply; what they add up to in nodes and bytes ends here, as it does for attributes.
    static constexpr std::size_t most_from_entities = 10000000;

    void copy_node(const xmlNode* source, xmlNode* parent)
    {
        count_expanded(source);
        if (source->type == XML_TEXT_NODE) {
            text_ += content_of(source);
        } else if (source->type == XML_ENTITY_REF_NODE) {
            copy_reference(source, parent);
        } else if (XmlNode node = new_node(source)) {
            xmlNode* copy = append(std::move(node), parent);
            if (!is_element(copy))
                return;
            copy_names(source, copy);
            levels_.push_back({source->children, copy, nullptr});
        }
    }

    /// A copy without what is below it, linked nowhere yet. Null for what has no place in an element.
    XmlNode new_node(const xmlNode* source)
    {
        switch (source->type) {
        case XML_ELEMENT_NODE:
            return XmlNode(made(xmlNewDocNode(document_, nullptr, source->name, nullptr)));
        case XML_CDATA_SECTION_NODE:
            return XmlNode(
                made(xmlNewCDataBlock(document_, to_xml(content_of(source)), xmlStrlen(source->content))));
        case XML_COMMENT_NODE:
            return XmlNode(made(xmlNewDocComment(document_, to_xml(content_of(source)))));
        case XML_PI_NODE:
            return XmlNode(made(xmlNewDocPI(document_, source->name, source->content)));
        default:
            return nullptr;
        }
    }

    /// An entity that the target declares stays a reference; any other becomes what it stands for.
    void copy_reference(const xmlNode* source, xmlNode* parent)
    {
        const xmlEntity* entity = entity_of(source);
        if (is_declared(source)) {
            append(new_reference(source), parent);
        } else if (entity && std::find(active_.begin(), active_.end(), entity) == active_.end()) {
            active_.push_back(entity);
            references_.push_back(source);
            levels_.push_back({entity->children, parent, entity});
        }
    }

    void end_level()
    {
        const Level level = levels_.back();
        levels_.pop_back();
        if (level.entity) { // the text goes on behind the entity
            active_.pop_back();
            references_.pop_back();
        } else {
            end_text(level.parent);
        }
    }

    /// Texts that meet become one, as they will be when the file is read again.
    void end_text(xmlNode* parent)
    {
        if (text_.empty())
            return;
        XmlNode node(made(xmlNewDocText(document_, to_xml(text_.c_str()))));
        text_.clear();
        link(std::move(node), parent);
    }

    xmlNode* append(XmlNode node, xmlNode* parent)
    {
        end_text(parent);
        return link(std::move(node), parent);
    }

    static xmlNode* link(XmlNode node, xmlNode* parent) noexcept
    {
        node->parent = parent;
        node->prev = parent->last;
        (parent->last ? parent->last->next : parent->children) = node.get();
        return parent->last = node.release();
    }

    /// Namespace declarations, namespace and attributes of an element.
    void copy_names(const xmlNode* source, xmlNode* copy)
    {
        if (copy->parent == fragment_.get())
            top_ = copy;
        for (const xmlNs* declaration = source->nsDef; declaration; declaration = declaration->next)
            if (declaration->href)
                spaces_[declaration] = made(xmlNewNs(copy, declaration->href, declaration->prefix));
        if (const xmlNs* space = namespace_of(source))
            copy->ns = copied(space);
        for (const xmlAttr* attribute = source->properties; attribute; attribute = attribute->next) {
            xmlNs* space = attribute->ns ? copied(attribute->ns) : nullptr;
            copy_attribute_text(attribute, made(xmlNewNsProp(copy, space, attribute->name, nullptr)));
        }
    }

    /// The namespace of an element. libxml2 reads what an entity holds without the elements around the
    /// reference. Of a namespace that only those declare it keeps a declaration without URI, and the namespace
    /// is the one of its prefix at the reference.
    const xmlNs* namespace_of(const xmlNode* element) const noexcept
    {
        const xmlNs* missing = element->ns ? nullptr : element->nsDef;
        while (missing && missing->href)
            missing = missing->next;
        if (!missing)
            return element->ns;
        for (auto reference = references_.rbegin(); reference != references_.rend(); ++reference)
            if (const xmlNs* found = search_namespace((*reference)->parent, missing->prefix))
                return found;
        return nullptr;
    }

    /// The copy of a namespace. One that is declared above the copied node is declared on top of the copy.
    xmlNs* copied(const xmlNs* source)
    {
        xmlNs*& copy = spaces_[source];
        if (!copy && xmlStrEqual(source->prefix, to_xml("xml")))
            copy = made(search_namespace(top_, source->prefix));
        if (!copy)
            copy = xmlNewNs(top_, source->href, source->prefix);
        if (!copy) // the top declares that prefix itself
            copy = made(search_namespace(top_, source->prefix));
        return copy;
    }

    void copy_attribute_text(const xmlAttr* source, xmlAttr* copy)
    {
        NodeList nodes;
        std::string text;
        const auto end_run = [&] {
            if (!text.empty())
                made(nodes.add(XmlNode(xmlNewDocText(document_, to_xml(text.c_str())))));
            text.clear();
        };
        for (const xmlNode* node = source->children; node; node = node->next) {
            if (node->type != XML_ENTITY_REF_NODE) {
                text += content_of(node);
            } else if (is_declared(node)) {
                end_run();
                made(nodes.add(new_reference(node)));
            } else if (const xmlEntity* entity = entity_of(node)) {
                made(expand(entity->children, text));
            }
        }
        end_run();
        nodes.replace_children_of(reinterpret_cast<xmlNode*>(copy));
    }

    bool is_declared(const xmlNode* reference) const noexcept
    {
        return xmlGetDocEntity(document_, reference->name);
    }

    XmlNode new_reference(const xmlNode* source)
    {
        return XmlNode(made(xmlNewReference(document_, source->name)));
    }

    void count_expanded(const xmlNode* node)
    {
        if (active_.empty())
            return;
        from_entities_ += 1 + std::strlen(content_of(node));
        made(from_entities_ <= most_from_entities);
    }

    xmlDoc* document_;
    XmlNode fragment_;
    xmlNode* top_ = nullptr;
    std::string text_;
    std::vector<Level> levels_;
    std::vector<const xmlEntity*> active_;
    std::vector<const xmlNode*> references_; ///< to the active entities
    std::size_t from_entities_ = 0;
    std::unordered_map<const xmlNs*, xmlNs*> spaces_;
};

bool append_copy(xmlNode* element, const xmlNode* source) noexcept
{
    const ParserCall call;
    try {
        Copier copier(element->doc);
        copier.copy(source);
        if (call.out_of_memory())
            return false;
        copier.append_to(element);
        return !call.out_of_memory();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// A second document, closed with this object where it was opened.
class Source {
public:
    Source(const char* file_name, long* ierr) noexcept
        : fd_(kh_tree_init_parser(file_name, ierr)), is_open_(*ierr == KH_OK)
    {
    }
    ~Source()
    {
        long ignored = KH_OK;
        if (is_open_)
            close(&ignored);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    bool is_open() const noexcept { return is_open_; }
    long* fd() noexcept { return &fd_; }

    long close(long* ierr) noexcept
    {
        is_open_ = false;
        return kh_tree_cleanup_parser(&fd_, ierr);
    }

private:
    long fd_;
    bool is_open_;
};

} // namespace

} // namespace kh

long kh_copy_node(long* fd, const char* path, const char* source_file, const char* source_path, long* ierr)
{
    kh::Operation op("kh_copy_node", ierr);
    if (!fd || !path || !source_file || !source_path)
        return op.null_argument();
    kh_tree_rewind(fd, op.error_vector());
    if (op.failed())
        return op.pass_on();
    kh_tree_go_to_path_node(fd, path, op.error_vector());
    if (op.failed())
        return op.pass_on(KH_ERR_NOT_FOUND);
    kh::Document* document = kh::find_document(fd);
    xmlNode* target = document->current;
    if (!kh::is_element(target))
        return op.fail(KH_ERR_NOT_ELEMENT);
    kh::Source source(source_file, op.error_vector());
    if (!source.is_open())
        return op.pass_on(KH_ERR_PARSE);
    kh_tree_go_to_path_node(source.fd(), source_path, op.error_vector());
    if (op.failed())
        return op.pass_on(KH_ERR_NOT_FOUND);
    document->edited();
    if (!kh::append_copy(target, kh::find_document(source.fd())->current))
        return op.fail(KH_ERR_MEMORY);
    return source.close(op.error_vector());
}
