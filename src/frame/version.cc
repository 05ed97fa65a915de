#include <kalv/version.h>

#include <cstdio>
#include <cstring>
#include <iterator>

const char KH_FILE_HANDLING_VERSION[100] = "KH_VERS_" KH_VERSION_TEXT;
const char KH_Library_compat[1][100] = {"KH_KH_COMPAT_" KH_VERSION_TEXT};

namespace {

// The libraries of the family, this one first. Only its own row is printed.
constexpr char lib_names[6][30] = {"kalvira_file_handling", "kalvira_common",   "kalvira_time",
                                   "kalvira_orbit",         "kalvira_pointing", "kalvira_visibility"};

} // namespace

char* KH_Get_lib_version(char* dst)
{
    return dst ? std::strcpy(dst, KH_FILE_HANDLING_VERSION) : nullptr;
}

long KH_Get_lib_version_number(void)
{
    return KH_VERSION_NUMBER;
}

char* KH_Get_compatibility_table(void)
{
    // The table has a single row, which holds the mark; callers get a pointer that is not const.
    static_assert(std::size(KH_Library_compat) == 1, "with more rows, the mark would have to be looked for");
    return const_cast<char*>(std::strstr(KH_Library_compat[0], "KH_KH_COMPAT"));
}

long KH_strcmp(const char* a, const char* b)
{
    return a && b && std::strcmp(a, b) == 0;
}

long kh_check_library_version(void)
{
    char version[30] = {};
    KH_Get_lib_version(version);
    const char* number = version + std::strlen("KH_VERS_");
    std::puts("\nCurrent Kalvira libraries:");
    std::puts("------------------------------------ ");
    std::printf("%s version = %s\n", lib_names[0], number);
    return 0;
}
