// Searches by element name through the whole document.
#include "jobs.h"
#include "peers.h"

namespace bench {

namespace {

constexpr const char* traverse = "pugixml traverse";

/// The value of the element behind the list.
struct FindLast {
    long operator()(Kalv& document) const
    {
        document.call(kh_tree_rewind);
        return document.value<long>(kh_tree_read_integer_element_value, "Last");
    }
    long operator()(const LibXml2& document) const
    {
        xmlNode* node = document.root();
        while (!(node->type == XML_ELEMENT_NODE &&
                 std::strcmp(reinterpret_cast<const char*>(node->name), "Last") == 0))
            node = next_in_document(node, document.root());
        return std::strtol(content(node), nullptr, 10);
    }
    long operator()(const Pugi& document) const
    {
        struct Walker : pugi::xml_tree_walker {
            bool for_each(pugi::xml_node& node) override
            {
                if (std::strcmp(node.name(), "Last") != 0)
                    return true;
                found = node;
                return false;
            }
            pugi::xml_node found;
        } walker;
        pugi::xml_node top = document.doc;
        top.traverse(walker);
        return static_cast<long>(walker.found.text().as_llong());
    }
};

long last_by_xpath(const LibXml2& document)
{
    return selected_integer(document, "//Last");
}

/// The values of all elements of a name, wherever they stand.
struct ReadAll {
    Array<long> operator()(Kalv& document) const
    {
        return {kh_tree_read_integer_element_array, &document.fd, "Value"};
    }
    std::vector<long> operator()(const LibXml2& document) const
    {
        std::vector<long> values;
        for (xmlNode* node = document.root(); node; node = next_in_document(node, document.root())) {
            if (node->type == XML_ELEMENT_NODE &&
                std::strcmp(reinterpret_cast<const char*>(node->name), "Value") == 0)
                values.push_back(std::strtol(content(node), nullptr, 10));
        }
        return values;
    }
    std::vector<long> operator()(const Pugi& document) const
    {
        struct Walker : pugi::xml_tree_walker {
            bool for_each(pugi::xml_node& node) override
            {
                if (std::strcmp(node.name(), "Value") == 0)
                    values.push_back(static_cast<long>(node.text().as_llong()));
                return true;
            }
            std::vector<long> values;
        } walker;
        pugi::xml_node top = document.doc;
        top.traverse(walker);
        return walker.values;
    }
};

/// The same, one value a call.
std::vector<long> read_one_by_one(Kalv& document)
{
    std::vector<long> values;
    document.call(kh_tree_rewind);
    long value = 0;
    for (const char* name = "Value";
         kh_tree_read_integer_element_value(&document.fd, name, &value, &document.status) == KH_OK;
         name = nullptr)
        values.push_back(value);
    return values;
}

} // namespace

void compare_searches(Comparison& comparison, const Files& files)
{
    for (const File& file : {files.medium(), files.large()}) {
        const FindLast find;
        comparison.add(
            {"search by name, first",
             file.size,
             {on_fresh<Kalv>(library, file.path, find), on_fresh<LibXml2>(by_hand, file.path, find),
              on_fresh<Pugi>(traverse, file.path, find)},
             {{by_hand, 0.65}},
             file.is_large() ? 1 : 20});
        comparison.add(
            {"search by name, again",
             file.size,
             {on_standing<Kalv>(library, file.path, find), on_standing<LibXml2>(by_hand, file.path, find),
              on_standing<LibXml2>(libxml2_xpath, file.path, last_by_xpath),
              on_standing<Pugi>(traverse, file.path, find)},
             {{by_hand, 0.65}, {traverse, 0.35}}});
        const ReadAll read;
        comparison.add(
            {"array by name",
             file.size,
             {on_standing<Kalv>(library, file.path, read), on_standing<LibXml2>(by_hand, file.path, read),
              on_standing<Pugi>(traverse, file.path, read)},
             {{by_hand, 1}, {traverse, 1}}});
        comparison.add(
            {"all of a name, one by one",
             file.size,
             {on_standing<Kalv>(library, file.path, read_one_by_one),
              on_standing<LibXml2>(by_hand, file.path, read), on_standing<Pugi>(traverse, file.path, read)},
             {{by_hand, 1}, {traverse, 1}}});
    }
}

} // namespace bench
