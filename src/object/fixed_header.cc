#include <kalv/FixedHeader.h>

namespace KALV {

FixedHeader::FixedHeader() = default;

FixedHeader::FixedHeader(const std::string& file_name, const std::string& schema_reference,
                         const std::string& description, const std::string& remarks,
                         const std::string& mission_name, const std::string& file_class,
                         const std::string& file_type, const std::string& start, const std::string& stop,
                         long version, const std::string& system_name, const std::string& creator_name,
                         const std::string& creator_version, const std::string& date, long type)
    : FixedHeader(file_name, schema_reference, description, remarks, mission_name, file_class, file_type,
                  start, stop, version, std::string(), system_name, creator_name, creator_version, date, type)
{
}

FixedHeader::FixedHeader(const std::string& file_name, const std::string& schema_reference,
                         const std::string& description, const std::string& remarks,
                         const std::string& mission_name, const std::string& file_class,
                         const std::string& file_type, const std::string& start, const std::string& stop,
                         long version, const std::string& standard_version, const std::string& system_name,
                         const std::string& creator_name, const std::string& creator_version,
                         const std::string& date, long type)
    : fileName(file_name), schema(schema_reference), fileDescription(description), notes(remarks),
      mission(mission_name), fileClass(file_class), fileType(file_type), validityStart(start),
      validityStop(stop), fileVersion(version), kvstdVersion(standard_version), system(system_name),
      creator(creator_name), creatorVersion(creator_version), creationDate(date), headerType(type)
{
}

} // namespace KALV
