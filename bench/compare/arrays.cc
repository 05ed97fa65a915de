// Arrays of all items.
#include "jobs.h"
#include "peers.h"

namespace bench {

namespace {

template <class Number>
Number converted(const char* text)
{
    if constexpr (std::is_integral_v<Number>)
        return std::strtol(text, nullptr, 10);
    else
        return std::strtod(text, nullptr);
}

/// Reads one child of each item as a number: each overload as its library's users would.
template <class Number>
class ReadNumbers {
public:
    explicit ReadNumbers(const char* child) : child_(child), path_(std::string("/Root/List/Item[*]/") + child)
    {
    }

    Array<Number> operator()(Kalv& document) const
    {
        if constexpr (std::is_integral_v<Number>)
            return {kh_tree_path_read_integer_node_array, &document.fd, path_.c_str()};
        else
            return {kh_tree_path_read_real_node_array, &document.fd, path_.c_str()};
    }
    std::vector<Number> operator()(const LibXml2& document) const
    {
        std::vector<Number> values;
        xmlNode* list = named(document.root()->children, "List");
        for (xmlNode* item = named(list->children, "Item"); item; item = named(item->next, "Item"))
            values.push_back(converted<Number>(content(named(item->children, child_))));
        return values;
    }
    std::vector<Number> operator()(const Pugi& document) const
    {
        std::vector<Number> values;
        for (const pugi::xml_node item : document.list().children("Item")) {
            const pugi::xml_text text = item.child(child_).text();
            if constexpr (std::is_integral_v<Number>)
                values.push_back(static_cast<long>(text.as_llong()));
            else
                values.push_back(text.as_double());
        }
        return values;
    }
    std::vector<Number> operator()(const Tiny& document) const
    {
        std::vector<Number> values;
        const tinyxml2::XMLElement* item = document.list()->FirstChildElement("Item");
        for (; item; item = item->NextSiblingElement("Item")) {
            const tinyxml2::XMLElement* value = item->FirstChildElement(child_);
            if constexpr (std::is_integral_v<Number>)
                values.push_back(value->Int64Text());
            else
                values.push_back(value->DoubleText());
        }
        return values;
    }

    /// The same through the libraries' XPath.
    auto by_xpath() const
    {
        return [expression = "/Root/List/Item/" + std::string(child_)](const auto& document) {
            std::vector<Number> values;
            if constexpr (std::is_same_v<std::decay_t<decltype(document)>, LibXml2>) {
                select(document, expression.c_str(),
                       [&](const xmlNode* node) { values.push_back(converted<Number>(content(node))); });
            } else {
                for (const pugi::xpath_node& node : document.doc.select_nodes(expression.c_str()))
                    values.push_back(converted<Number>(node.node().child_value()));
            }
            return values;
        };
    }

private:
    const char* child_;
    std::string path_;
};

template <class Number>
void compare_numbers(Comparison& comparison, const std::string& job, const File& file,
                     const ReadNumbers<Number>& read, const std::vector<Goal>& first_goals)
{
    comparison.add({job + ", first read",
                    file.size,
                    {on_fresh<Kalv>(library, file.path, read), on_fresh<LibXml2>(by_hand, file.path, read),
                     on_fresh<Pugi>(pugixml, file.path, read), on_fresh<Tiny>(tiny, file.path, read)},
                    first_goals,
                    file.is_large() ? 1 : 20});
    comparison.add(
        {job + ", again",
         file.size,
         {on_standing<Kalv>(library, file.path, read), on_standing<LibXml2>(by_hand, file.path, read),
          on_standing<LibXml2>(libxml2_xpath, file.path, read.by_xpath()),
          on_standing<Pugi>(pugixml, file.path, read),
          on_standing<Pugi>(pugixml_xpath, file.path, read.by_xpath())},
         {{pugixml, 0.95}}});
}

/// Texts of real XML: what a path with one "[*]" stands for, written out for the peers.
struct RealList {
    const char* file;
    const char* path;
    std::vector<const char*> to_list; ///< below the root
    const char* item;
    std::vector<const char*> to_value; ///< below the item
    const char* attribute = nullptr;   ///< instead of the text
};

struct ReadTexts {
    RealList list;

    Array<char*> operator()(Kalv& document) const
    {
        return {kh_tree_path_read_string_node_array, &document.fd, list.path};
    }
    std::vector<std::string> operator()(const LibXml2& document) const
    {
        std::vector<std::string> texts;
        xmlNode* parent = document.root();
        for (const char* name : list.to_list)
            parent = named(parent->children, name);
        for (xmlNode* item = named(parent->children, list.item); item; item = named(item->next, list.item)) {
            xmlNode* node = item;
            for (const char* name : list.to_value)
                node = named(node->children, name);
            if (!list.attribute) {
                texts.emplace_back(content(node));
                continue;
            }
            const std::unique_ptr<xmlChar, decltype(xmlFree)> value(xmlGetProp(node, BAD_CAST list.attribute),
                                                                    xmlFree);
            texts.emplace_back(reinterpret_cast<const char*>(value.get()));
        }
        return texts;
    }
    std::vector<std::string> operator()(const Pugi& document) const
    {
        std::vector<std::string> texts;
        pugi::xml_node parent = document.doc.document_element();
        for (const char* name : list.to_list)
            parent = parent.child(name);
        for (pugi::xml_node node : parent.children(list.item)) {
            for (const char* name : list.to_value)
                node = node.child(name);
            texts.emplace_back(list.attribute ? node.attribute(list.attribute).value() : node.child_value());
        }
        return texts;
    }
};

void compare_real(Comparison& comparison)
{
    const RealList lists[] = {
        {"base.xml",
         "/xkbConfigRegistry/layoutList/layout[*]/configItem/description",
         {"layoutList"},
         "layout",
         {"configItem", "description"}},
        {"freedesktop.org.xml", "/mime-info/mime-type[*]/@type", {}, "mime-type", {}, "type"}};
    for (const File& file : Files::real()) {
        for (const RealList& list : lists) {
            if (file.path.find(list.file) == std::string::npos)
                continue;
            const ReadTexts read{list};
            comparison.add(
                {std::string("[*] as texts, ") + (list.attribute ? "attributes" : "elements"),
                 file.size,
                 {on_standing<Kalv>(library, file.path, read), on_standing<LibXml2>(by_hand, file.path, read),
                  on_standing<Pugi>(pugixml, file.path, read)},
                 {{by_hand, 1}, {pugixml, 1}}});
        }
    }
}

} // namespace

void compare_arrays(Comparison& comparison, const Files& files)
{
    for (const File& file : {files.medium(), files.large()}) {
        compare_numbers(comparison, "[*] as long", file, ReadNumbers<long>("Value"),
                        {{by_hand, 0.50}, {pugixml, 2.0}});
        compare_numbers(comparison, "[*] as double", file, ReadNumbers<double>("Real"), {});
    }
    compare_real(comparison);
}

} // namespace bench
