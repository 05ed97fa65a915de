/** \file InternalError.h
 *  What the libraries of the family know about an error. */
#ifndef KALV_INTERNAL_ERROR_H
#define KALV_INTERNAL_ERROR_H

#include <string>
#include <vector>

/** \def KALV_COMMON_EXPORT
 *  Marks what the shared library shows. */
#if defined(__GNUC__)
#define KALV_COMMON_EXPORT __attribute__((visibility("default")))
#else
#define KALV_COMMON_EXPORT
#endif

namespace KALV {

/** An error as its library describes it. Each library derives a class that knows the texts of its codes;
 *  what is thrown is a KalvError made from it. */
class KALV_COMMON_EXPORT InternalError {
public:
    /** \param[in] name where the error was met, such as "XmlFile::read"
     *  \param[in] code the code
     *  \param[in] subcode a second number beside the code
     *  \param[in] severity how grave it is
     *  \param[in] count how many codes the array holds; below 1: none
     *  \param[in] codes all codes, which are copied; null: none */
    InternalError(const std::string& name, long code, long subcode, long severity, long count,
                  const long* codes);
    /** \param[in] other is copied */
    InternalError(const InternalError& other);
    /** Releases what the error holds, also through a pointer to this class. */
    virtual ~InternalError();
    /** \param[in] other is copied
     *  \return this error */
    InternalError& operator=(const InternalError& other);

    /** Appends the codes.
     *  \param[in,out] codes keeps what it holds */
    virtual void getCodes(std::vector<long>& codes) const;

    /** Appends the texts; here the name alone.
     *  \param[in,out] messages keeps what it holds */
    virtual void getMsg(std::vector<std::string>& messages) const;

    /** \return a copy of the derived class, made with `new`; the caller's to delete */
    virtual InternalError* clone() const;

protected:
    std::string name_;        /**< Where the error was met. */
    long code_;               /**< The code. */
    long subcode_;            /**< A second number beside the code. */
    long severity_;           /**< How grave it is. */
    long count_;              /**< How many codes were given. */
    std::vector<long> codes_; /**< All codes. */
};

} // namespace KALV

#endif
