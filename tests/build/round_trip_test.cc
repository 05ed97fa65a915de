// Random trees, built through the library beside a model of their own: what is written is what the model
// says, libxml2 reads it back as the model, and a second write adds nothing.
#include "build/edit.h"
#include "support/random_input.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

using support::Document;

struct Element {
    std::string name;
    Element* parent = nullptr;
    std::string text{}; ///< an element has a text or children
    std::vector<std::pair<std::string, std::string>> attributes{};
    std::vector<std::unique_ptr<Element>> children{};

    std::size_t place() const
    {
        return static_cast<std::size_t>(std::find_if(parent->children.begin(), parent->children.end(),
                                                     [&](const auto& child) { return child.get() == this; }) -
                                        parent->children.begin());
    }

    std::string path() const
    {
        if (!parent)
            return "/" + name;
        const auto end = parent->children.begin() + static_cast<std::ptrdiff_t>(place()) + 1;
        const auto index = std::count_if(parent->children.begin(), end,
                                         [&](const auto& child) { return child->name == name; });
        return parent->path() + "/" + name + "[" + std::to_string(index) + "]";
    }

    void all(std::vector<Element*>& elements)
    {
        elements.push_back(this);
        for (const auto& child : children)
            child->all(elements);
    }
};

/// As XML is written without an encoding.
std::string escaped(const std::string& text, bool attribute)
{
    const std::pair<std::string, std::string> replacements[] = {
        {"&", "&amp;"},
        {"<", "&lt;"},
        {">", "&gt;"},
        {"\xc3\xa9", "&#xE9;"},
        {"\xe2\x82\xac", "&#x20AC;"},
        {"\r", attribute ? "&#13;" : "&#xD;"},
        {"\n", attribute ? "&#10;" : "\n"},
        {"\t", attribute ? "&#9;" : "\t"},
        {"\"", attribute ? "&quot;" : "\""},
    };
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const auto* found =
            std::find_if(std::begin(replacements), std::end(replacements), [&](const auto& replacement) {
                return text.compare(at, replacement.first.size(), replacement.first) == 0;
            });
        const bool plain = found == std::end(replacements);
        result += plain ? text.substr(at, 1) : found->second;
        at += plain ? 1 : found->first.size();
    }
    return result;
}

/// The element as the library lays it out.
std::string rendered(const Element& element, std::size_t depth = 0)
{
    const std::string indentation(2 * depth, ' ');
    std::string text = indentation + "<" + element.name;
    for (const auto& [name, value] : element.attributes)
        text += " " + name + "=\"" + escaped(value, true) + "\"";
    if (!element.text.empty())
        return text + ">" + escaped(element.text, false) + "</" + element.name + ">\n";
    if (element.children.empty())
        return text + "/>\n";
    text += ">\n";
    for (const auto& child : element.children)
        text += rendered(*child, depth + 1);
    return text + indentation + "</" + element.name + ">\n";
}

void expect_equal(const xmlNode* node, const Element& element)
{
    ASSERT_EQ(edit::text_of(node->name), element.name);
    auto attribute = element.attributes.begin();
    for (const xmlAttr* property = node->properties; property; property = property->next, ++attribute) {
        ASSERT_NE(attribute, element.attributes.end());
        EXPECT_EQ(edit::text_of(property->name), attribute->first);
        EXPECT_EQ(property->children ? edit::text_of(property->children->content) : "", attribute->second);
    }
    EXPECT_EQ(attribute, element.attributes.end());
    if (element.children.empty()) {
        ASSERT_EQ(node->children == nullptr, element.text.empty());
        if (node->children) {
            EXPECT_EQ(edit::text_of(node->children->content), element.text);
        }
        return;
    }
    const xmlNode* child = xmlFirstElementChild(const_cast<xmlNode*>(node));
    for (const auto& expected : element.children) {
        ASSERT_NE(child, nullptr) << element.path();
        expect_equal(child, *expected);
        child = xmlNextElementSibling(const_cast<xmlNode*>(child));
    }
    EXPECT_EQ(child, nullptr) << element.path();
}

/// Edits a document and its model alike.
class Builder {
public:
    explicit Builder(unsigned seed) : random_(seed)
    {
        EXPECT_EQ(edit::status(document, kh_tree_create_root, root.name.c_str()), KH_OK);
        add_child(root);
    }

    void edit_once()
    {
        std::vector<Element*> elements;
        root.all(elements);
        Element& element = *elements[below(elements.size())];
        switch (below(8)) {
        case 0:
            return add_sibling(element, kh_tree_add_next_sibling, 1);
        case 1:
            return add_sibling(element, kh_tree_add_previous_sibling, 0);
        case 2:
            return set_text(element);
        case 3:
            return set_attribute(element);
        case 4:
            return remove(element);
        case 5:
            return write();
        default:
            return add_child(element);
        }
    }

    /// Writes and compares, so that later edits meet a document that has its closing indentation.
    void write()
    {
        const std::string expected = "<?xml version=\"1.0\"?>\n" + rendered(root);
        EXPECT_EQ(document.written(), expected);
        EXPECT_EQ(document.written(), expected) << "a second write adds nothing";
    }

    Document document;
    Element root{"root"};

private:
    std::size_t below(std::size_t end) { return random_.below(end); }
    std::string any_name() { return std::string(1, "abc"[below(3)]); }
    std::string any_text(std::size_t shortest) { return random_.text(shortest, shortest + 7); }

    static std::size_t depth_of(const Element& element)
    {
        return element.parent ? depth_of(*element.parent) + 1 : 0;
    }
    void expect_success(long status, const Element& element) { EXPECT_EQ(status, KH_OK) << element.path(); }

    Element& insert(Element& parent, std::size_t place)
    {
        auto child = std::make_unique<Element>(Element{any_name(), &parent});
        return **parent.children.insert(parent.children.begin() + static_cast<std::ptrdiff_t>(place),
                                        std::move(child));
    }

    void add_child(Element& parent)
    {
        if (depth_of(parent) > 30)
            return;
        const std::string path = parent.path();
        parent.text.clear(); // a text directly before a new child goes
        const Element& child = insert(parent, parent.children.size());
        expect_success(edit::status(document, kh_tree_add_child, path.c_str(), child.name.c_str()), parent);
        EXPECT_EQ(document.current_name(), child.name);
    }

    void add_sibling(Element& element, decltype(kh_tree_add_next_sibling)* add, std::size_t offset)
    {
        if (!element.parent)
            return;
        const std::string path = element.path();
        const Element& sibling = insert(*element.parent, element.place() + offset);
        expect_success(edit::status(document, add, path.c_str(), sibling.name.c_str()), element);
        EXPECT_EQ(document.current_name(), sibling.name);
    }

    void set_text(Element& element)
    {
        if (!element.parent)
            return;
        element.children.clear();
        element.text = any_text(1);
        expect_success(edit::status(document, kh_tree_set_string_node_value, element.path().c_str(),
                                    element.text.c_str(), "%s"),
                       element);
    }

    void set_attribute(Element& element)
    {
        const std::string name = any_name(), value = any_text(0);
        const auto found = std::find_if(element.attributes.begin(), element.attributes.end(),
                                        [&](const auto& attribute) { return attribute.first == name; });
        if (found == element.attributes.end())
            element.attributes.emplace_back(name, value);
        else
            found->second = value;
        expect_success(edit::status(document, kh_tree_set_string_node_value,
                                    (element.path() + "/@" + name).c_str(), value.c_str(), "%s"),
                       element);
    }

    void remove(Element& element)
    {
        // The closing indentation of a write would be left in a parent that loses its only child, as its
        // text.
        if (!element.parent || element.parent->children.size() == 1)
            return;
        Element& parent = *element.parent;
        const std::string path = element.path();
        parent.children.erase(parent.children.begin() + static_cast<std::ptrdiff_t>(element.place()));
        EXPECT_EQ(edit::status(document, kh_tree_remove_node, path.c_str()), KH_OK) << path;
        EXPECT_EQ(document.current_name(), parent.name);
    }

    support::RandomInput random_;
};

class RoundTrip : public testing::TestWithParam<unsigned> {};

TEST_P(RoundTrip, AnEditedTreeReadsBackAsItsModel)
{
    Builder builder(GetParam());
    for (int i = 0; i < 300; ++i)
        builder.edit_once();
    builder.write();
    const edit::PlainDocument read = edit::read_plainly(builder.document.written());
    ASSERT_TRUE(read);
    expect_equal(xmlDocGetRootElement(read.get()), builder.root);
}

TEST_P(RoundTrip, AWrittenFileIsWrittenAgainUnchanged)
{
    Builder builder(GetParam());
    for (int i = 0; i < 300; ++i)
        builder.edit_once();
    const std::string first = builder.document.written();
    Document again(first);
    EXPECT_EQ(again.written(), first);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RoundTrip, testing::Range(0U, 20U));

} // namespace
