// Two threads, each with documents of its own.
#include "jobs.h"
#include "peers.h"

#include <thread>

namespace bench {

namespace {

constexpr int rounds = 4; // of each thread, so that starting it costs nothing to speak of

template <class Read>
auto read_again_and_again(const std::string& file, Read read)
{
    return [file, read](std::vector<double>& values) {
        for (int i = 0; i < rounds; ++i)
            values.push_back(read(file));
    };
}

/// The work of two threads, done by two or, one after the other, by one.
template <class Read>
std::vector<Contender> two_and_one(const char* two, const char* one, const File& file, Read read)
{
    const auto work = read_again_and_again(file.path, read);
    return {repeated(two,
                     [work] {
                         std::vector<double> values, others;
                         std::thread other([&] { work(others); });
                         work(values);
                         other.join();
                         values.insert(values.end(), others.begin(), others.end());
                         return values;
                     }),
            repeated(one, [work] {
                std::vector<double> values;
                work(values);
                work(values);
                return values;
            })};
}

double read_with_library(const std::string& file)
{
    Kalv document(file);
    double sum = 0;
    for (const double value :
         Array<double>(kh_tree_path_read_real_node_array, &document.fd, "/Root/List/Item[*]/Real"))
        sum += value;
    return sum;
}

double read_by_hand(const std::string& file)
{
    const LibXml2 document(file);
    double sum = 0;
    for (xmlNode* item = named(document.root()->children, "List")->children; item; item = item->next) {
        if (item->type == XML_ELEMENT_NODE)
            sum += std::strtod(content(named(item->children, "Real")), nullptr);
    }
    return sum;
}

double read_with_pugixml(const std::string& file)
{
    const Pugi document(file);
    double sum = 0;
    for (const pugi::xml_node item : document.list().children("Item"))
        sum += item.child("Real").text().as_double();
    return sum;
}

} // namespace

void compare_threads(Comparison& comparison, const Files& files)
{
    const File file = files.medium();
    const char* const one = "one thread";
    comparison.add({"two threads, wall time",
                    file.size,
                    two_and_one(library, one, file, read_with_library),
                    {{one, 1 / 1.8}},
                    0,
                    Clock::wall});
    comparison.add({"two threads, wall time: what libxml2 by hand gets here",
                    file.size,
                    two_and_one(by_hand, one, file, read_by_hand),
                    {},
                    0,
                    Clock::wall});
    comparison.add({"two threads, wall time: what pugixml gets here",
                    file.size,
                    two_and_one(pugixml, one, file, read_with_pugixml),
                    {},
                    0,
                    Clock::wall});
}

} // namespace bench
