// The fixed header of product files.
#include "header.h"

#include "document.h"

#include <kalv/product.h>

namespace kalv_python {

namespace {

void create(Call& call, long header_type)
{
    call.run(kh_tree_create_header, &header_type);
}

void set_items(Call& call, const KALV::FixedHeader& header)
{
    call.run(kh_tree_set_fixed_header_items, header.fileName.c_str(), header.fileDescription.c_str(),
             header.notes.c_str(), header.mission.c_str(), header.fileClass.c_str(), header.fileType.c_str(),
             header.validityStart.c_str(), header.validityStop.c_str(), &header.fileVersion,
             header.system.c_str(), header.creator.c_str(), header.creatorVersion.c_str(),
             header.creationDate.c_str());
}

} // namespace

void define_header(Methods& methods)
{
    methods.add(
        "create_header", &create, py::arg("header"),
        R"(Gives the document the skeleton of a header, where the cursor stands on `Variable_Header`. The type is
the format version * 10 + the extension type, see `kalv.file_name.Extension`.)");
    methods.add(
        "create_header",
        +[](Call& call, const KALV::FixedHeader& header) {
            create(call, header.headerType);
            set_items(call, header);
        },
        py::arg("header"), "The same for a `FixedHeader`, with its items.");
    methods.add(
        "get_fixed_header_item",
        +[](Call& call, Text item) { return call.file.getFixedHeaderItem(item.string()); }, py::arg("item"),
        "The text of one item, named by its tag. The cursor moves to it.");
    methods.add(
        "set_fixed_header_item",
        +[](Call& call, Text item, Text value) {
            call.run(kh_tree_set_fixed_header_item, item.c_str(), value.c_str());
        },
        py::arg("item"), py::arg("value"), "Writes one item, named by its tag. The cursor moves to it.");

    methods.type.def_property(
        "header",
        [](Document& document) {
            return perform(document, "XmlFile.header", [](Call& call) { return call.file.getFixedHeader(); });
        },
        [](Document& document, const KALV::FixedHeader& header) {
            perform(document, "XmlFile.header", [&](Call& call) { set_items(call, header); });
        },
        R"(The items of the header, as a `FixedHeader`. Those that cannot be read are empty. Setting it writes the
items of a header that is there.)");
}

} // namespace kalv_python
