// Product file names:
//     name = mission-field class "_" type "_" instance extension
// where the mission field ends with a "_" of its own, and type and instance may hold some.
#include "product/file_name.h"

#include "frame/operation.h"
#include "product/mission.h"

#include <kalv/product.h>
#include <kalv/text.h>

#include <cstdio>
#include <cstring>
#include <string_view>

namespace kh {

namespace {

constexpr std::size_t max_file_class = 4;
constexpr std::size_t max_file_type = 10;
constexpr std::size_t max_instance_id = 42;
constexpr std::size_t max_file_name = 64;

/// Longer than the longest name that fitting items make.
constexpr std::size_t composed_size = 80;

constexpr Mission unknown_mission = {0, nullptr, KH_EXTENSION_EOF, "XXX", 4};

bool is_longer_than(const char* text, std::size_t length) noexcept
{
    return strnlen(text, length + 1) > length;
}

/// Reports an item that is missing or too long for a file name.
bool is_item(Operation& op, const char* item, std::size_t max_length, const char* description) noexcept
{
    if (!item)
        op.fail(KH_ERR_ARGUMENT, ". Input argument %s is NULL", description);
    else if (is_longer_than(item, max_length))
        op.fail(KH_WARN_LENGTH, ". Input argument maximum length exceeded");
    return op.status() == KH_OK;
}

const Mission& written_mission(long satellite_id) noexcept
{
    const Mission* mission = mission_of_satellite(satellite_id);
    return mission && mission->written_width > 0 ? *mission : unknown_mission;
}

const char* extension_of(long extension_type) noexcept
{
    switch (extension_type) {
    case KH_EXTENSION_KLV:
        return ".KLV";
    case KH_EXTENSION_HDR:
        return ".HDR";
    case KH_EXTENSION_DBL:
        return ".DBL";
    case KH_EXTENSION_EOF:
        return ".EOF";
    default:
        return "";
    }
}

/// Copies an item into a caller's buffer of `max_length` characters and a zero, if it fits.
void deliver(Operation& op, const std::string& item, std::size_t max_length, char* buffer) noexcept
{
    if (item.size() <= max_length)
        std::strcpy(buffer, item.c_str());
    else
        op.fail(KH_WARN_LENGTH, ". Input argument maximum length exceeded");
}

} // namespace

FileNameItems split_file_name(const char* file_name, long* ierr) noexcept
{
    Operation op("kh_read_filename_items", ierr);
    FileNameItems items;
    if (!file_name) {
        // Not the name's own text: callers compare this one.
        op.fail(KH_ERR_ARGUMENT, ". Input argument satellite id is NULL");
        return items;
    }
    if (is_longer_than(file_name, max_file_name)) {
        op.fail(KH_ERR_FILE_NAME_LENGTH, ". The filename is too long");
        return items;
    }
    char buffer[max_file_name + 1];
    char* parts[max_file_name];
    kh_strtoken(file_name, "_", buffer, parts, &items.part_count);
    op.guarded([&] {
        if (items.part_count >= 1) {
            const Mission* mission = mission_of_code(parts[0]);
            items.satellite_id = mission ? mission->satellite_id : 0;
        }
        if (items.part_count >= 2)
            items.file_class = parts[1];
        if (items.part_count >= 3)
            items.file_type = parts[2];
        if (items.part_count >= 6)
            items.instance_id = std::string(parts[3]) + "_" + parts[4] + "_" + parts[5];
    });
    return items;
}

} // namespace kh

using kh::Operation;

long kh_create_filename(const long* sat_id, const char* file_class, const char* file_type,
                        const char* instance_id, const long* file_extension_type, char* file_name, long* ierr)
{
    Operation op("kh_create_filename", ierr);
    if (!sat_id)
        return op.fail(KH_ERR_ARGUMENT, ". Input argument satellite id is NULL");
    if (!kh::is_item(op, file_class, kh::max_file_class, "file_class") ||
        !kh::is_item(op, file_type, kh::max_file_type, "file_type") ||
        !kh::is_item(op, instance_id, kh::max_instance_id, "instance_id"))
        return op.status();
    if (!file_extension_type)
        return op.fail(KH_ERR_ARGUMENT, ". Input argument file_extension_type is NULL");
    if (!file_name)
        return op.null_argument();

    const kh::Mission& mission = kh::written_mission(*sat_id);
    const int filling = mission.written_width - static_cast<int>(std::strlen(mission.code));
    char composed[kh::composed_size]; // not the caller's buffer: an item may lie in that
    const int length = std::snprintf(composed, sizeof composed, "%s%.*s%s_%s_%s%s", mission.code, filling,
                                     "__", *file_class ? file_class : "XXXX", file_type, instance_id,
                                     kh::extension_of(*file_extension_type));
    file_name[std::string_view(composed).copy(file_name, kh::max_file_name)] = '\0';
    if (kh::is_longer_than(composed, kh::max_file_name))
        return op.fail(KH_ERR_FILE_NAME_LENGTH, ". The filename is too long");
    return length;
}

long kh_read_filename_items(const char* file_name, long* sat_id, char* file_class, char* file_type,
                            char* instance_id, long* ierr)
{
    Operation op("kh_read_filename_items", ierr);
    const kh::FileNameItems items = kh::split_file_name(file_name, op.error_vector());
    if (op.failed())
        return op.status();
    if (!sat_id || !file_class || !file_type || !instance_id)
        return op.null_argument();
    if (items.part_count >= 1)
        *sat_id = items.satellite_id;
    if (items.part_count >= 2)
        kh::deliver(op, items.file_class, kh::max_file_class, file_class);
    if (items.part_count >= 3)
        kh::deliver(op, items.file_type, kh::max_file_type, file_type);
    if (items.part_count >= 6)
        kh::deliver(op, items.instance_id, kh::max_instance_id, instance_id);
    return items.part_count;
}
