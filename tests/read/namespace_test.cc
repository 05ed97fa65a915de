// The namespaces in scope at a node, and the release of their lists.
#include "read/read_support.h"

using namespace reading;
using namespace support;

namespace {

constexpr const char* function = "kh_tree_get_namespace";

/// Two lists of the library's, freed with the object.
struct Namespaces {
    long count = -1;
    char** prefixes = nullptr;
    char** uris = nullptr;
    Namespaces() = default;
    ~Namespaces()
    {
        free_entries();
        free(prefixes);
        free(uris);
    }
    Namespaces(const Namespaces&) = delete;
    Namespaces& operator=(const Namespaces&) = delete;

    Outcome list(long fd, const char* name_or_path)
    {
        return call_of([&](long* status) {
            return kh_tree_get_namespace(&fd, name_or_path, &count, &prefixes, &uris, status);
        });
    }
    void free_entries()
    {
        for (long i = 0; i < count; ++i) {
            free(prefixes[i]);
            free(uris[i]);
        }
    }
    std::string all() const
    {
        std::string text;
        for (long i = 0; i < count; ++i)
            text += (i ? " " : "") + std::string(prefixes[i]) + "=" + uris[i];
        return text;
    }
};

const std::string layered = "<r xmlns='urn:d' xmlns:p='urn:p'><x xmlns:q='urn:q' xmlns:p='urn:own'><y/></x>"
                            "<z xmlns=''/></r>";

/// A root that declares the prefixes p0, p1, ...
std::string declaring(long prefixes)
{
    std::string xml = "<r";
    for (long i = 0; i < prefixes; ++i)
        xml += " xmlns:p" + std::to_string(i) + "='urn:" + std::to_string(i) + "'";
    return xml + "/>";
}

} // namespace

TEST(Namespaces, AreTheNodesOwnAndThenItsAncestorsEachPrefixOnce)
{
    const std::pair<const char*, const char*> nodes[] = {
        {"", "=urn:d p=urn:p"},
        {"/r/x", "q=urn:q p=urn:own =urn:d"},
        {"/r/x/y", "q=urn:q p=urn:own =urn:d"},
        {"/r/z", "= p=urn:p"},
    };
    const Document document(layered);
    for (auto [path, expected] : nodes) {
        Namespaces namespaces;
        EXPECT_EQ(namespaces.list(document.fd, path), success);
        EXPECT_EQ(namespaces.all(), expected) << path;
        EXPECT_TRUE(has_room_for(namespaces.prefixes, namespaces.count));
        EXPECT_TRUE(has_room_for(namespaces.uris, namespaces.count));
    }
}

TEST(Namespaces, AreThoseAtTheCursorWithoutAName)
{
    Document document(layered);
    document.go_to("/r/x");
    for (const char* none : {static_cast<const char*>(""), static_cast<const char*>(nullptr)}) {
        Namespaces namespaces;
        EXPECT_EQ(namespaces.list(document.fd, none), success);
        EXPECT_EQ(namespaces.count, 3);
        EXPECT_EQ(document.current_name(), "x");
    }
}

TEST(Namespaces, OfANameThatIsNoPathAreThoseOfTheNextElementOfTheName)
{
    const Document document("<r><a><b xmlns:p='urn:p'/></a></r>");
    Namespaces namespaces;
    EXPECT_EQ(namespaces.list(document.fd, "b"),
              overcome(failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: b")));
    EXPECT_EQ(namespaces.all(), "p=urn:p");
    EXPECT_EQ(document.current_name(), "b");
}

TEST(Namespaces, OfWhatIsNeitherPathNorNameAreNotFound)
{
    const Document document(layered);
    Namespaces namespaces;
    EXPECT_EQ(namespaces.list(document.fd, "none"),
              then(then(failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: none"),
                        failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_element_node")),
                   failure(KH_ERR_VALUE_NOT_FOUND, function)));
    EXPECT_EQ(namespaces.count, 0);
    EXPECT_EQ(namespaces.prefixes, nullptr);
    EXPECT_EQ(namespaces.uris, nullptr);
    EXPECT_EQ(document.current(), document.root());
}

TEST(Namespaces, OfANodeWithoutAnyAreNotFound)
{
    const Document document("<r><x xmlns:p='urn:p'/><y/></r>");
    for (const char* name : {"", "/r", "/r/y"}) {
        Namespaces namespaces;
        EXPECT_EQ(namespaces.list(document.fd, name), failure(KH_ERR_VALUE_NOT_FOUND, function));
        EXPECT_EQ(namespaces.count, 0);
        EXPECT_EQ(namespaces.prefixes, nullptr);
    }
}

TEST(Namespaces, OfANodeThatIsNoElementAreItsParents)
{
    const Document document("<r xmlns:p='urn:p'>text</r>");
    document.slot()->current = document.root()->children;
    Namespaces namespaces;
    EXPECT_EQ(namespaces.list(document.fd, ""), success);
    EXPECT_EQ(namespaces.all(), "p=urn:p");
}

TEST(Namespaces, KeepTheWarningOfAPathThatMetTheRoot)
{
    const Document document("<r xmlns:p='urn:p'/>");
    Namespaces namespaces;
    EXPECT_EQ(namespaces.list(document.fd, "..").status, KH_WARN_ROOT_REACHED);
    EXPECT_EQ(namespaces.all(), "p=urn:p");
}

TEST(Namespaces, GrowBeyondAHundredAndAreCutToTheirCount)
{
    for (long number : {1L, 99L, 100L, 101L, 200L, 250L}) {
        const Document document(declaring(number));
        Namespaces namespaces;
        ASSERT_EQ(namespaces.list(document.fd, "/r"), success);
        ASSERT_EQ(namespaces.count, number);
        EXPECT_STREQ(namespaces.prefixes[number - 1], ("p" + std::to_string(number - 1)).c_str());
        EXPECT_STREQ(namespaces.uris[number - 1], ("urn:" + std::to_string(number - 1)).c_str());
        EXPECT_TRUE(has_room_for(namespaces.prefixes, number));
        EXPECT_TRUE(has_room_for(namespaces.uris, number));
    }
}

TEST(Namespaces, ResizeTheArraysOfAnEarlierCall)
{
    const Document document(layered);
    Namespaces namespaces;
    ASSERT_EQ(namespaces.list(document.fd, "/r/x"), success);
    namespaces.free_entries();
    ASSERT_EQ(namespaces.list(document.fd, "/r"), success);
    EXPECT_EQ(namespaces.all(), "=urn:d p=urn:p");
}

TEST(Namespaces, NeedTheirOutputs)
{
    const Document document(layered);
    long fd = document.fd;
    long count = 7;
    char** list = nullptr;
    const Outcome refused = missing_argument(function);
    const auto outcome = [&](long* c, char*** prefixes, char*** uris) {
        return call_of(
            [&](long* status) { return kh_tree_get_namespace(&fd, "", c, prefixes, uris, status); });
    };
    EXPECT_EQ(outcome(nullptr, &list, &list), refused);
    EXPECT_EQ(outcome(&count, nullptr, &list), refused);
    EXPECT_EQ(outcome(&count, &list, nullptr), refused);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(call_of([&](long* status) {
                  return kh_tree_get_namespace(nullptr, "", &count, &list, &list, status);
              }),
              refused);
}

TEST(Namespaces, OfABadDescriptorReportItOrThatNothingWasFound)
{
    for_each_bad_descriptor([](long fd, long code) {
        Namespaces namespaces;
        EXPECT_EQ(namespaces.list(fd, ""), failure(code, function)) << "no move checks it";
        EXPECT_EQ(namespaces.list(fd, "x"), then(then(failure(code, "kh_tree_go_to_path_node"),
                                                      failure(code, "kh_tree_go_to_element_node")),
                                                 failure(KH_ERR_VALUE_NOT_FOUND, function)));
        EXPECT_EQ(namespaces.count, 0);
    });
}

TEST(Namespaces, LeaveNoBlockBehind)
{
    const Document document(layered);
    expect_no_block_left_by([&] {
        long fd = document.fd;
        long status = 0;
        for (const char* name : {"/r/x", "y", "none"}) {
            Namespaces namespaces;
            kh_tree_get_namespace(&fd, name, &namespaces.count, &namespaces.prefixes, &namespaces.uris,
                                  &status);
        }
    });
}

TEST(NamespaceRelease, FreesTheStringsAndTheCellsButNotTheArrays)
{
    const auto cell_of = [](char** array) {
        auto cell = static_cast<char***>(malloc(sizeof(char**)));
        *cell = array;
        return cell;
    };
    const auto array_of = [] {
        auto array = static_cast<char**>(malloc(3 * sizeof(char*)));
        for (int i = 0; i < 3; ++i)
            array[i] = strdup("text");
        return array;
    };
    expect_no_block_left_by([&] {
        char** prefixes = array_of();
        char** uris = array_of();
        KH_free_memory_get_namespace(2, cell_of(prefixes), cell_of(uris));
        for (char** array : {prefixes, uris}) {
            EXPECT_EQ(array[0], nullptr);
            EXPECT_EQ(array[1], nullptr);
            EXPECT_STREQ(array[2], "text") << "only the first two were asked for";
            free(array[2]);
            free(array);
        }
    });
}

TEST(NamespaceRelease, LeavesCellsThatHoldNothingAlone)
{
    char** nothing = nullptr;
    KH_free_memory_get_namespace(3, &nothing, &nothing);
    EXPECT_EQ(nothing, nullptr);
    KH_free_memory_get_namespace(0, nullptr, nullptr);
}
