// All reads, each compared with what stands in the tree.
#include "document.h"
#include "texts.h"

#include <climits>
#include <cmath>
#include <cstdlib>

namespace fuzz {

namespace {

/// How many elements are looked at one by one. The walk goes past all.
constexpr std::size_t most_elements = 4;

/// A path takes less than the document that it leads into, and an index for each of its nodes.
char room_for_paths[100000];

struct Integer {
    long status;
    long value;
};
Integer integer_in(const std::string& text)
{
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str())
        return {KH_ERR_NOT_INTEGER, 0};
    return {value == LONG_MAX || value == LONG_MIN ? long{KH_ERR_RANGE} : long{KH_OK}, value};
}

struct Real {
    long status;
    double value;
};
Real real_in(const std::string& text)
{
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (end == text.c_str())
        return {KH_ERR_NOT_REAL, 0};
    return {std::isinf(value) ? long{KH_ERR_RANGE} : long{KH_OK}, value};
}

bool equal(double first, double second)
{
    return first == second || (std::isnan(first) && std::isnan(second));
}

/// Names and values of an element, and of its attributes, one by one.
void check_description(const xmlNode* element)
{
    kh_node node;
    check(kh_node_describe(element, &node) == 1, "a node can be described");
    check(node.kind == KH_NODE_ELEMENT && node.name == std::string(chars(element->name)) &&
              node.prefix == std::string(element->ns ? chars(element->ns->prefix) : "") &&
              node.first_child == element->children && node.next == element->next &&
              node.previous == element->prev,
          "an element is described as it is");
    for (const xmlNode* child = element->children; child; child = child->next) {
        check(kh_node_describe(child, &node) == 1, "a node can be described");
        check(node.parent == element && node.previous == child->prev && node.next == child->next,
              "a node is described in its place");
    }
    long expected = 0;
    for (const xmlNs* space = element->nsDef; space; space = space->next)
        ++expected;
    for (const xmlAttr* attribute = element->properties; attribute; attribute = attribute->next)
        ++expected;
    long count = 0;
    kh_attribute attribute;
    for (long more = kh_node_first_attribute(element, &attribute); more == 1;
         more = kh_node_next_attribute(&attribute))
        ++count;
    check(count == expected, "all attributes and declarations are described");
}

void check_attribute(Document& document, const xmlNode* element)
{
    const xmlAttr* attribute = attribute_of(element, "id");
    Text text;
    const long status =
        status_of(kh_tree_read_string_attribute, document.fd(), chars(element->name), "id", text.out());
    check(document.slot().current == element, "an attribute is read where the cursor stands");
    const bool has_default = element->doc->intSubset;
    if (!attribute && !has_default)
        check_result(status == KH_ERR_NO_ATTRIBUTE, "a missing attribute is reported");
    const std::string value = attribute ? written_value_of(attribute) : "";
    if (attribute && value.find('&') == std::string::npos)
        check_result(status == KH_OK && text.string() == value, "an attribute has its value");
}

void check_namespaces(Document& document, xmlNode* node)
{
    long count = 0;
    char** prefixes = nullptr;
    char** uris = nullptr;
    const long status = status_of(kh_tree_get_namespace, document.fd(), static_cast<const char*>(nullptr),
                                  &count, &prefixes, &uris);
    xmlNs** list = xmlGetNsList(node->doc, node);
    for (long i = 0; i < count; ++i) {
        check(list && list[i] && prefixes[i] == std::string(chars(list[i]->prefix)) &&
                  uris[i] == std::string(chars(list[i]->href)),
              "the namespaces are those in scope");
        std::free(prefixes[i]);
        std::free(uris[i]);
    }
    check_result(list ? status == KH_OK && !list[count] : status == KH_ERR_VALUE_NOT_FOUND,
                 "all namespaces in scope are found");
    std::free(prefixes);
    std::free(uris);
    xmlFree(list);
}

/// The element under the cursor. Reads by path leave the cursor on it.
void check_element(Document& document, xmlNode* element)
{
    Text name;
    Text value;
    status_of(kh_tree_get_current_element_name, document.fd(), name.out());
    check_result(name.string() == chars(element->name), "an element has its name");
    const Value expected = value_of(element);
    const long status = status_of(kh_tree_get_current_element_value, document.fd(), value.out());
    check_result(status == expected.status && value.string() == expected.text, "an element has its value");
    check_attribute(document, element);
    check_description(element);
    check_namespaces(document, element);

    const std::string path = path_of(element, document.slot().root);
    std::string written(path.size() + 1, '\0');
    if (status_of(kh_tree_get_path, document.fd(), written.data()) != KH_OK) {
        check_result(false, "an element has a path");
        return;
    }
    check(written.c_str() == path, "an element has its path");
    const PathModel model(path);
    Text by_path;
    const long found =
        status_of(kh_tree_path_read_string_node_value, document.fd(), path.c_str(), by_path.out());
    check_result(model.status == KH_OK ? found == expected.status && by_path.string() == expected.text
                                       : found == model.status,
                 "an element is read by its path");
    check_result(document.slot().current == element, "an element's path leads to it");
}

/// Compares an array with texts, which the status says were all that could be read.
template <class Entry, class Matches>
void check_array(const Array<Entry>& array, const Values& expected, long status, Matches matches)
{
    check_result(status == expected.status || (status == KH_WARN_ROOT_REACHED && expected.status == KH_OK),
                 "an array has its status");
    if (memory_fails() || expected.status != KH_OK)
        return;
    check(array.count() == static_cast<long>(expected.texts.size()), "an array has all values");
    for (long i = 0; i < array.count(); ++i)
        check(matches(array[i], expected.texts[static_cast<std::size_t>(i)]), "an array has its values");
}

template <class Number>
Values as_numbers(Values values, Number (*in)(const std::string&))
{
    for (const std::string& text : values.texts)
        if (values.status == KH_OK)
            values.status = in(text).status;
    return values;
}

/// The three arrays, which `read` reads.
template <class ReadTexts, class ReadIntegers, class ReadReals>
void check_arrays(const Values& expected, ReadTexts read_texts, ReadIntegers read_integers,
                  ReadReals read_reals)
{
    Array<char*> texts;
    const long status = read_texts(texts);
    check_array(texts, expected, status,
                [](const char* text, const std::string& model) { return text == model; });
    Array<long> integers;
    const long integer_status = read_integers(integers);
    check_array(integers, as_numbers(expected, integer_in), integer_status,
                [](long number, const std::string& model) { return number == integer_in(model).value; });
    Array<double> reals;
    const long real_status = read_reals(reals);
    check_array(reals, as_numbers(expected, real_in), real_status,
                [](double number, const std::string& model) { return equal(number, real_in(model).value); });
}

void check_element_arrays(Document& document, const std::vector<xmlNode*>& all, const std::string& name)
{
    Values expected;
    for (const xmlNode* element : all) {
        if (element == all.front() || name != chars(element->name) || expected.status != KH_OK)
            continue;
        const Value value = value_of(element);
        expected.status = value.status;
        if (value.status == KH_OK)
            expected.texts.push_back(value.text);
    }
    if (expected.status == KH_OK && expected.texts.empty())
        expected.status = KH_ERR_NOT_FOUND;
    const char* what = name.c_str();
    const auto read = [&](auto function, auto& array) {
        return status_of(function, document.fd(), what, array.out(), array.count_out());
    };
    check_arrays(
        expected, [&](auto& array) { return read(kh_tree_read_string_element_array, array); },
        [&](auto& array) { return read(kh_tree_read_integer_element_array, array); },
        [&](auto& array) { return read(kh_tree_read_real_element_array, array); });
}

void check_path_arrays(Document& document, const std::string& path)
{
    const Values expected = values_along(PathModel(path), document.slot().root, document.slot().root);
    const char* where = path.c_str();
    const auto read = [&](auto function, auto& array) {
        status_of(kh_tree_rewind, document.fd());
        return status_of(function, document.fd(), where, array.out(), array.count_out());
    };
    check_arrays(
        expected, [&](auto& array) { return read(kh_tree_path_read_string_node_array, array); },
        [&](auto& array) { return read(kh_tree_path_read_integer_node_array, array); },
        [&](auto& array) { return read(kh_tree_path_read_real_node_array, array); });
}

void check_path_values(Document& document, const std::string& path)
{
    const kh_document_slot& slot = document.slot();
    status_of(kh_tree_rewind, document.fd());
    const PathModel model(path);
    const Place place = go_along(model, slot.root, slot.root);
    if (model.array_position >= 0)
        return; // a single read of such a path is an oddity
    Value expected{place.status, ""};
    if (place.node && place.status >= KH_OK)
        expected = value_at_end(model, place.node);
    Text text;
    const long status =
        status_of(kh_tree_path_read_string_node_value, document.fd(), path.c_str(), text.out());
    const bool warns = status == KH_WARN_ROOT_REACHED && expected.status == KH_OK;
    check_result(status == expected.status || warns, "a path's value has its status");
    check_result(text.string() == expected.text || expected.status != KH_OK, "a path has its value");
    long integer = 4711;
    status_of(kh_tree_rewind, document.fd());
    const long integer_status =
        status_of(kh_tree_path_read_integer_node_value, document.fd(), path.c_str(), &integer);
    double real = 4711;
    status_of(kh_tree_rewind, document.fd());
    const long real_status = status_of(kh_tree_path_read_real_node_value, document.fd(), path.c_str(), &real);
    if (memory_fails() || warns)
        return;
    const bool has_text = expected.status == KH_OK;
    const Integer integer_model = has_text ? integer_in(expected.text) : Integer{expected.status, 4711};
    const Real real_model = has_text ? real_in(expected.text) : Real{expected.status, 4711};
    check(integer_status == integer_model.status && integer == integer_model.value, "a path has its integer");
    check(real_status == real_model.status && equal(real, real_model.value), "a path has its real");
}

/// What a search finds is an element of that name and value.
void check_searches(Document& document, const std::string& name, const std::string& value)
{
    status_of(kh_tree_rewind, document.fd());
    const long status = status_of(kh_tree_find_string_value_element, document.fd(), name.c_str(),
                                  value.c_str(), room_for_paths);
    if (status != KH_OK)
        return;
    const xmlNode* found = document.slot().current;
    check(name == chars(found->name) && value_of(found).text == value, "a search finds the value");
    check(room_for_paths == path_of(found, document.slot().root), "a search gives the path of what it found");
}

} // namespace

void check_reads(Document& document, Bytes& bytes)
{
    if (!document.has_root())
        return;
    const std::string before = document.described();
    const std::vector<xmlNode*> all = elements(document.slot().doc);
    status_of(kh_tree_rewind, document.fd());
    for (std::size_t i = 0; i < all.size(); ++i) {
        check(document.slot().current == all[i], "the cursor moves in the order of the document");
        if (i < most_elements)
            check_element(document, all[i]);
        check_result(document.slot().current == all[i], "reads of an element leave the cursor on it");
        if (document.slot().current != all[i])
            return;
        const long status = status_of(kh_tree_go_to_next_element_node, document.fd());
        check(status == (i + 1 < all.size() ? long{KH_OK} : long{KH_ERR_NOT_FOUND}),
              "each element has its turn");
    }
    const std::size_t chosen = bytes.ConsumeIntegralInRange<std::size_t>(0, all.size() - 1);
    check_element_arrays(document, all, bytes.ConsumeBool() ? chars(all[chosen]->name) : name(bytes));
    check_path_arrays(document, path(bytes));
    if (const std::string where = path_of(all[chosen], all[0]); chosen > 0)
        check_path_arrays(document, where.substr(0, where.find_last_not_of("[]0123456789") + 1) + "[*]");
    check_path_values(document, path(bytes));
    check_searches(document, chars(all[chosen]->name), value_of(all[chosen]).text);
    status_of(kh_tree_find_string_value_path, document.fd(), "/Root/List/Item[*]", "42", room_for_paths);
    check(document.described() == before, "reads change nothing");
}

} // namespace fuzz
