/** \file FixedHeader.h
 *  The fixed header of a product file as one record. */
#ifndef KALV_FIXED_HEADER_H
#define KALV_FIXED_HEADER_H

#include <kalv/export.h>
#include <string>

namespace KALV {

/** The items of a fixed header, each named after its tag, and what belongs to the file around it. Texts are
 *  taken as they are: dates are not checked. */
struct FixedHeader {
    std::string fileName;              /**< `File_Name` */
    std::string schema = "_NOSCHEMA_"; /**< Schema reference of the file; "_NOSCHEMA_" means none. */
    std::string fileDescription;       /**< `File_Description` */
    std::string notes;                 /**< `Notes` */
    std::string mission;               /**< `Mission` */
    std::string fileClass;             /**< `File_Class` */
    std::string fileType;              /**< `File_Type` */
    std::string validityStart;         /**< `Validity_Start` */
    std::string validityStop;          /**< `Validity_Stop` */
    long fileVersion = 0;              /**< `File_Version` */
    std::string kvstdVersion;          /**< `KVSTD_Version`; not written with the others, nor read. */
    std::string system;                /**< `System` */
    std::string creator;               /**< `Creator` */
    std::string creatorVersion;        /**< `Creator_Version` */
    std::string creationDate;          /**< `Creation_Date` */
    long headerType = -1; /**< Format version * 10 + extension type, see kh_tree_create_header(). */

    /** No item, no schema, no type. */
    KH_EXPORT FixedHeader();

    /** All members but `kvstdVersion`, which stays empty.
     *  \param[in] fileName `File_Name`
     *  \param[in] schema schema reference; "_NOSCHEMA_" means none
     *  \param[in] fileDescription `File_Description`
     *  \param[in] notes `Notes`
     *  \param[in] mission `Mission`
     *  \param[in] fileClass `File_Class`
     *  \param[in] fileType `File_Type`
     *  \param[in] validityStart `Validity_Start`
     *  \param[in] validityStop `Validity_Stop`
     *  \param[in] fileVersion `File_Version`
     *  \param[in] system `System`
     *  \param[in] creator `Creator`
     *  \param[in] creatorVersion `Creator_Version`
     *  \param[in] creationDate `Creation_Date`
     *  \param[in] headerType format version * 10 + extension type */
    KH_EXPORT FixedHeader(const std::string& fileName, const std::string& schema,
                          const std::string& fileDescription, const std::string& notes,
                          const std::string& mission, const std::string& fileClass,
                          const std::string& fileType, const std::string& validityStart,
                          const std::string& validityStop, long fileVersion, const std::string& system,
                          const std::string& creator, const std::string& creatorVersion,
                          const std::string& creationDate, long headerType);

    /** All members.
     *  \param[in] fileName `File_Name`
     *  \param[in] schema schema reference; "_NOSCHEMA_" means none
     *  \param[in] fileDescription `File_Description`
     *  \param[in] notes `Notes`
     *  \param[in] mission `Mission`
     *  \param[in] fileClass `File_Class`
     *  \param[in] fileType `File_Type`
     *  \param[in] validityStart `Validity_Start`
     *  \param[in] validityStop `Validity_Stop`
     *  \param[in] fileVersion `File_Version`
     *  \param[in] kvstdVersion `KVSTD_Version`
     *  \param[in] system `System`
     *  \param[in] creator `Creator`
     *  \param[in] creatorVersion `Creator_Version`
     *  \param[in] creationDate `Creation_Date`
     *  \param[in] headerType format version * 10 + extension type */
    KH_EXPORT FixedHeader(const std::string& fileName, const std::string& schema,
                          const std::string& fileDescription, const std::string& notes,
                          const std::string& mission, const std::string& fileClass,
                          const std::string& fileType, const std::string& validityStart,
                          const std::string& validityStop, long fileVersion, const std::string& kvstdVersion,
                          const std::string& system, const std::string& creator,
                          const std::string& creatorVersion, const std::string& creationDate,
                          long headerType);
};

} // namespace KALV

#endif
