// What a document remembers between calls, where far children are and where the last path led, never shows:
// every call gives what a walk from the first sibling gives.
#include "support/nodes.h"
#include "support/outcome.h"

#include <random>
#include <sstream>
#include <vector>

namespace {

using support::Document;
using support::nodes_of;
using support::outcome_of;
using support::success;

/// The children of a name, by a walk of the test's own.
std::vector<xmlNode*> children(const xmlNode* parent, const std::string& name)
{
    std::vector<xmlNode*> found;
    for (xmlNode* child = parent->children; child; child = child->next) {
        if (child->type == XML_ELEMENT_NODE && name == reinterpret_cast<const char*>(child->name))
            found.push_back(child);
    }
    return found;
}

/// Where the cursor stands after a walk from the root to a child that is not there: on the last one of that
/// name that is tried behind the first child, or where it was.
const xmlNode* last_tried(const Document& document, const std::vector<xmlNode*>& found, const xmlNode* before)
{
    if (found.empty() || (found.size() == 1 && found[0] == document.root()->children))
        return before;
    return found.back();
}

class EditedDocument : public testing::TestWithParam<unsigned> {
protected:
    std::string random_name() { return random() % 4 == 0 ? "b" : "a"; }
    std::string random_path(const std::string& name)
    {
        return "/R/" + name + "[" + std::to_string(random() % 60 + 1) + "]";
    }

    void edit()
    {
        const std::string path = random_path(random_name());
        const std::string name = random_name();
        switch (random() % 6) {
        case 0:
            kh_tree_add_child(&document.fd, "/R", name.c_str(), nullptr);
            break;
        case 1:
            kh_tree_add_next_sibling(&document.fd, path.c_str(), name.c_str(), nullptr);
            break;
        case 2:
            kh_tree_add_previous_sibling(&document.fd, path.c_str(), name.c_str(), nullptr);
            break;
        case 3:
            kh_tree_remove_node(&document.fd, path.c_str(), nullptr);
            break;
        case 4:
            kh_tree_set_string_node_value(&document.fd, path.c_str(), "text", "%s", nullptr);
            break;
        default: // grandchildren, and all of them gone at once
            kh_tree_add_child(&document.fd, path.c_str(), name.c_str(), nullptr);
            kh_tree_go_to_path_node(&document.fd, (path + "/" + name).c_str(), nullptr);
            if (random() % 2 == 0)
                kh_tree_set_string_node_value(&document.fd, path.c_str(), "text", "%s", nullptr);
        }
    }

    void expect_the_same_as_a_walk()
    {
        const std::string name = random_name();
        const std::string path = random_path(name);
        const std::size_t index = std::stoul(path.substr(path.find('[') + 1)) - 1;
        const std::vector<xmlNode*> found = children(document.root(), name);
        for (int time = 0; time < 2; ++time) {
            const xmlNode* before = document.current();
            const long status = kh_tree_go_to_path_node(&document.fd, path.c_str(), nullptr);
            if (index < found.size()) {
                ASSERT_EQ(status, 0) << path;
                ASSERT_EQ(document.current(), found[index]) << path;
                ASSERT_EQ(document.path(), found.size() > 1 ? path : "/R/" + name);
            } else {
                ASSERT_EQ(status, KH_ERR_NOT_FOUND) << path;
                ASSERT_EQ(document.current(), last_tried(document, found, before)) << path;
            }
        }
    }

    std::mt19937 random{GetParam()};
    Document document{"<R>" + [] {
        std::string children;
        for (int i = 0; i < 40; ++i)
            children += i % 5 == 0 ? "<b/>" : "<a>1</a>";
        return children;
    }() + "</R>"};
};

TEST_P(EditedDocument, IsWalkedAsIfNothingWereRemembered)
{
    for (int step = 0; step < 2000 && !HasFatalFailure(); ++step) {
        if (random() % 2 == 0)
            edit();
        expect_the_same_as_a_walk();
    }
}

INSTANTIATE_TEST_SUITE_P(Random, EditedDocument, testing::Range(1u, 9u));

TEST(RepeatedPath, WarnsEachTimeThatItGoesAboveTheRoot)
{
    Document document("<R><A/></R>");
    const auto go = [&](long* ierr) { kh_tree_go_to_path_node(&document.fd, "/R/../A", ierr); };
    const support::Outcome first = outcome_of(go);
    EXPECT_NE(first.report.find("Root already reached"), std::string::npos);
    EXPECT_EQ(outcome_of(go), first);
}

TEST(RepeatedPath, StepsUpAnewForCallersWhoseStatusThatSets)
{
    Document document("<R><A/><B/><B/></R>");
    long status = 0;
    kh_tree_chop_path(&document.fd, "/R/A/../B[*]", &status);
    for (long k = 0; k < 2; ++k) {
        status = -99;
        EXPECT_NE(kh_tree_go_to_stack_array_node(&document.fd, &k, &status), nullptr);
        EXPECT_EQ(status, 0) << k;
    }
}

// Paths that share their beginning, their length, or a part of a name with the one before.
TEST(RepeatedPath, TakesOverOnlyWholeSegments)
{
    Document document("<R><A><B/><Bc/></A><Ab><B/></Ab><A><B/></A></R>");
    const xmlNode* first = document.root()->children;
    const xmlNode* other = first->next;
    const xmlNode* second = other->next;
    const struct {
        const char* path;
        const xmlNode* node;
    } steps[] = {{"/R/A/B", first->children},
                 {"/R/A/Bc", first->children->next},
                 {"/R/A/B/", first->children},
                 {"/R/A//B", first->children},
                 {"/R/A/", first},
                 {"/R/Ab", other},
                 {"/R/A[2]", second},
                 {"/R/A[1]", first},
                 {"/R/A[2]/B", second->children},
                 {"/R/A[1]/B", first->children},
                 {"/R/Ab/B", other->children},
                 {"/R/A/..", document.root()},
                 {"/R/A/../Ab", other},
                 {"/R/A/.", first},
                 {"/R/A/./Bc", first->children->next},
                 {"/R", document.root()}};
    for (const auto& [path, node] : steps) {
        document.go_to(path);
        EXPECT_EQ(document.current(), node) << path;
        document.go_to(path);
        EXPECT_EQ(document.current(), node) << path;
    }
    EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, "/R/A/b", nullptr), KH_ERR_NOT_FOUND);
    document.go_to("/R/A/B");
    EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, "/R/A/Bc/B", nullptr), KH_ERR_NOT_FOUND);
}

// A walk that fails leaves the cursor on the last element that it tried, also where it began in the middle.
TEST(RepeatedPath, LeavesTheCursorWhereAWholeWalkWould)
{
    const char* const text = "<R><A/><L><I/><I><V/></I></L></R>";
    const auto after = [&](const char* path) {
        Document document(text);
        kh_tree_go_to_path_node(&document.fd, path, nullptr);
        return document.path();
    };
    Document document(text);
    for (const char* path : {"/R/L/I[2]/W", "/R/L/I[2]/V", "/R/L/X", "/R/L/I[3]", "/R/A/V", "/R/L"}) {
        kh_tree_go_to_path_node(&document.fd, "/R/L/I[2]/V", nullptr);
        kh_tree_rewind(&document.fd, nullptr);
        kh_tree_go_to_path_node(&document.fd, path, nullptr);
        EXPECT_EQ(document.path(), after(path)) << path;
    }
}

/// Reads a path with the cursor on the root, and tells all that callers can see of it.
std::string seen_of(const Document& document, const std::string& path)
{
    long fd = document.fd;
    document.slot()->current = document.root();
    long value = 0;
    const support::Outcome outcome = outcome_of(
        [&](long* ierr) { kh_tree_path_read_integer_node_value(&fd, path.c_str(), &value, ierr); });
    const kh_document_slot* slot = document.slot();
    std::ostringstream seen;
    seen << path << ": " << value << ", " << outcome << ", at " << document.path() << ", visited "
         << slot->visited << ", absolute " << slot->absolute << ", array " << slot->array_position
         << ", stack";
    for (long i = 0; i < slot->stack_count; ++i)
        seen << ' ' << slot->stack_name[i] << '[' << slot->stack_index[i] << ']';
    seen << ", asks for " << (slot->requested_tag ? slot->requested_tag : "nothing");
    return seen.str();
}

std::string list_of_items(int count)
{
    std::string text = "<R>";
    for (int i = 1; i <= count; ++i) {
        const std::string number = std::to_string(i);
        text += "<I a=\"" + number + "\">" + (i % 7 == 0 ? "" : "<V>" + number + "</V>") + "</I>";
    }
    return text + "</R>";
}

// Paths that differ in an index alone are not taken apart anew, whether an index of all elements stands or not.
TEST(PathsInALoop, AreReadAsTheFirstPathOfADocumentIs)
{
    const std::string text = list_of_items(120);
    const Document looped(text);
    const char* const turns[] = {
        "/R/I[1]/V",    "/R/I[2]/V",    "/R/I[3]/V",    "/R/I[3]/V",    "/R/I[12]/V",  "/R/I[13]/V",
        "/R/I[14]/V",   "/R/I[15]/V",   "/R/I[99]/V",   "/R/I[100]/V",  "/R/I[121]/V", "/R/I[120]/V",
        "/R/I[000]/V",  "/R/I[012]/V",  "/R/I[1x2]/V",  "/R/I[115]/V",  "/R/I[-15]/V", "/R/I[115]/W",
        "/R/I[116]/W",  "/R/I[116]/V/", "/R/I[117]/V/", "/R/I[117]",    "/R/I[118]",   "/R/I[2]/@a",
        "/R/I[3]/@a",   "/R/I[4]/@a",   "/R/I[5]/@b",   "/R/I[3]/..",   "/R/I[4]/..",  "/R/I[5]/..",
        "/R/I[5]/./V",  "/R/I[6]/./V",  "/R/I[8]/./V",  "/R/I[*]/V",    "/R/I[9]/V",   "/R[1]/I[9]/V",
        "/R[2]/I[9]/V", "/Q[3]/I[9]/V", "/R/I[1]/V[1]", "/R/I[1]/V[2]", "/R/I[11",     "/R/I[21",
        "/R//",         "R/I[1]/V",     "I[1]/V",       "I[2]/V",       "I[3]/V",      "/R/I[2]/V"};
    for (int time = 0; time < 12; ++time) { // until the index of all elements stands
        for (const char* path : turns)
            ASSERT_EQ(seen_of(looped, path), seen_of(Document(text), path)) << "time " << time;
    }
}

TEST(PathsInALoop, FollowAnEditBetweenTwoTurns)
{
    Document document(list_of_items(60));
    const auto value = [&](const char* path) {
        long read = 0, status = support::untouched;
        kh_tree_path_read_integer_node_value(&document.fd, path, &read, &status);
        EXPECT_EQ(status, 0) << path;
        return read;
    };
    for (int time = 0; time < 400; ++time) {
        EXPECT_EQ(value("/R/I[31]/V"), 31);
        EXPECT_EQ(value("/R/I[32]/V"), 32);
    }
    kh_tree_set_string_node_value(&document.fd, "/R/I[32]/V", "77", "%s", nullptr);
    EXPECT_EQ(value("/R/I[33]/V"), 33);
    EXPECT_EQ(value("/R/I[32]/V"), 77);
    kh_tree_set_string_node_value(&document.fd, "/R/I[32]/V", "32", "%s", nullptr);
    kh_tree_remove_node(&document.fd, "/R/I[2]", nullptr);
    EXPECT_EQ(value("/R/I[31]/V"), 32);
    EXPECT_EQ(value("/R/I[32]/V"), 33);
    kh_tree_set_string_node_value(&document.fd, "/R/I[33]/V", "1234", "%s", nullptr);
    EXPECT_EQ(value("/R/I[32]/V"), 33);
    EXPECT_EQ(value("/R/I[33]/V"), 1234);
}

// The last few paths are remembered, each with its own loop; which, and whether at all, never shows.
TEST(PathsInTurn, AreReadAsTheFirstPathOfADocumentIs)
{
    const std::string text = list_of_items(60);
    const Document looped(text);
    std::mt19937 random(1);
    std::string asked_for = "/R"; // whose last name a refused path leaves requested
    seen_of(looped, asked_for);
    const auto one_of = [&](const std::vector<std::string>& choices) {
        return choices[random() % choices.size()];
    };
    for (int turn = 1; turn <= 1500; ++turn) {
        const std::string item = "/R/I[" + std::to_string(turn % 63) + "]";
        const std::string path =
            one_of({item, item + "/V", item + "/@a", item + "/W", item + "/V/..", "/R", "/R/I", "/R/I[7]/@a",
                    "/R/I[*]/V", "/R/I[*]/@a", "/Q" + item, "/@a", "/", ".x", item + "[*]/I[*]",
                    std::string(120, '/') + "R", item + "/V/"});
        const Document fresh(text);
        seen_of(fresh, asked_for);
        ASSERT_EQ(seen_of(looped, path), seen_of(fresh, path)) << "turn " << turn;
        if (looped.slot()->stack_count > 0 && path != "/@a")
            asked_for = path;
    }
}

TEST(PathsInTurn, FollowAnEditEach)
{
    Document document(list_of_items(60));
    const std::vector<std::string> paths{"/R", "/R/I[31]", "/R/I[31]/V", "/R/I[32]/V"};
    const auto values = [&] {
        std::string all;
        for (const std::string& path : paths) {
            document.go_to(path.c_str());
            all += std::string(reinterpret_cast<const char*>(document.current()->name)) + " ";
            if (path.back() == 'V')
                all +=
                    std::string(reinterpret_cast<const char*>(document.current()->children->content)) + " ";
        }
        return all;
    };
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(values(), "R I V 31 V 32 ");
    kh_tree_remove_node(&document.fd, "/R/I[2]", nullptr);
    EXPECT_EQ(values(), "R I V 32 V 33 ");
    kh_tree_add_previous_sibling(&document.fd, "/R/I[1]", "I", nullptr);
    EXPECT_EQ(values(), "R I V 31 V 32 ");
    kh_tree_set_string_node_value(&document.fd, "/R/I[31]/V", "77", "%s", nullptr);
    EXPECT_EQ(values(), "R I V 77 V 32 ");
}

TEST(PathsInALoop, GoOnAlongAListThatCameBeforeTheOther)
{
    const auto list = [](int from) {
        std::string text = "<L>";
        for (int i = from; i < from + 40; ++i)
            text += "<I><V>" + std::to_string(i) + "</V></I>";
        return text + "</L>";
    };
    Document document("<R>" + list(1) + "</R>");
    const auto value = [&](int item) {
        long read = 0;
        const std::string path = "/R/L/I[" + std::to_string(item) + "]/V";
        kh_tree_path_read_integer_node_value(&document.fd, path.c_str(), &read, &document.status);
        EXPECT_EQ(document.status, 0) << path;
        return read;
    };
    for (int item = 1; item <= 10; ++item)
        EXPECT_EQ(value(item), item);
    kh_tree_add_previous_sibling(&document.fd, "/R/L", "L", &document.status);
    ASSERT_EQ(document.status, 0);
    for (int item = 1; item <= 40; ++item) {
        const std::string path = "/R/L/I[" + std::to_string(item) + "]";
        kh_tree_add_child(&document.fd, "/R/L", "I", &document.status);
        kh_tree_add_child(&document.fd, path.c_str(), "V", &document.status);
        const long number = 100 + item;
        kh_tree_set_integer_node_value(&document.fd, (path + "/V").c_str(), &number, "%ld", &document.status);
        ASSERT_EQ(document.status, 0);
        EXPECT_EQ(value(item), 100 + item);
    }
    for (int item = 11; item <= 40; ++item)
        EXPECT_EQ(value(item), 100 + item);
    kh_tree_remove_node(&document.fd, "/R/L[1]", &document.status);
    ASSERT_EQ(document.status, 0);
    for (int item = 1; item <= 40; ++item)
        EXPECT_EQ(value(item), item);
}

TEST(PathsInTurn, BuildAListAsOneByOne)
{
    Document built("<R><L/></R>");
    for (int i = 1; i <= 120; ++i) {
        const std::string item = "/R/L/I[" + std::to_string(i) + "]";
        const long number = i;
        kh_tree_add_child(&built.fd, "/R/L", "I", &built.status);
        ASSERT_EQ(built.status, 0) << item;
        for (const char* name : {"V", "W", "X", "Y"}) {
            kh_tree_add_child(&built.fd, item.c_str(), name, &built.status);
            ASSERT_EQ(built.status, 0) << item;
            kh_tree_set_integer_node_value(&built.fd, (item + "/" + name).c_str(), &number, "%ld",
                                           &built.status);
            ASSERT_EQ(built.status, 0) << item;
            EXPECT_STREQ(built.slot()->requested_tag, name);
            EXPECT_EQ(built.slot()->stack_count, 4);
            EXPECT_EQ(built.slot()->stack_index[2], i - 1);
        }
    }
    const std::vector<xmlNode*> items = children(built.root()->children, "I");
    ASSERT_EQ(items.size(), 120u);
    for (std::size_t i = 0; i < items.size(); ++i) {
        for (const char* name : {"V", "W", "X", "Y"}) {
            const std::vector<xmlNode*> values = children(items[i], name);
            ASSERT_EQ(values.size(), 1u);
            EXPECT_EQ(reinterpret_cast<const char*>(values[0]->children->content), std::to_string(i + 1));
        }
    }
}

TEST(RepeatedPath, FollowsANewRoot)
{
    Document document("<R><A/></R>");
    document.go_to("/R/A");
    kh_tree_remove_node(&document.fd, "/R", nullptr);
    kh_tree_create_root(&document.fd, "R", nullptr);
    EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, "/R/A", nullptr), KH_ERR_NOT_FOUND);
    kh_tree_add_child(&document.fd, "/R", "A", nullptr);
    document.go_to("/R");
    document.go_to("/R/A");
    EXPECT_EQ(document.current_name(), "A");
}

TEST(RepeatedPath, LeavesTheStackWhereThereIsNoRoot)
{
    Document document("<R><A><B>1</B></A></R>");
    for (const char* path : {"/R/A/B", "/R"})
        document.go_to(path);
    kh_tree_remove_node(&document.fd, "/R", nullptr);
    long value = 0;
    EXPECT_EQ(kh_tree_path_read_integer_node_value(&document.fd, "/R/A/B", &value, nullptr), KH_ERR_NO_ROOT);
    EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, "/R/A/B", nullptr), KH_ERR_NO_ROOT);
    EXPECT_EQ(document.slot()->stack_count, 1);
    EXPECT_STREQ(document.slot()->requested_tag, "R");
}

TEST(RepeatedPath, SetsRequestAndCountAnew)
{
    Document document("<R><A><B/><B/></A></R>");
    document.go_to("/R/A");
    kh_tree_go_to_element_node(&document.fd, "B", nullptr);
    document.go_to("/R/A");
    EXPECT_STREQ(document.slot()->requested_tag, "A");
    EXPECT_EQ(document.slot()->visited, 0);
}

TEST(FarChild, IsFoundInAnotherDocumentThanTheDescriptors)
{
    std::string many = "<R>";
    for (int i = 0; i < 20; ++i)
        many += "<a/>";
    Document one(many + "</R>");
    Document other(many + "</R>");
    const std::vector<xmlNode*> expected = children(other.root(), "a");
    EXPECT_EQ(kh_tree_go_to_child(&one.fd, other.root(), "a", 15), expected[15]);
    kh_tree_remove_node(&other.fd, "/R/a[3]", nullptr);
    EXPECT_EQ(kh_tree_go_to_child(&one.fd, other.root(), "a", 15), expected[16]);
}

std::string repeated(int count, const std::string& piece)
{
    std::string text;
    while (count-- > 0)
        text += piece;
    return text;
}

TEST(FarChild, IsFoundAmongThoseThatCameAfterTheOnesRemoved)
{
    Document document("<R><p>" + repeated(20, "<a/>") + "</p></R>");
    document.go_to("/R/p/a[15]");
    for (const bool set : {true, false}) {
        if (set)
            kh_tree_set_string_node_value(&document.fd, "/R", "text", "%s", &document.status);
        else
            kh_tree_remove_node(&document.fd, "/R/p", &document.status);
        ASSERT_EQ(document.status, KH_OK);
        kh_tree_add_child(&document.fd, "/R", "p", &document.status);
        EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, "/R/p/a[15]", &document.status), KH_ERR_NOT_FOUND);
        for (int i = 0; i < 20; ++i)
            kh_tree_add_child(&document.fd, "/R/p", "a", &document.status);
        document.go_to("/R/p/a[15]");
        EXPECT_EQ(document.current(), children(document.root()->last, "a")[14]);
    }
}

TEST(FarChild, IsFoundBelowADeepNodeAfterAnEdit)
{
    Document document("<R>" + repeated(2000, "<n>") + repeated(20, "<a/>") + "<b><c/></b>" +
                      repeated(2000, "</n>") + "</R>");
    xmlNode* deepest = support::node_of(document, "//a[1]")->parent;
    const std::vector<xmlNode*> expected = children(deepest, "a");
    EXPECT_EQ(kh_tree_go_to_child(&document.fd, deepest, "a", 15), expected[15]);
    document.slot()->current = support::node_of(document, "//b");
    ASSERT_EQ(kh_tree_remove_node(&document.fd, "c", &document.status), KH_OK);
    EXPECT_EQ(kh_tree_go_to_child(&document.fd, deepest, "a", 15), expected[15]);
}

TEST(FarChild, IsFoundAmongThoseAddedBehindAText)
{
    Document document("<R>text</R>");
    EXPECT_EQ(kh_tree_go_to_child(&document.fd, document.root(), "a", 15), nullptr);
    for (int i = 0; i < 20; ++i)
        kh_tree_add_next_sibling(&document.fd, "/R/a[0]", "a", &document.status);
    ASSERT_EQ(document.status, KH_OK);
    EXPECT_EQ(kh_tree_go_to_child(&document.fd, document.root(), "a", 15),
              children(document.root(), "a")[15]);
}

TEST(FarPath, SkipsWhatIsNoElement)
{
    Document document("<!DOCTYPE R [<!ENTITY e '<b><c/></b>'>]><R>&e;</R>");
    const xmlNode* declaration = document.root()->children->children;
    ASSERT_EQ(kh_tree_go_to_node(&document.fd, declaration->children->children, &document.status), KH_OK);
    EXPECT_EQ(document.path(), "/R/b/c");
}

/// A document of which so much has been read that the library keeps an index of its elements.
class MuchReadDocument : public testing::Test {
protected:
    MuchReadDocument()
    {
        for (int time = 0; time < 4; ++time)
            values_named("i");
    }

    using Values = std::vector<long>;
    Values values_named(const char* name) { return values(kh_tree_read_integer_element_array, name); }
    Values values_at(const char* path) { return values(kh_tree_path_read_integer_node_array, path); }
    long value_at(const std::string& path)
    {
        long value = -1;
        kh_tree_path_read_integer_node_value(&document.fd, path.c_str(), &value, &document.status);
        return document.status == KH_OK ? value : document.status;
    }

    static std::string elements(const char* name, int from, int to)
    {
        std::string text;
        for (int i = from; i < to; ++i)
            text += "<" + std::string(name) + ">" + std::to_string(i) + "</" + name + ">";
        return text;
    }
    static Values numbers(long from, long to)
    {
        Values expected;
        for (; from < to; ++from)
            expected.push_back(from);
        return expected;
    }

    static constexpr int depth = 80;
    Document document{"<R><L>" + elements("a", 1, 30) + elements("b", 1, 30) + elements("c", 1, 3) + "</L>" +
                      elements("i", 0, 400) + "<M>" + elements("a", 1, 30) + "</M>" + repeated(depth, "<n>") +
                      elements("i", 400, 500) + elements("d", 1, 10) + repeated(depth, "</n>") + "</R>"};

private:
    template <class Read>
    Values values(Read* read, const char* where)
    {
        long* found = nullptr;
        long count = 0;
        read(&document.fd, where, &found, &count, &document.status);
        EXPECT_EQ(document.status, KH_OK) << where;
        const Values result(found, found + count);
        std::free(found);
        return result;
    }
};

TEST_F(MuchReadDocument, HasItsArraysBehindManySiblings)
{
    EXPECT_EQ(values_at("/R/L/a[*]"), numbers(1, 30));
    EXPECT_EQ(values_at("/R/M/a[*]"), numbers(1, 30));
    EXPECT_EQ(values_at("/R/i[*]"), numbers(0, 400));
}

TEST_F(MuchReadDocument, HasItsArraysBelowManyLevels)
{
    document.slot()->current = support::node_of(document, "//d[1]")->parent;
    EXPECT_EQ(values_at("d[*]"), numbers(1, 10));
}

TEST_F(MuchReadDocument, IsSearchedFromBelowManyLevels)
{
    document.slot()->current = support::node_of(document, "//d[1]")->parent;
    ASSERT_EQ(kh_tree_go_to_element_node(&document.fd, "d", &document.status), KH_OK);
    EXPECT_EQ(document.current(), support::node_of(document, "//d[1]"));
}

TEST_F(MuchReadDocument, HasFarChildrenOfSeveralNamesInTurn)
{
    for (int i = 1; i < 30; ++i) {
        const std::string index = "[" + std::to_string(i) + "]";
        EXPECT_EQ(value_at("/R/L/a" + index), i);
        EXPECT_EQ(value_at("/R/L/b" + index), i);
    }
    for (const char* name : {"a", "b", "a", "b"}) {
        for (int i = 20; i < 30; ++i)
            EXPECT_EQ(value_at("/R/L/" + std::string(name) + "[" + std::to_string(i) + "]"), i);
    }
}

TEST_F(MuchReadDocument, LacksTheChildBehindTheLast)
{
    for (int i = 1; i < 3; ++i)
        EXPECT_EQ(value_at("/R/L/c[" + std::to_string(i) + "]"), i);
    for (const char* missing : {"/R/L/c[3]", "/R/L/c[4]", "/R/L/c[8]"})
        EXPECT_EQ(value_at(missing), KH_ERR_NOT_FOUND) << missing;
    for (int i = 20; i < 30; ++i)
        EXPECT_EQ(value_at("/R/L/a[" + std::to_string(i) + "]"), i);
    EXPECT_EQ(value_at("/R/L/a[30]"), KH_ERR_NOT_FOUND);
}

TEST(BadPath, IsBadInItsStartBeforeItIsTooLong)
{
    Document document("<R/>");
    EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, (".x" + repeated(60, "/a")).c_str(), nullptr),
              KH_ERR_ARGUMENT);
    EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, "/R/..x", nullptr), KH_ERR_NOT_FOUND);
    EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, "..x", nullptr), KH_ERR_NOT_FOUND);
}

} // namespace
