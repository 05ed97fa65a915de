/** \file KalvError.h
 *  The exception that the libraries of the family throw. */
#ifndef KALV_KALV_ERROR_H
#define KALV_KALV_ERROR_H

#include <kalv/InternalError.h>
#include <memory>
#include <stdexcept>

namespace KALV {

/** What is thrown: a copy of the library's own error. Its `what()` holds the error's texts, the name first:
 *  "XmlFile::read: KH: Error while parsing a file". */
class KALV_COMMON_EXPORT KalvError : public std::runtime_error {
public:
    /** \param[in] error is cloned, so that what its class knows is kept */
    explicit KalvError(const InternalError& error);
    /** \param[in] other is copied; the two share the library's error */
    KalvError(const KalvError& other) noexcept;
    /** Releases its share of the error. */
    ~KalvError() override;
    /** \param[in] other is copied; the two share the library's error
     *  \return this error */
    KalvError& operator=(const KalvError& other) noexcept;

    /** Appends the error's codes.
     *  \param[in,out] codes keeps what it holds */
    void getCodes(std::vector<long>& codes) const;

    /** Appends the error's texts.
     *  \param[in,out] messages keeps what it holds */
    void getMsg(std::vector<std::string>& messages) const;

private:
    std::shared_ptr<const InternalError> error_;
};

} // namespace KALV

#endif
