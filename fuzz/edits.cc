// Calls that edit, and what must have come of each.
#include "document.h"
#include "texts.h"

#include <cstring>

namespace fuzz {

namespace {

std::size_t count_elements(const Document& document)
{
    return elements(document.slot().doc).size();
}

bool is_at(const Document& document, const std::string& name)
{
    const xmlNode* node = document.slot().current;
    return node && node->type == XML_ELEMENT_NODE && name == chars(node->name);
}

/// Runs an editing function, and checks what became of the number of elements where it succeeded.
template <class Function, class... Arguments>
long counted(Document& document, long added, Function* function, Arguments... arguments)
{
    const std::size_t before = count_elements(document);
    const long status = document.edit(function, arguments...);
    if (status >= KH_OK)
        check(count_elements(document) == before + static_cast<std::size_t>(added), "one element was added");
    return status;
}

void add_element(Document& document, decltype(kh_tree_add_child)* add, const std::string& where,
                 const std::string& what)
{
    if (counted(document, 1, add, where.c_str(), what.c_str()) >= KH_OK)
        check(is_at(document, what), "the cursor stands on the element that was added");
}

void add_attribute(Document& document, const std::string& where, const std::string& what)
{
    const long status = counted(document, 0, kh_tree_add_attribute, where.c_str(), what.c_str());
    if (status != KH_OK)
        return;
    const xmlNode* element = document.slot().current;
    bool has = false;
    for (const xmlAttr* attribute = element->properties; attribute; attribute = attribute->next)
        has = has || what == (attribute->ns && attribute->ns->prefix
                                  ? std::string(chars(attribute->ns->prefix)) + ":" + chars(attribute->name)
                                  : chars(attribute->name));
    has = has || what.compare(0, 5, "xmlns") == 0;
    check(has, "the attribute is there");
}

void remove_node(Document& document, const std::string& where)
{
    const std::size_t before = count_elements(document);
    const bool is_attribute = PathModel(where).ends_with_attribute();
    const long status = document.edit(kh_tree_remove_node, where.c_str());
    if (status >= KH_OK && is_attribute)
        check(count_elements(document) == before, "removing an attribute takes no element away");
    if (status >= KH_OK && document.has_root())
        check(document.slot().current, "the cursor stands on what is left");
}

/// What was set is read back.
void set_text(Document& document, const std::string& where, const std::string& text)
{
    const long status = document.edit(kh_tree_set_text, where.c_str(), text.c_str());
    if (status != KH_OK || document.slot().array_position >= 0)
        return;
    const xmlNode* node = document.slot().current;
    const PathModel model(where);
    if (model.ends_with_attribute()) {
        const xmlAttr* attribute = attribute_of(node, model.segments.back().name.substr(1));
        check_result(model.segments.back().name.find(':') != std::string::npos ||
                         model.segments.back().name == "@xmlns" ||
                         (attribute && written_value_of(attribute) == text),
                     "an attribute has the text that was set");
    } else if (node->type == XML_ELEMENT_NODE) {
        check(value_of(node).text == text, "an element has the text that was set");
    } else {
        check(text == chars(node->content), "a text is what was set");
    }
}

void set_value(Document& document, const std::string& where, Bytes& bytes)
{
    const long kind = bytes.ConsumeIntegralInRange(0, 2);
    if (kind == 0) {
        const std::string text = value(bytes);
        document.edit(kh_tree_set_string_node_value, where.c_str(), text.c_str(),
                      bytes.ConsumeBool() ? "%s" : "<%7.3s>");
    } else if (kind == 1) {
        const long number = bytes.ConsumeIntegral<long>();
        if (document.edit(kh_tree_set_integer_node_value, where.c_str(), &number, "%ld") != KH_OK ||
            where.find('@') != std::string::npos || document.slot().current->type != XML_ELEMENT_NODE)
            return;
        check(value_of(document.slot().current).text == std::to_string(number), "an integer is set");
    } else {
        const double number = bytes.ConsumeFloatingPoint<double>();
        document.edit(kh_tree_set_real_node_value, where.c_str(), &number, "%.17g");
    }
}

/// Inserts beside or below some node.
void insert_node(Document& document, Bytes& bytes)
{
    const std::vector<xmlNode*> all = elements(document.slot().doc);
    if (all.empty())
        return;
    xmlNode* parent = all[bytes.ConsumeIntegralInRange<std::size_t>(0, all.size() - 1)];
    xmlNode* before = parent->children;
    for (auto i = bytes.ConsumeIntegralInRange(0, 3); before && i > 0; --i)
        before = before->next;
    const bool is_element = bytes.ConsumeBool();
    const std::string text = is_element ? name(bytes) : value(bytes);
    const xmlNode* cursor = document.slot().current;
    const long status = counted(document, is_element ? 1 : 0, kh_tree_insert_node, parent, before,
                                is_element ? long{KH_NODE_ELEMENT} : long{KH_NODE_TEXT}, text.c_str());
    check(document.slot().current == cursor, "inserting leaves the cursor");
    if (status == KH_OK) {
        const xmlNode* made = before ? before->prev : parent->last;
        check(made && made->parent == parent && (is_element || text == chars(made->content)),
              "the node is inserted in its place");
    }
}

void delete_node(Document& document, Bytes& bytes)
{
    const std::vector<xmlNode*> all = elements(document.slot().doc);
    if (all.empty())
        return;
    xmlNode* node = all[bytes.ConsumeIntegralInRange<std::size_t>(0, all.size() - 1)];
    if (bytes.ConsumeBool() && node->children)
        node = node->children;
    document.edit(kh_tree_delete_node, node);
}

/// Indents. Where memory ends, what has been indented stays so.
void format(Document& document)
{
    document.changes();
    status_of(kh_tree_traverse_and_format, document.fd(), document.slot().root);
    document.described();
}

void add_root(Document& document, const std::string& what)
{
    const bool had_root = document.has_root();
    const long status = document.edit(kh_tree_create_root, what.c_str());
    check(status != KH_OK ||
              (!had_root && is_at(document, what) && document.slot().current == document.slot().root),
          "a document has one root, where the cursor stands");
}

} // namespace

void check_edit(Document& document, Bytes& bytes)
{
    const std::string where = path(bytes);
    switch (bytes.ConsumeIntegralInRange(0, 12)) {
    case 0:
        add_root(document, name(bytes));
        break;
    case 1:
        add_element(document, kh_tree_add_child, where, name(bytes));
        break;
    case 2:
        add_element(document, kh_tree_add_next_sibling, where, name(bytes));
        break;
    case 3:
        add_element(document, kh_tree_add_previous_sibling, where, name(bytes));
        break;
    case 4:
        add_attribute(document, where, name(bytes));
        break;
    case 5:
        remove_node(document, where);
        break;
    case 6:
        set_text(document, where, value(bytes));
        break;
    case 7:
        set_value(document, where, bytes);
        break;
    case 8:
        check_schema(document, bytes.ConsumeBool() ? "Some_0102.XSD" : value(bytes),
                     bytes.ConsumeIntegralInRange(0L, 3L));
        break;
    case 9:
        insert_node(document, bytes);
        break;
    case 10:
        delete_node(document, bytes);
        break;
    case 11:
        if (document.has_root() && bytes.ConsumeBool())
            format(document);
        break;
    default:
        document.go_along(where);
    }
}

void check_schema(Document& document, const std::string& schema, long mode)
{
    const std::string before = document.described();
    document.changes();
    xmlNode* element = document.slot().current;
    {
        const torture::memory::Inside inside;
        KH_Set_Schema(document.fd(), schema.c_str(), &mode);
    }
    const std::string after = document.described();
    check(document.slot().current == element, "schema references leave the cursor");
    if (!element || element->type != XML_ELEMENT_NODE || mode < 0 || mode > 3)
        check(after == before, "what has no schema references stays as it was");
    else if (mode == 2 && after != before)
        check(!element->properties && !element->nsDef, "an element without references has no attributes");
    else if (mode <= 1 && after != before)
        check(attribute_of(element, "schemaLocation"), "an element has its schema's location");
}

} // namespace fuzz
