/** \file FileHandlingError.h
 *  This library's error, from which its exceptions are made. */
#ifndef KALV_FILE_HANDLING_ERROR_H
#define KALV_FILE_HANDLING_ERROR_H

#include <kalv/InternalError.h>
#include <kalv/export.h>

namespace KALV {

/** The name of the method that failed and its code. What a caller catches is the KalvError made from it. */
class KH_EXPORT FileHandlingError : public InternalError {
public:
    /** \param[in] functionName the method, such as "XmlFile::read"
     *  \param[in] n a number kept with the error; this library gives 0
     *  \param[in] codes one code, see status.h; null stands for #KH_ERR_UNKNOWN */
    FileHandlingError(const std::string& functionName, long n, const long* codes);
    /** \param[in] other is copied */
    FileHandlingError(const FileHandlingError& other);
    /** Releases what the error holds. */
    ~FileHandlingError() override;
    /** \param[in] other is copied
     *  \return this error */
    FileHandlingError& operator=(const FileHandlingError& other);

    /** Appends the code, and no other.
     *  \param[in,out] codes keeps what it holds */
    void getCodes(std::vector<long>& codes) const override;

    /** Appends two texts: the method's name and the code's text.
     *  \param[in,out] messages keeps what it holds */
    void getMsg(std::vector<std::string>& messages) const override;

    /** \return a copy made with `new`; the caller's to delete */
    FileHandlingError* clone() const override;
};

} // namespace KALV

#endif
