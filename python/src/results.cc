#include "results.h"

#include <algorithm>
#include <string>

namespace kalv_python {

namespace py = pybind11;

namespace {

bool continues_character(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
}

std::size_t character_count(const char* text)
{
    std::size_t count = 0;
    for (; *text; ++text)
        count += continues_character(*text) ? 0 : 1;
    return count;
}

/// Writes as many characters as character_count() says, also of a text that is not UTF-8.
void decode(const char* text, Py_UCS4* characters)
{
    while (continues_character(*text))
        ++text;
    while (*text) {
        const auto lead = static_cast<unsigned char>(*text++);
        Py_UCS4 character = lead < 0x80   ? lead
                            : lead < 0xe0 ? lead & 0x1f
                            : lead < 0xf0 ? lead & 0x0f
                                          : lead & 0x07;
        for (; continues_character(*text); ++text)
            character = character << 6 | (static_cast<unsigned char>(*text) & 0x3fU);
        *characters++ = character;
    }
}

} // namespace

py::array text_array(const Array<char*>& texts)
{
    std::size_t width = 1;
    for (const char* text : texts)
        width = std::max(width, character_count(text));
    py::array array(py::dtype("U" + std::to_string(width)), texts.end() - texts.begin());
    auto* row = static_cast<Py_UCS4*>(array.mutable_data());
    std::fill_n(row, static_cast<std::size_t>(array.size()) * width, Py_UCS4(0));
    for (const char* text : texts) {
        decode(text, row);
        row += width;
    }
    return array;
}

} // namespace kalv_python
