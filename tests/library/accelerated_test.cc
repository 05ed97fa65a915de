// What is remembered between calls never shows: random sessions give the same, call by call, as a build of the
// library that walks anew each time. Both stand in this process; each call goes to the one, then to the other.
#include "support/random_input.h"
#include "support/support.h"

#include <dlfcn.h>
#include <memory>
#include <sstream>
#include <vector>

namespace {

class Library {
public:
    explicit Library(const char* file) : handle_(dlopen(file, RTLD_NOW | RTLD_LOCAL))
    {
        if (!handle_)
            throw std::runtime_error(dlerror());
    }
    template <class Symbol>
    Symbol* symbol(const char* name) const
    {
        void* found = dlsym(handle_, name);
        if (!found)
            throw std::runtime_error(name);
        return reinterpret_cast<Symbol*>(found);
    }
    template <class Function, class... Arguments>
    auto call(const char* name, Arguments... arguments) const
    {
        return symbol<Function>(name)(arguments...);
    }

private:
    void* handle_; // stays loaded: other tests of this process may follow
};

#define CALL(library, function, ...) (library).call<decltype(function)>(#function, __VA_ARGS__)

/// One call, as both libraries get it.
struct Step {
    std::size_t kind;
    std::string path;
    std::string name;
    long number;

    std::string line() const
    {
        return std::to_string(kind) + " " + path + " " + name + " " + std::to_string(number) + "\n";
    }
};
constexpr std::size_t kinds = 24;

template <class Value>
void show(std::ostream& out, Value* values, long count)
{
    out << count;
    for (long i = 0; values && i < count; ++i) {
        out << ' ' << values[i];
        if constexpr (std::is_pointer_v<Value>)
            std::free(values[i]);
    }
    std::free(values);
}

/// A document that one of the libraries holds.
class Subject {
public:
    Subject(const Library& library, const std::string& xml)
        : library_(library), fd_(CALL(library, kh_tree_init_memory, xml.data(), static_cast<long>(xml.size()),
                                      static_cast<long*>(nullptr)))
    {
    }
    ~Subject() { CALL(library_, kh_tree_cleanup_parser, &fd_, static_cast<long*>(nullptr)); }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    /// All that a caller can see of a call: what it returns and hands out, status and report, and the record of
    /// the document.
    std::string observe(const Step& step)
    {
        std::ostringstream seen;
        long status = 7;
        take(step, &status, seen);
        seen << "\nstatus " << status;
        if (status != 0 && status != 7) {
            char report[2000] = "";
            CALL(library_, KH_last_report, report, static_cast<long>(sizeof report));
            seen << ' ' << report;
        }
        const kh_document_slot& slot = *library_.symbol<kh_document_slot*>("global_current_status")[fd_];
        seen << "\ncursor " << place_of(slot.current) << " visited " << slot.visited << " tag "
             << (slot.requested_tag ? slot.requested_tag : "(null)") << "\nstack " << slot.absolute << ' '
             << slot.array_position;
        for (long i = 0; i < slot.stack_count; ++i)
            seen << ' ' << slot.stack_name[i] << '[' << slot.stack_index[i] << ']';
        return seen.str();
    }

private:
    /// A node as what leads to it, without the library's help.
    static std::string place_of(const xmlNode* node)
    {
        std::string place;
        for (; node && node->parent; node = node->parent) {
            long before = 0;
            for (const xmlNode* sibling = node->prev; sibling; sibling = sibling->prev)
                ++before;
            place += ' ' + std::to_string(before);
        }
        return place;
    }

    void take(const Step& step, long* status, std::ostream& seen)
    {
        const char* path = step.path.c_str();
        const char* name = step.name.c_str();
        const auto text = [&](char* value) {
            seen << (value ? value : "(null)");
            std::free(value);
        };
        char* value = nullptr;
        char** texts = nullptr;
        long* integers = nullptr;
        double* reals = nullptr;
        double real = 0;
        long number = step.number;
        long count = -5;
        char room[2000] = "";
        switch (step.kind) {
        case 0:
        case 1:
            seen << CALL(library_, kh_tree_go_to_path_node, &fd_, path, status);
            break;
        case 2:
            CALL(library_, kh_tree_path_read_string_node_value, &fd_, path, &value, status);
            text(value);
            break;
        case 3:
            CALL(library_, kh_tree_path_read_integer_node_value, &fd_, path, &number, status);
            seen << number;
            break;
        case 4:
        case 5:
            CALL(library_, kh_tree_path_read_string_node_array, &fd_, path, &texts, &count, status);
            show(seen, texts, count);
            break;
        case 6:
            CALL(library_, kh_tree_path_read_integer_node_array, &fd_, path, &integers, &count, status);
            show(seen, integers, count);
            break;
        case 7:
            CALL(library_, kh_tree_path_read_real_node_array, &fd_, path, &reals, &count, status);
            show(seen, reals, count);
            break;
        case 8:
            CALL(library_, kh_tree_read_string_element_array, &fd_, name, &texts, &count, status);
            show(seen, texts, count);
            break;
        case 9:
            CALL(library_, kh_tree_read_real_element_array, &fd_, name, &reals, &count, status);
            show(seen, reals, count);
            break;
        case 10:
            CALL(library_, kh_tree_rewind, &fd_, status);
            break;
        case 11:
        case 12:
            CALL(library_, kh_tree_go_to_element_node, &fd_, step.number % 2 ? name : nullptr, status);
            break;
        case 13:
            CALL(library_, kh_tree_read_next_element, &fd_, &value, status);
            text(value);
            break;
        case 14:
            CALL(library_, kh_tree_get_next_element_node, &fd_, static_cast<int>(step.number % 3));
            break;
        case 15:
            CALL(library_, kh_tree_get_path, &fd_, room, status);
            seen << room;
            break;
        case 16:
            CALL(library_, kh_tree_find_string_value_element, &fd_, name, "7", room, status);
            seen << room;
            break;
        case 17:
            CALL(library_, kh_tree_find_string_value_path, &fd_, path, "7", room, status);
            seen << room;
            break;
        case 18:
            CALL(library_, kh_tree_read_real_element_value, &fd_, name, &real, status);
            seen << real;
            break;
        case 19: {
            const auto add = step.number % 3 == 0   ? &kh_tree_add_child
                             : step.number % 3 == 1 ? &kh_tree_add_next_sibling
                                                    : &kh_tree_add_previous_sibling;
            const char* const names[] = {"kh_tree_add_child", "kh_tree_add_next_sibling",
                                         "kh_tree_add_previous_sibling"};
            seen << (library_.call<std::remove_pointer_t<decltype(add)>>(names[step.number % 3], &fd_, path,
                                                                         name, status) > 0);
            break;
        }
        case 20:
            CALL(library_, kh_tree_set_integer_node_value, &fd_, path, &number, "%ld", status);
            break;
        case 21:
            if (step.number % 4 == 0)
                CALL(library_, kh_tree_remove_node, &fd_, path, status);
            break;
        case 22:
            CALL(library_, kh_tree_chop_path, &fd_, path, status);
            number %= 20;
            if (CALL(library_, kh_tree_go_to_stack_array_node, &fd_, &number, status))
                CALL(library_, kh_tree_go_to_stack_from_array_node, &fd_, status);
            break;
        default:
            if (step.number % 8 == 0 &&
                CALL(library_, kh_tree_write_memory, &fd_, &value, &count, status) == KH_OK)
                seen << std::string_view(value, static_cast<std::size_t>(count));
            std::free(value);
        }
    }

    const Library& library_;
    long fd_;
};

class RandomSession {
public:
    explicit RandomSession(unsigned seed) : random(seed) {}

    std::string name()
    {
        static const char* const names[] = {"Item", "Value", "Name", "List", "Group", "Lone", "None"};
        return names[random.below(std::size(names))];
    }

    std::string index()
    {
        const std::size_t kind = random.below(8);
        return kind < 4   ? ""
               : kind < 6 ? "[" + std::to_string(random.below(80)) + "]"
               : kind < 7 ? "[" + std::to_string(random.below(4)) + "]"
                          : "[*]";
    }

    /// Some values of an item, then of the next one, as programs read and build lists.
    std::string turn()
    {
        static const char* const behind[] = {"/Value",    "/Name",     "/@id",        "",
                                             "/Value[2]", "/Value[0]", "/Item/Value", "/None"};
        item_ += static_cast<long>(random.below(3));
        if (random.below(40) == 0)
            item_ = static_cast<long>(random.below(3));
        const std::string list = random.below(8) == 0 ? "/Root/Group" : "/Root/List";
        if (random.below(6) == 0)
            return list;
        return list + "/Item[" + std::to_string(item_) + "]" + behind[random.below(std::size(behind))];
    }

    std::string path()
    {
        static const char* const likely[] = {
            "/Root/List/Item[*]/Value", "/Root/List/Item[*]/@id",     "/Root/Group[2]/Item[*]/Value",
            "/Root/List/Item[7]/Value", "/Root/List/Item[12]/Value",  "/Root/List/Item[*]/Group/Value",
            "/Root/List/Item[*]/Item",  "/Root/List/Item[120]/Value", "/Root/List/Item[*]"};
        switch (random.below(4)) {
        case 0:
            return likely[random.below(std::size(likely))];
        case 1:
            return turn();
        default:
            break;
        }
        std::string path = random.below(5) == 0 ? name() : random.below(20) == 0 ? "/Rooted" : "/Root";
        for (std::size_t i = random.below(5); i > 0; --i)
            path += "/" + (random.below(12) == 0 ? std::string(random.below(2) == 0 ? ".." : ".")
                                                 : name() + index());
        return path + (random.below(6) == 0 ? "/@id" : "");
    }

    /// Lists of items most of which are alike, long enough that reads of them are worth an index.
    std::string document()
    {
        std::string xml = "<!-- a --><Root>";
        const std::size_t lists = 1 + random.below(3);
        for (std::size_t list = 0; list < lists; ++list) {
            const std::string around = random.below(2) == 0 ? "List" : "Group";
            xml += "\n  <" + around + ">";
            for (std::size_t i = 20 + random.below(150); i > 0; --i)
                xml += item();
            xml += "\n  </" + around + ">";
        }
        return xml + "<Lone/></Root><?b c?>";
    }

    std::string item()
    {
        const std::string number = std::to_string(random.below(12));
        switch (random.below(12)) {
        case 0:
            return "<Item/>";
        case 1:
            return "<Item>7</Item>";
        case 2:
            return "<Item><Value/><Value>7</Value><Item>3</Item></Item>";
        case 3:
            return "text<Item id='7'><Value>1<!-- c --></Value></Item>";
        case 4:
            return "<Item><Group><Value>" + number + "</Value><Item><Value>x</Value></Item></Group></Item>";
        case 5:
            return "<Name/><Item><Value><![CDATA[8]]></Value></Item>";
        default:
            return "\n    <Item id='" + number + "'>\n      <Value>" + number +
                   "</Value>\n      <Name>n</Name><Value>2</Value>\n    </Item>";
        }
    }

    /// Few edits among many reads, or nothing would be remembered for long.
    Step step()
    {
        Step step{random.below(kinds), path(), name(), static_cast<long>(random.below(1000))};
        const bool is_edit = step.kind >= 19 && step.kind <= 21;
        if (is_edit && random.below(8) != 0)
            step.kind = 4;
        return step;
    }

private:
    support::RandomInput random;
    long item_ = 1; ///< the turn of the session's loops
};

TEST(Accelerated, SessionsAreTheSameWithNothingRemembered)
{
    const Library accelerated(KALV_LIBRARY);
    const Library plain(KALV_PLAIN_LIBRARY);
    for (unsigned seed = 1; seed <= 400; ++seed) {
        RandomSession session(seed);
        const std::string xml = session.document();
        Subject one(accelerated, xml);
        Subject other(plain, xml);
        std::string log;
        for (int i = 0; i < 400; ++i) {
            const Step step = session.step();
            log += step.line();
            ASSERT_EQ(one.observe(step), other.observe(step)) << log << xml;
        }
    }
}

} // namespace
