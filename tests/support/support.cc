#include "support/support.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace support {

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "kalv-test-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder");
    folder_ = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string TemporaryFolder::file(std::string_view name, std::string_view content) const
{
    const std::string target = path(name);
    std::ofstream(target, std::ios::binary) << content;
    return target;
}

std::size_t TemporaryFolder::entries() const
{
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder_), std::filesystem::directory_iterator()));
}

std::string content_of(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// A file rather than a pipe, so that a long report cannot block.
static std::string caught(FILE* stream, const std::function<void()>& action)
{
    fflush(stream);
    const int original = dup(fileno(stream));
    FILE* file = tmpfile();
    dup2(fileno(file), fileno(stream));
    action();
    fflush(stream);
    dup2(original, fileno(stream));
    close(original);
    std::string text;
    rewind(file);
    for (int c = getc(file); c != EOF; c = getc(file))
        text.push_back(static_cast<char>(c));
    fclose(file);
    return text;
}

std::string written_to_stderr(const std::function<void()>& action)
{
    return caught(stderr, action);
}
std::string written_to_stdout(const std::function<void()>& action)
{
    return caught(stdout, action);
}

std::string report_of(const std::function<void()>& action)
{
    const Verbose verbose;
    return written_to_stderr(action);
}

Document::Document()
{
    fd = kh_tree_create(&status);
    if (status != 0)
        throw std::runtime_error("no document");
}

Document::Document(std::string_view xml)
{
    fd = kh_tree_init_parser(folder_.file("document.xml", xml).c_str(), &status);
    if (status != 0)
        throw std::runtime_error("not parsed: " + std::string(xml));
}

Document Document::file(const std::string& name)
{
    long status = 0;
    const long fd = kh_tree_init_parser(name.c_str(), &status);
    if (status != 0)
        throw std::runtime_error("not parsed: " + name);
    return Document(fd);
}

Document::~Document()
{
    long ignored = 0;
    kh_tree_cleanup_parser(&fd, &ignored);
}

std::string Document::current_name() const
{
    return current() && current()->name ? reinterpret_cast<const char*>(current()->name) : "";
}

std::string Document::path() const
{
    std::string text(1 << 16, '\0');
    long descriptor = fd;
    long code = 0;
    kh_tree_get_path(&descriptor, text.data(), &code);
    return code == 0 ? text.c_str() : std::to_string(code);
}

void Document::go_to(const char* path)
{
    kh_tree_go_to_path_node(&fd, path, &status);
    ASSERT_EQ(status, 0) << path;
}

std::string Document::stack() const
{
    std::string text;
    for (long i = 0; i < slot()->stack_count; ++i)
        text += (i ? " " : "") + std::string(slot()->stack_name[i]) + "[" +
                std::to_string(slot()->stack_index[i]) + "]";
    return text;
}

std::string Document::written()
{
    const std::string target = folder_.path("written.xml");
    kh_tree_write(&fd, target.c_str(), &status);
    EXPECT_EQ(status, 0);
    return content_of(target);
}

std::string debian_file(const std::string& path)
{
    return std::filesystem::exists(path) ? path : std::string();
}

CommaLocale::CommaLocale()
{
    // Made here, since machines have the locales that their owners speak.
    const std::string name = folder_.path("de_DE.UTF-8");
    if (std::system(("localedef -i de_DE -f UTF-8 '" + name + "'").c_str()) == 0) {
        setenv("LOCPATH", std::filesystem::path(name).parent_path().c_str(), 1);
        setlocale(LC_NUMERIC, "de_DE.UTF-8");
    }
}

CommaLocale::~CommaLocale()
{
    setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
}

bool CommaLocale::is_set() const
{
    return std::strcmp(localeconv()->decimal_point, ",") == 0;
}

Unprivileged::Unprivileged() : effective_user_(geteuid())
{
    constexpr uid_t nobody = 65534;
    if (effective_user_ == 0 && seteuid(nobody) != 0)
        ADD_FAILURE() << "the superuser cannot become anybody else";
}

Unprivileged::~Unprivileged()
{
    if (geteuid() != effective_user_ && seteuid(effective_user_) != 0)
        ADD_FAILURE() << "the superuser is lost";
}

} // namespace support
