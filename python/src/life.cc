// The life of a document.
#include "document.h"

#include <cstdlib>
#include <kalv/build.h>
#include <kalv/document.h>

namespace kalv_python {

namespace {

/// Opens the file that an object is made with, or none.
std::unique_ptr<Document> make(const std::optional<FileName>& path)
{
    std::unique_ptr<Document> document(::new Document);
    if (path)
        translated("XmlFile.read", [&] {
            const InterpreterReleased released;
            document->file.read(path->bytes);
        });
    return document;
}

void close(Document& document)
{
    perform(document, "XmlFile.close", [](Call& call) {
        const InterpreterReleased released;
        if (call.fd >= 0)
            call.file.clean();
    });
}

py::str file_name(Document& document)
{
    const std::string name =
        perform(document, "XmlFile.file_name", [](Call& call) { return call.file.getFileName(); });
    return py::reinterpret_steal<py::str>(
        PyUnicode_DecodeFSDefaultAndSize(name.data(), static_cast<Py_ssize_t>(name.size())));
}

long descriptor(Document& document)
{
    return perform(document, "XmlFile.descriptor", [](Call& call) { return call.fd; });
}

py::bytes to_bytes(Document& document)
{
    char* data = nullptr;
    long size = 0;
    perform(document, "XmlFile.to_bytes", [&](Call& call) {
        const InterpreterReleased released;
        call.run(kh_tree_write_memory, &data, &size);
    });
    const std::unique_ptr<char, void (*)(void*)> owner(data, std::free);
    return {data, static_cast<std::size_t>(size)};
}

/// A class method that makes an object, of a derived class too, and has it read.
py::object from_bytes(const py::object& type, const py::object& data)
{
    py::object made = type();
    made.attr("read_bytes")(data);
    return made;
}

} // namespace

void define_life(Methods& methods)
{
    auto& type = methods.type;
    type.def(py::init(&make), py::arg("path") = py::none());

    // These give the object back, which add() does not know.
    type.def(
        "create",
        [](const py::object& self) {
            perform(self.cast<Document&>(), "XmlFile.create", [](Call& call) { call.file.create(); });
            return self;
        },
        R"(Begins an empty document, in place of the one held so far. Returns the object itself.

>>> with kalv.XmlFile().create() as doc:
...     doc.create_root("List")
...     doc.add_child("/List", "Item", 1.5)
...     doc["/List/Item"]
'1.5'
)");
    type.def(
        "read",
        [](const py::object& self, const FileName& path) {
            perform(self.cast<Document&>(), "XmlFile.read", [&](Call& call) {
                const InterpreterReleased released;
                call.file.read(path.bytes);
            });
            return self;
        },
        py::arg("path"),
        R"(Reads a file, in place of the document held so far, which is let go even when this fails. The
cursor stands on the root. Returns the object itself.)");
    type.def(
        "read_bytes",
        [](const py::object& self, Bytes& data) {
            perform(self.cast<Document&>(), "XmlFile.read_bytes", [&](Call& call) {
                const InterpreterReleased released;
                call.file.readMemory(std::string(data.data(), data.size()));
            });
            return self;
        },
        py::arg("data"), "Reads a document from memory, else as `read`. Returns the object itself.");
    type.attr("from_bytes") = py::reinterpret_steal<py::object>(PyClassMethod_New(
        py::cpp_function(&from_bytes, py::name("from_bytes"), py::arg("cls"), py::arg("data"),
                         R"(A document read from memory: `bytes`, or anything that shows its memory as such.

>>> kalv.XmlFile.from_bytes(b"<List><Item>1</Item></List>")["/List/Item"]
'1'
)")
            .ptr()));

    methods.add(
        "save",
        +[](Call& call, const std::optional<FileName>& path) {
            const std::string name = path ? path->bytes : call.file.getFileName();
            const InterpreterReleased released;
            call.run(kh_tree_write, name.c_str());
        },
        py::arg("path") = py::none(),
        R"(Saves the document, by default to the file it was read from. The file there is replaced only when the
new one is complete. The cursor and the document stay as they are, also after a failure.)");
    type.def("to_bytes", &to_bytes, R"(The bytes that `save` writes.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item>1</Item></List>")
>>> doc["/List/Item"] = 2
>>> b"<Item>2</Item>" in doc.to_bytes()
True
)");
    type.def("close", &close, "Lets go of the document. Closing again does nothing; any other use fails.");
    type.def_property_readonly(
        "closed", [](Document& document) { return descriptor(document) < 0; },
        "Whether the object holds no document.");
    type.def_property_readonly("file_name", &file_name, "The file read last; empty where there was none.");
    type.def_property_readonly(
        "descriptor", &descriptor,
        "The number that the C functions know the document by; -1 where there is none.");

    type.def("__enter__", [](const py::object& self) { return self; });
    type.def("__exit__", [](Document& document, const py::args&) { close(document); });
    type.def("__repr__", [](Document& document) {
        return py::str("<kalv.XmlFile {!r}{}>")
            .format(file_name(document), descriptor(document) < 0 ? " closed" : "");
    });
    // What has paths as keys is not gone through by number.
    type.attr("__iter__") = py::none();
    // What copying and pickling ask for. A copy would be the same document twice.
    type.def("__reduce_ex__", [](const py::object&, int) -> py::object {
        throw py::type_error(
            "an XmlFile can't be copied; XmlFile.from_bytes(doc.to_bytes()) is a second document");
    });
}

} // namespace kalv_python
