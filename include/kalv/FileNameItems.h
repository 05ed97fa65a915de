/** \file FileNameItems.h
 *  The parts of a product file name. */
#ifndef KALV_FILE_NAME_ITEMS_H
#define KALV_FILE_NAME_ITEMS_H

#include <string>

namespace KALV {

/** What XmlFile::getFileNameItems() finds in a name; the extension stays part of the last item. */
struct FileNameItems {
    long satId = 0;         /**< The satellite; 0 for an unknown mission code. */
    std::string fileClass;  /**< The class. */
    std::string fileType;   /**< The type. */
    std::string instanceId; /**< The last three of six parts; empty where there are fewer. */
};

} // namespace KALV

#endif
