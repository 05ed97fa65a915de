// Each taking and each giving back of the table's lock fails in its turn, in every call that takes it. The
// call says so as it is described, and the next one works.
#include "torture/harness.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <kalv/XmlFile.h>
#include <limits>

namespace {

constexpr std::size_t never = std::numeric_limits<std::size_t>::max();

std::size_t operations = 0;
std::size_t failing_operation = never;

bool fails(const pthread_mutex_t* mutex)
{
    return mutex == &parser_mutex && operations++ == failing_operation;
}

int forward(const char* name, pthread_mutex_t* mutex)
{
    return reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, name))(mutex);
}

} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    return fails(mutex) ? EAGAIN : forward("pthread_mutex_lock", mutex);
}

// The mutex is given back all the same: what fails is the report of it.
extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    const int result = forward("pthread_mutex_unlock", mutex);
    return fails(mutex) ? EPERM : result;
}

namespace {

using namespace torture;

/// What a call did: the statuses that it left, and what it returned.
struct Outcome {
    long status = KH_OK;
    long result = 0;
};

/// A call that takes the lock, and the status that it leaves when the n-th taking or giving back fails. A
/// lock that cannot be given back is printed; where that happens on opening, there is no document, as the
/// result -1 says without a status.
struct Taker {
    const char* name;
    std::function<Outcome(const std::string& file)> call;
    std::vector<long> when_not_taken;
    std::vector<long> when_not_given_back;
};

template <class Body>
Outcome of_object(Body body)
{
    Outcome outcome;
    try {
        body();
    } catch (const KALV::KalvError& error) {
        std::vector<long> codes;
        error.getCodes(codes);
        outcome.status = codes.front();
    }
    return outcome;
}

const std::vector<Taker> takers = {
    {"kh_tree_init_parser",
     [](const std::string& file) {
         Outcome outcome;
         outcome.result = kh_tree_init_parser(file.c_str(), &outcome.status);
         return outcome;
     },
     {KH_ERR_LOCK},
     {KH_OK}},
    {"kh_tree_init_memory",
     [](const std::string&) {
         Outcome outcome;
         outcome.result = kh_tree_init_memory("<r/>", 4, &outcome.status);
         return outcome;
     },
     {KH_ERR_LOCK},
     {KH_OK}},
    {"kh_tree_create",
     [](const std::string&) {
         Outcome outcome;
         outcome.result = kh_tree_create(&outcome.status);
         return outcome;
     },
     {KH_ERR_LOCK},
     {KH_OK}},
    {"kh_tree_cleanup_parser",
     [](const std::string&) {
         Outcome outcome;
         long fd = 0;
         outcome.result = kh_tree_cleanup_parser(&fd, &outcome.status);
         return outcome;
     },
     {KH_ERR_LOCK},
     {KH_OK}},
    {"kh_tree_cleanup_all_parser",
     [](const std::string&) {
         kh_tree_cleanup_all_parser();
         return Outcome();
     },
     std::vector<long>(KH_MAX_DOCUMENTS, KH_OK), std::vector<long>(KH_MAX_DOCUMENTS, KH_OK)},
    {"a file that cannot be parsed",
     [](const std::string&) {
         Outcome outcome;
         outcome.result = kh_tree_init_parser("/nonexistent", &outcome.status);
         return outcome;
     },
     {KH_ERR_LOCK, KH_ERR_PARSE},
     {KH_OK, KH_ERR_PARSE}},
    {"kh_set_schema",
     [](const std::string& file) {
         Outcome outcome;
         const long mode = 1;
         outcome.result = kh_set_schema(file.c_str(), "Some_0102.XSD", &mode, &outcome.status);
         return outcome;
     },
     {KH_ERR_PARSE, KH_ERR_LOCK},
     {KH_ERR_SAVE, KH_OK}},
    {"kh_copy_node",
     [](const std::string& file) {
         Outcome outcome;
         long fd = 0;
         outcome.result = kh_copy_node(&fd, "/r", file.c_str(), "/r", &outcome.status);
         return outcome;
     },
     {KH_ERR_PARSE, KH_ERR_LOCK},
     {KH_ERR_NOT_FOUND, KH_OK}},
    {"XmlFile::read",
     [](const std::string& file) { return of_object([&] { KALV::XmlFile().read(file); }); },
     {KH_ERR_LOCK, KH_ERR_LOCK},
     {KH_OK, KH_OK}},
    {"XmlFile::create",
     [](const std::string&) { return of_object([] { KALV::XmlFile().create(); }); },
     {KH_ERR_LOCK, KH_ERR_LOCK},
     {KH_OK, KH_OK}},
    {"XmlFile::clean",
     [](const std::string& file) {
         return of_object([&] {
             KALV::XmlFile object(file);
             object.clean();
         });
     },
     {KH_ERR_LOCK, KH_ERR_LOCK},
     {KH_ERR_DESCRIPTOR, KH_OK}},
    {"XmlFile::copyNode",
     [](const std::string& file) {
         return of_object([&] {
             KALV::XmlFile object(file);
             object.copyNode("/r", file, "/r");
         });
     },
     {KH_ERR_LOCK, KH_ERR_PARSE, KH_ERR_LOCK, KH_ERR_LOCK},
     {KH_ERR_DESCRIPTOR, KH_ERR_NOT_FOUND, KH_OK, KH_OK}},
    {"XmlFile::operator=",
     [](const std::string& file) {
         return of_object([&] {
             KALV::XmlFile object(file);
             KALV::XmlFile other(file);
             object = std::move(other);
         });
     },
     {KH_ERR_LOCK, KH_ERR_LOCK, KH_ERR_LOCK, KH_ERR_LOCK},
     {KH_OK, KH_OK, KH_OK, KH_OK}},
};

/// How many times a call takes and gives back the lock.
std::size_t operations_of(const Taker& taker, const std::string& file)
{
    const QuietStandardOutput quiet;
    kh_tree_create(nullptr);
    kh_tree_create_root(std::array<long, 1>{0}.data(), "r", nullptr);
    operations = 0;
    taker.call(file);
    const std::size_t count = operations;
    kh_tree_cleanup_all_parser();
    return count;
}

std::string try_failure(const Taker& taker, const std::string& file, std::size_t operation)
{
    long fd = kh_tree_create(nullptr);
    kh_tree_create_root(&fd, "r", nullptr);
    operations = 0;
    failing_operation = operation;
    Outcome outcome;
    const std::string printed = support::written_to_stdout([&] { outcome = taker.call(file); });
    failing_operation = never;
    const bool giving_back = operation % 2 == 1;
    const std::string name = "status " + std::to_string(outcome.status);
    std::string complaint;
    if (outcome.status != (giving_back ? taker.when_not_given_back : taker.when_not_taken).at(operation / 2))
        complaint += name + " is not described; ";
    if (printed != (giving_back ? "!!! Error closing the threads. All threads will be closed\n" : ""))
        complaint += name + " printed '" + printed + "'; ";
    kh_tree_cleanup_all_parser();
    for (const kh_document_slot* slot : global_current_status)
        if (slot)
            complaint += name + " left a slot that cannot be released; ";
    long status = KH_OK;
    fd = kh_tree_init_parser(file.c_str(), &status);
    if (fd != 0 || status != KH_OK)
        complaint += name + ", and the next open fails; ";
    kh_tree_cleanup_parser(&fd, nullptr);
    return complaint;
}

} // namespace

int main()
{
    const Budget budget;
    const support::TemporaryFolder folder;
    const std::string file = folder.file("file.xml", "<r><x>1</x></r>");
    Figure figure("locks", budget);
    for (const Taker& taker : takers)
        try_points(figure, budget.share(1), taker.name, operations_of(taker, file),
                   [&](std::size_t operation) { return try_failure(taker, file, operation); });
    return figure.print();
}
