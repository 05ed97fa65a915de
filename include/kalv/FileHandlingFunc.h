/** \file FileHandlingFunc.h
 *  Switches the library's reports on and off. */
#ifndef KALV_FILE_HANDLING_FUNC_H
#define KALV_FILE_HANDLING_FUNC_H

#include <kalv/export.h>

namespace KALV {

/** The switch of the reports on standard error, for the whole process. They are off when the library is
 *  loaded. Exceptions are thrown either way. */
class KH_EXPORT FileHandlingFunc {
public:
    /** From now on failures are also printed. Throws nothing. */
    static void setVerbose();

    /** From now on nothing is printed. Throws nothing. */
    static void setSilent();
};

} // namespace KALV

#endif
