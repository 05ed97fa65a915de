// The extension module: the class, the statuses, and what needs no document.
#include "document.h"

#include <kalv/FileHandlingFunc.h>
#include <kalv/document.h>
#include <kalv/product.h>
#include <kalv/version.h>
#include <new>
#include <pybind11/numpy.h>

namespace kalv_python {

namespace {

/// The library ends libxml2's work when the last document goes, as long as the process has a single thread.
/// Other modules that use libxml2 do not survive that, so there is always one document more.
void keep_libxml2_alive()
{
    long status = KH_OK;
    kh_tree_create(&status);
    if (status != KH_OK)
        raise_error("kalv", status);
}

/// pybind11 looks numpy's functions up at their first use, and a second thread that needs them then would wait
/// for that with the interpreter's lock in its hands, without which the first one never ends.
void find_numpy()
{
    static_cast<void>(py::dtype::of<double>());
}

std::string compose(long satellite, Text file_class, Text file_type, Text instance, long extension)
{
    return translated("file_name.compose", [&] {
        return KALV::XmlFile().createFileName(satellite, file_class.string(), file_type.string(),
                                              instance.string(), extension);
    });
}

py::tuple split(Text name)
{
    std::string given = name.string();
    const KALV::FileNameItems items =
        translated("file_name.split", [&] { return KALV::XmlFile().getFileNameItems(given); });
    return py::make_tuple(items.satId, items.fileClass, items.fileType, items.instanceId);
}

std::string version()
{
    char text[sizeof KH_FILE_HANDLING_VERSION];
    return KH_Get_lib_version(text) + std::string("KH_VERS_").size();
}

} // namespace

PYBIND11_MODULE(_core, module)
{
    define_status(module);
    keep_libxml2_alive();
    find_numpy();

    module.attr("__version__") = version();
    module.def("set_verbose", &KALV::FileHandlingFunc::setVerbose,
               "From now on the library prints its reports on standard error, too.");
    module.def("set_silent", &KALV::FileHandlingFunc::setSilent, "From now on nothing is printed.");
    module.def("compose_file_name", &compose, py::arg("satellite"), py::arg("file_class"),
               py::arg("file_type"), py::arg("instance"), py::arg("extension"));
    module.def("split_file_name", &split, py::arg("name"));
    module.def(
        "satellite_id", [](Text name) { return KH_Get_sat_id(name.c_str()); }, py::arg("name"));
    module.def("extension_of", &KH_Get_file_extension_type, py::arg("satellite"));

    py::class_<Document> type(module, "XmlFile", R"(An XML document, with a cursor.

    XmlFile(path)       reads a file
    XmlFile()           holds no document: call `create`, `read` or `read_bytes`

As a context manager it lets go of the document at the end, and saves nothing.

Paths are those of the library: "/List/Item[2]/Value" from the root, "Item[2]/@id" from the cursor, "[*]" for all
elements of a name. Whatever reads or sets a value at a path moves the cursor there.

One document is for one thread at a time; a second one that uses it gets `InUseError`.)");
    type.attr("__module__") = "kalv";
    Methods methods{type};
    define_life(methods);
    define_moves(methods);
    define_reads(methods);
    define_edits(methods);
    define_header(methods);
}

} // namespace kalv_python
