#include "path_model.h"

#include <cstdint>
#include <cstdlib>

namespace fuzz {

namespace {

constexpr std::size_t most_segments = 50;

xmlNode* child_of(const xmlNode* node, const PathModel::Segment& segment)
{
    if (node->type == XML_ENTITY_REF_NODE) // its children are the entity's
        return nullptr;
    if (segment.index < 0)
        return node->children;
    long index = segment.index;
    for (xmlNode* child = node->children; child; child = child->next)
        if (child->type == XML_ELEMENT_NODE && segment.name == chars(child->name) && index-- == 0)
            return child;
    return nullptr;
}

Place walk(const PathModel& path, std::size_t first, std::size_t end, xmlNode* root, xmlNode* node)
{
    long status = KH_OK;
    for (std::size_t i = first; node && i < end; ++i) {
        const std::string& name = path.segments[i].name;
        if (name == "..") {
            status = node == root ? KH_WARN_ROOT_REACHED : KH_OK;
            node = node == root ? root : node->parent;
        } else if (name != ".") {
            node = child_of(node, path.segments[i]);
        }
    }
    return {status, node};
}

Place walk_from_start(const PathModel& path, std::size_t end, xmlNode* root, xmlNode* cursor)
{
    if (path.absolute && path.segments[0].name != chars(root->name))
        return {KH_ERR_ARGUMENT, root};
    return walk(path, path.absolute ? 1 : 0, end, root, path.absolute ? root : cursor);
}

std::size_t walk_end(const PathModel& path)
{
    return path.segments.size() - (path.ends_with_attribute() ? 1 : 0);
}

} // namespace

PathModel::PathModel(const std::string& path)
{
    const bool bad_start = path.size() > 1 && path[0] == '.' && path[1] != '.' && path[1] != '/';
    bool second_array = false;
    bool too_many = false;
    for (std::size_t at = 0; (at = path.find_first_not_of('/', at)) != std::string::npos;) {
        const std::string segment = path.substr(at, path.find('/', at) - at);
        at += segment.size();
        if (segments.size() == most_segments) {
            too_many = true;
            break;
        }
        const std::size_t bracket = segment.find('[');
        long index = 0;
        if (bracket != std::string::npos && segment[bracket + 1] == '*') {
            second_array = second_array || array_position >= 0;
            array_position = static_cast<long>(segments.size());
            index = segments.empty() ? 0 : segments.back().index;
        } else if (bracket != std::string::npos) {
            const long number = std::strtol(segment.c_str() + bracket + 1, nullptr, 10);
            index = static_cast<std::int32_t>(static_cast<std::uint32_t>(number) - 1U);
        }
        segments.push_back({segment.substr(0, bracket), index});
    }
    absolute = path.substr(0, 1) == "/";
    if (too_many && !bad_start)
        status = KH_ERR_PATH_LENGTH;
    else if (bad_start || segments.empty() || second_array)
        status = KH_ERR_ARGUMENT;
    if (status != KH_OK) {
        absolute = false;
        segments.clear();
        array_position = -1;
    }
}

Place go_along(const PathModel& path, xmlNode* root, xmlNode* cursor)
{
    if (path.status != KH_OK)
        return {path.status, nullptr};
    const Place place = walk_from_start(path, walk_end(path), root, cursor);
    return place.node ? place : Place{KH_ERR_NOT_FOUND, nullptr};
}

Value value_at_end(const PathModel& path, const xmlNode* node)
{
    if (!path.ends_with_attribute())
        return node->type == XML_ENTITY_REF_NODE ? Value{KH_ERR_NO_VALUE, ""} : value_of(node);
    const xmlAttr* attribute = attribute_of(node, path.segments.back().name.substr(1));
    if (!attribute)
        return {KH_ERR_NOT_FOUND, ""};
    return {KH_OK, attribute->children ? chars(attribute->children->content) : ""};
}

Values values_along(const PathModel& path, xmlNode* root, xmlNode* cursor)
{
    if (path.status != KH_OK)
        return {path.status, {}};
    if (path.array_position < 0)
        return {KH_ERR_ARGUMENT, {}};
    Values values;
    const auto array = static_cast<std::size_t>(path.array_position);
    const std::string& name = path.segments[array].name;
    const bool is_single = name == "." || name == ".." || (path.absolute && array == 0);
    PathModel indexed = path;
    for (long index = 0; index == 0 || !is_single; ++index) {
        indexed.segments[array].index = index;
        const Place item = walk_from_start(indexed, array + 1, root, cursor);
        if (item.status < KH_OK)
            return {item.status, {}};
        if (!item.node)
            break;
        const Place end = walk(indexed, array + 1, walk_end(path), root, item.node);
        if (!end.node)
            return {KH_ERR_NOT_FOUND, values.texts};
        const Value value = value_at_end(path, end.node);
        if (value.status != KH_OK)
            return {value.status, values.texts};
        values.texts.push_back(value.text);
    }
    values.status = values.texts.empty() ? long{KH_ERR_NOT_FOUND} : values.status;
    return values;
}

} // namespace fuzz
