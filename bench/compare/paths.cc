// Single values by path: one of many items, and deep paths.
#include "jobs.h"
#include "peers.h"

#include <algorithm>
#include <numeric>

namespace bench {

namespace {

constexpr const char* own_vector = "pugixml, own vector of nodes";
constexpr const char* by_element_path = "pugixml first_element_by_path";

using Order = std::vector<std::size_t>; ///< indices from 0

struct NamedOrder {
    const char* name;
    Order indices;
};

std::vector<NamedOrder> orders_of(std::size_t count)
{
    Order forward(count);
    std::iota(forward.begin(), forward.end(), std::size_t{0});
    Order random = forward;
    std::shuffle(random.begin(), random.end(), std::mt19937(1));
    return {
        {"in order", forward}, {"backwards", Order(forward.rbegin(), forward.rend())}, {"at random", random}};
}

/// The path texts are at hand: making them is the caller's work, and no job of the library.
std::shared_ptr<const TextsInOrder> item_paths(const Order& order)
{
    std::vector<std::string> paths;
    for (const std::size_t index : order)
        paths.push_back("/Root/List/Item[" + std::to_string(index + 1) + "]/Value");
    return std::make_shared<const TextsInOrder>(paths);
}

class PugiVector : public Pugi {
public:
    explicit PugiVector(const std::string& file) : Pugi(file) {}

    /// Made when the first item is asked for, by a caller who knows that more will be.
    pugi::xml_node item(std::size_t index)
    {
        if (items_.empty()) {
            for (const pugi::xml_node node : list().children("Item"))
                items_.push_back(node);
        }
        return items_[index];
    }
    long value(std::size_t index) { return static_cast<long>(item(index).child("Value").text().as_llong()); }

private:
    std::vector<pugi::xml_node> items_;
};

void compare_items(Comparison& comparison, const Files& files, std::size_t count)
{
    const File file = files.items(count);
    const std::string size = "n = " + std::to_string(count);
    for (const NamedOrder& order : orders_of(count)) {
        const auto paths = item_paths(order.indices);
        const Order indices = order.indices;
        const auto by_path = [paths](Kalv& document, std::size_t k) { return document.integer((*paths)[k]); };
        const auto by_index = [indices](PugiVector& document, std::size_t k) {
            return document.value(indices[k]);
        };

        const std::string job = std::string("Item[i]/Value ") + order.name;
        std::vector<Contender> contenders{at_positions<Kalv>(library, file.path, count, by_path),
                                          at_positions<PugiVector>(own_vector, file.path, count, by_index)};
        std::vector<Goal> goals{{own_vector, 1.5}};
        if (order.name == std::string("at random")) {
            contenders.push_back(at_positions<LibXml2>(libxml2_xpath, file.path, count,
                                                       [paths](LibXml2& document, std::size_t k) {
                                                           return selected_integer(document, (*paths)[k]);
                                                       }));
            contenders.push_back(
                at_positions<Pugi>(pugixml_xpath, file.path, count, [paths](Pugi& document, std::size_t k) {
                    return static_cast<long>(document.doc.select_node((*paths)[k]).node().text().as_llong());
                }));
            if (count == 100'000)
                goals.push_back({pugixml_xpath, 0.001});
        }
        comparison.add({job, size, contenders, goals});

        const std::size_t reads = std::min<std::size_t>(count, 1'000);
        const auto read_first = [reads](auto read) {
            return [reads, read](auto& document) {
                std::vector<long> values(reads);
                for (std::size_t k = 0; k < reads; ++k)
                    values[k] = read(document, k);
                return values;
            };
        };
        comparison.add({job + ", first " + std::to_string(reads) + " of a document",
                        size,
                        {on_fresh<Kalv>(library, file.path, read_first(by_path)),
                         on_fresh<PugiVector>(own_vector, file.path, read_first(by_index))},
                        {{own_vector, 1.5}},
                        file.is_large() ? 1 : 5});
    }
}

Job same_path_job(const std::string& name, const File& file, const std::string& path, double goal)
{
    return {
        name,
        file.size,
        {on_standing<Kalv>(library, file.path,
                           [path](Kalv& document) { return document.integer(path.c_str()); }),
         on_standing<LibXml2>(libxml2_xpath, file.path,
                              [path](LibXml2& document) { return selected_integer(document, path.c_str()); }),
         on_standing<Pugi>(by_element_path, file.path,
                           [path](Pugi& document) {
                               const pugi::xml_node node = document.doc.first_element_by_path(path.c_str());
                               return static_cast<long>(node.text().as_llong());
                           })},
        {{by_element_path, goal}}};
}

Job other_path_job(const std::string& name, const File& file, const std::vector<std::string>& texts,
                   double goal)
{
    const auto paths = std::make_shared<const TextsInOrder>(texts);
    return {
        name,
        file.size,
        {at_positions<Kalv>(library, file.path, paths->size(),
                            [paths](Kalv& document, std::size_t k) { return document.integer((*paths)[k]); }),
         at_positions<LibXml2>(
             libxml2_xpath, file.path, paths->size(),
             [paths](LibXml2& document, std::size_t k) { return selected_integer(document, (*paths)[k]); }),
         at_positions<Pugi>(by_element_path, file.path, paths->size(),
                            [paths](Pugi& document, std::size_t k) {
                                const pugi::xml_node node = document.doc.first_element_by_path((*paths)[k]);
                                return static_cast<long>(node.text().as_llong());
                            })},
        {{by_element_path, goal}}};
}

/// Asks for the path of the element at `path`, where the cursor stands all the time.
Contender path_of(const char* name, const File& file, const std::string& path)
{
    class At : public Kalv {
    public:
        explicit At(const std::string& file_name) : Kalv(file_name) {}
        bool standing = false;
    };
    return on_standing<At>(name, file.path, [path](At& document) {
        if (!document.standing)
            document.call(kh_tree_go_to_path_node, path.c_str());
        document.standing = true;
        char text[64] = "";
        document.call(kh_tree_get_path, static_cast<char*>(text));
        return path == text;
    });
}

} // namespace

void compare_paths(Comparison& comparison, const Files& files)
{
    const std::size_t most_items = comparison.settings().quick ? 1'000 : 100'000;
    for (const std::size_t count : {100U, 1'000U, 10'000U, 100'000U}) {
        if (count <= most_items)
            compare_items(comparison, files, count);
    }

    const std::vector<std::string> paths = Files::deep_paths();
    comparison.add(same_path_job("one path of 9 levels again and again", files.deep(), paths.front(), 0.25));
    comparison.add(other_path_job("another path of 9 levels each time", files.deep(), paths, 1.5));

    constexpr const char* first_sibling = "the same on the first";
    comparison.add(
        {"kh_tree_get_path on the last sibling",
         "n = " + std::to_string(most_items),
         {path_of(library, files.items(most_items), "/Root/List/Item[" + std::to_string(most_items) + "]"),
          path_of(first_sibling, files.items(most_items), "/Root/List/Item[1]")},
         {{first_sibling, 1.1}}});
}

} // namespace bench
