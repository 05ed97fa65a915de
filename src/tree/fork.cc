// A child of a process with several threads has the one that forked. What the others were doing with the table is
// never finished there.
#include "tree/document.h"
#include "tree/parse.h"

namespace kh {

namespace {

/// Frees the lock, which another thread may have held, and the slots of files that others were opening. All else is
/// whole: the lock guards single pointers. Nothing is taken before the fork, since nobody can tell in what order
/// other libraries take theirs.
void start_in_child() noexcept
{
    pthread_mutex_init(&parser_mutex, nullptr);
    for (kh_document_slot*& slot : global_current_status) {
        if (slot && static_cast<Document*>(slot)->opening)
            slot = nullptr;
    }
    leave_spare_dictionary();
}

/// Undone when the library is unloaded. It fails only without memory at the start of a process, and children are as
/// they were without it.
[[gnu::constructor]] void prepare_for_forks() noexcept
{
    pthread_atfork(nullptr, nullptr, start_in_child);
}

} // namespace

} // namespace kh
