// The first of many elements whose value equals a text.
#include "product/search.h"

#include "tree/document.h"
#include "tree/path.h"

#include <kalv/product.h>
#include <kalv/read.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace kh {

namespace {

/// Puts the cursor back at the end of a search that failed.
class SearchCursor {
public:
    SearchCursor(Document& document, const Operation& op) noexcept
        : document_(document), op_(op), start_(document.current)
    {
    }
    ~SearchCursor()
    {
        if (op_.status() != KH_OK)
            document_.current = start_;
    }
    SearchCursor(const SearchCursor&) = delete;
    SearchCursor& operator=(const SearchCursor&) = delete;

private:
    Document& document_;
    const Operation& op_;
    xmlNode* start_;
};

/// The values that an array read delivers.
struct Values {
    char** texts = nullptr;
    long count = 0;

    Values() = default;
    ~Values()
    {
        std::for_each(texts, texts + count, std::free);
        std::free(texts);
    }
    Values(const Values&) = delete;
    Values& operator=(const Values&) = delete;

    /// The 0-based index of the first text that equals a value; the count if there is none.
    long index_of(const char* value) const noexcept
    {
        return std::find_if(texts, texts + count,
                            [&](const char* text) { return std::strcmp(text, value) == 0; }) -
               texts;
    }
};

/// Where the "*" of the array node stands. As for the path language, only the first "[" of a segment counts.
std::size_t array_mark(std::string_view path) noexcept
{
    std::size_t bracket = path.find('[');
    while (path.substr(bracket, 2) != "[*")
        bracket = path.find('[', path.find('/', bracket));
    return bracket + 1;
}

/// Runs a call that writes a path into a string, for a caller who provides the room instead.
template <class Call>
long written_into(char* room, Call call) noexcept
{
    std::string path;
    const long status = call(room ? &path : nullptr);
    if (room && status == KH_OK)
        std::strcpy(room, path.c_str());
    return status;
}

} // namespace

long find_string_value_element(long* fd, const char* element_name, const char* value, std::string* path,
                               long* ierr) noexcept
{
    Operation op("kh_tree_find_string_value_element", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!element_name || !value || !path)
        return op.null_argument();
    const SearchCursor cursor(*document, op);
    for (bool any_value = false;; any_value = true) {
        long status = KH_OK;
        char* text = nullptr;
        kh_tree_read_string_element_value(fd, element_name, &text, &status);
        const Block<char> owner(text);
        if (status != KH_OK || !text)
            return any_value ? op.fail(KH_ERR_VALUE_NOT_FOUND) : op.pass_on(status);
        if (std::strcmp(text, value) == 0)
            break;
    }
    const char* found = nullptr;
    get_path(fd, &found, op.error_vector());
    if (op.failed())
        return op.pass_on();
    op.guarded([&] { *path = found; });
    return op.status();
}

long find_string_value_path(long* fd, const char* array_path, const char* value, std::string* path,
                            long* ierr) noexcept
{
    Operation op("kh_tree_find_string_value_path", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!array_path || !value || !path)
        return op.null_argument();
    const SearchCursor cursor(*document, op);
    Values values;
    kh_tree_path_read_string_node_array(fd, array_path, &values.texts, &values.count, op.error_vector());
    if (op.status() != KH_OK)
        return op.pass_on();
    const long index = values.index_of(value);
    // No values at all are a match at the first place: callers rely on it.
    if (values.count > 0 && index == values.count)
        return op.fail(KH_ERR_VALUE_NOT_FOUND);
    op.guarded([&] {
        path->assign(array_path);
        path->replace(array_mark(array_path), 1, std::to_string(index + 1));
    });
    return op.status();
}

} // namespace kh

long kh_tree_find_string_value_element(long* fd, const char* element_name, const char* value, char* path,
                                       long* ierr)
{
    return kh::written_into(path, [&](std::string* found) {
        return kh::find_string_value_element(fd, element_name, value, found, ierr);
    });
}

long kh_tree_find_string_value_path(long* fd, const char* array_path, const char* value, char* path,
                                    long* ierr)
{
    return kh::written_into(path, [&](std::string* found) {
        return kh::find_string_value_path(fd, array_path, value, found, ierr);
    });
}
