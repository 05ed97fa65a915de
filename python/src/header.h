// The fixed header as the package's dataclass.
#ifndef KALV_PYTHON_HEADER_H
#define KALV_PYTHON_HEADER_H

#include "arguments.h"

#include <kalv/FixedHeader.h>
#include <pybind11/pybind11.h>
#include <utility>

namespace kalv_python {

/// Calls a function with the name and the member of every item.
template <class Header, class Function>
void for_each_item(Header& header, Function function)
{
    function("file_name", header.fileName);
    function("schema", header.schema);
    function("file_description", header.fileDescription);
    function("notes", header.notes);
    function("mission", header.mission);
    function("file_class", header.fileClass);
    function("file_type", header.fileType);
    function("validity_start", header.validityStart);
    function("validity_stop", header.validityStop);
    function("file_version", header.fileVersion);
    function("kvstd_version", header.kvstdVersion);
    function("system", header.system);
    function("creator", header.creator);
    function("creator_version", header.creatorVersion);
    function("creation_date", header.creationDate);
    function("header_type", header.headerType);
}

} // namespace kalv_python

namespace pybind11::detail {

template <>
struct type_caster<KALV::FixedHeader> {
    PYBIND11_TYPE_CASTER(KALV::FixedHeader, const_name("kalv.FixedHeader"));
    static object python_class() { return module_::import("kalv._header").attr("FixedHeader"); }

    static std::string convert(kalv_python::Text text) { return text.string(); }
    static long convert(long number) { return number; }

    bool load(handle source, bool)
    {
        if (!isinstance(source, python_class()))
            return false;
        kalv_python::for_each_item(value, [&](const char* tag, auto& member) {
            using Member = std::decay_t<decltype(member)>;
            using Taken = std::conditional_t<std::is_same_v<Member, std::string>, kalv_python::Text, Member>;
            make_caster<Taken> item;
            const object given = source.attr(tag); // which a text may live in
            if (!item.load(given, true))
                throw type_error(std::string("FixedHeader.") + tag + " has the wrong type");
            member = convert(cast_op<Taken>(item));
        });
        return true;
    }
    static handle cast(const KALV::FixedHeader& header, return_value_policy, handle)
    {
        dict items;
        kalv_python::for_each_item(header, [&](const char* tag, const auto& member) { items[tag] = member; });
        return python_class()(**items).release();
    }
};

} // namespace pybind11::detail

#endif
