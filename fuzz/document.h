// An open document, and what must hold of it whatever is done with it.
#ifndef KALV_FUZZ_DOCUMENT_H
#define KALV_FUZZ_DOCUMENT_H

#include "harness.h"
#include "path_model.h"

namespace fuzz {

/// Released with the object.
class Document {
public:
    Document();
    explicit Document(const std::string& bytes);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    bool is_open() const { return status_ == KH_OK; }
    long status() const { return status_; }
    long* fd() { return &fd_; }
    const kh_document_slot& slot() const { return *global_current_status[fd_]; }
    bool has_root() const { return slot().root; }

    /// Everything that later calls could see of the tree, which must be sound.
    std::string described() const;

    /// The bytes that it is written as; empty where it cannot be.
    std::string written();

    /// Calls a function, which leaves the tree as it was where it reports an error. \return the status
    template <class Function, class... Arguments>
    long edit(Function* function, Arguments... arguments)
    {
        const std::string before = is_known_ ? std::move(known_) : described();
        const long status = status_of(function, fd(), arguments...);
        known_ = described();
        is_known_ = true;
        check_unchanged(status, before);
        return status;
    }

    /// To be called before the tree is changed in another way than by edit().
    void changes() { is_known_ = false; }

    /// Goes along a path, and compares the place with the model's. \return the status
    long go_along(const std::string& path);

private:
    void check_unchanged(long status, const std::string& before) const;

    long fd_ = -1;
    long status_ = KH_OK;
    std::string known_; ///< what the last edit left
    bool is_known_ = false;
};

/// A file in memory, removed at the end of the process.
class File {
public:
    File();
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const char* name() const { return name_; }
    void write(const std::string& bytes) const;
    std::string read() const;

private:
    char name_[32] = "/dev/shm/kalv-fuzz-XXXXXX";
};

/// What is written is read again by libxml2 as the same document, and written to the same bytes.
void check_round_trip(Document& document);

/// The same by way of a file.
void check_file_round_trip(Document& document, const File& file);

/// Reads all that there is, in all ways, and compares with what libxml2 has.
void check_reads(Document& document, Bytes& bytes);

/// One call that edits, with arguments from the bytes, and what must have come of it.
void check_edit(Document& document, Bytes& bytes);

/// Sets or removes the schema references of the element under the cursor.
void check_schema(Document& document, const std::string& schema, long mode);

} // namespace fuzz

#endif
