// The fixed header and the names of product files.
#include "object/call.h"
#include "product/file_name.h"

#include <kalv/XmlFile.h>
#include <kalv/product.h>

namespace KALV {

using kh::call;

namespace {

constexpr std::size_t file_name_size = 65; // what kh_create_filename() asks for

/// Receives an item of the header: a number is printed into the room that it brings along, while a text comes
/// in a fresh block.
class ReceivedItem {
public:
    ReceivedItem() = default;
    ReceivedItem(const ReceivedItem&) = delete;
    ReceivedItem& operator=(const ReceivedItem&) = delete;
    ~ReceivedItem()
    {
        if (value_ != number_)
            std::free(value_);
    }
    char** address() noexcept { return &value_; }
    std::string text() const { return value_; }

private:
    char number_[21] = ""; // as many as the longest number has
    char* value_ = number_;
};

} // namespace

long XmlFile::createHeader(long type)
{
    return call("XmlFile::createHeader", kh_tree_create_header, &descriptor_, &type);
}

void XmlFile::createHeader(FixedHeader& header)
{
    createHeader(header.headerType);
    call("XmlFile::createHeader", kh_tree_set_fixed_header_items, &descriptor_, header.fileName,
         header.fileDescription, header.notes, header.mission, header.fileClass, header.fileType,
         header.validityStart, header.validityStop, &header.fileVersion, header.system, header.creator,
         header.creatorVersion, header.creationDate);
}

void XmlFile::setFixedHeaderItem(const std::string& item, const std::string& value)
{
    call("XmlFile::setFixedHeaderItem", kh_tree_set_fixed_header_item, &descriptor_, item, value);
}

void XmlFile::setFixedHeaderItems(const std::string& fileName, const std::string& fileDescription,
                                  const std::string& notes, const std::string& mission,
                                  const std::string& fileClass, const std::string& fileType,
                                  const std::string& validityStart, const std::string& validityStop,
                                  long fileVersion, const std::string& system, const std::string& creator,
                                  const std::string& creatorVersion, const std::string& creationDate)
{
    call("XmlFile::setFixedHeaderItems", kh_tree_set_fixed_header_items, &descriptor_, fileName,
         fileDescription, notes, mission, fileClass, fileType, validityStart, validityStop, &fileVersion,
         system, creator, creatorVersion, creationDate);
}

std::string XmlFile::getFixedHeaderItem(const std::string& item)
{
    ReceivedItem value;
    call("XmlFile::getFixedHeaderItem", kh_tree_get_fixed_header_item, &descriptor_, item, value.address());
    return value.text();
}

FixedHeader XmlFile::getFixedHeader()
{
    kh::ReceivedText file_name, file_description, notes, mission, file_class, file_type, validity_start,
        validity_stop, system, creator, creator_version, creation_date;
    long file_version = 0;
    call("XmlFile::getFixedHeader", kh_tree_get_fixed_header_items, &descriptor_, file_name.address(),
         file_description.address(), notes.address(), mission.address(), file_class.address(),
         file_type.address(), validity_start.address(), validity_stop.address(), &file_version,
         system.address(), creator.address(), creator_version.address(), creation_date.address());
    return FixedHeader(file_name.text(), FixedHeader().schema, file_description.text(), notes.text(),
                       mission.text(), file_class.text(), file_type.text(), validity_start.text(),
                       validity_stop.text(), file_version, system.text(), creator.text(),
                       creator_version.text(), creation_date.text(), FixedHeader().headerType);
}

std::string XmlFile::createFileName(long satId, const std::string& fileClass, const std::string& fileType,
                                    const std::string& instanceId, long extensionType) const
{
    char name[file_name_size];
    call("XmlFile::createFileName", kh_create_filename, &satId, fileClass, fileType, instanceId,
         &extensionType, static_cast<char*>(name));
    return name;
}

FileNameItems XmlFile::getFileNameItems(std::string& fileName) const
{
    kh::FileNameItems items;
    call(
        "XmlFile::getFileNameItems",
        [&](const char* name, long* status) { items = kh::split_file_name(name, status); }, fileName);
    return {items.satellite_id, items.file_class, items.file_type, items.instance_id};
}

} // namespace KALV
