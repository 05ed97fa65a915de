// Documents from and to memory follow the rules of files.
#include "support/outcome.h"

#include <zlib.h>

namespace {

using support::Document;
using support::failure;
using support::missing_argument;
using support::outcome_of;
using support::success;
using support::TemporaryFolder;

const std::string xml = "<?xml version=\"1.0\"?>\n<R>\n  <A>1</A>\n</R>\n";

struct Opened {
    explicit Opened(std::string_view bytes)
        : fd(kh_tree_init_memory(bytes.data(), static_cast<long>(bytes.size()), &status))
    {
    }
    ~Opened()
    {
        if (status == 0)
            kh_tree_cleanup_parser(&fd, nullptr);
    }
    long status = support::untouched;
    long fd;
};

std::string written(long fd)
{
    support::Text data;
    long size = 0;
    long status = 0;
    const long result = kh_tree_write_memory(&fd, data.out(), &size, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(result, size);
    EXPECT_EQ(data.value[size], '\0');
    return {data.value, static_cast<std::size_t>(size)};
}

std::string compressed(const std::string& bytes)
{
    const TemporaryFolder folder;
    const gzFile file = gzopen(folder.path("a.gz").c_str(), "wb");
    gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size()));
    gzclose(file);
    return support::content_of(folder.path("a.gz"));
}

TEST(MemoryDocument, IsOpenedInTheLowestFreeSlotWithoutAFileName)
{
    const Opened document(xml);
    ASSERT_EQ(document.status, 0);
    EXPECT_EQ(document.fd, 0);
    const kh_document_slot* slot = global_current_status[0];
    EXPECT_EQ(slot->file_name, nullptr);
    EXPECT_EQ(slot->current, slot->root);
    EXPECT_EQ(KH_get_file_name(0), nullptr);
}

TEST(MemoryDocument, NeedsNoZeroByteAndNoBytesAfterwards)
{
    std::string bytes = xml + "garbage behind the document";
    const Opened document(std::string_view(bytes).substr(0, xml.size()));
    bytes.assign(bytes.size(), 'x');
    ASSERT_EQ(document.status, 0);
    EXPECT_EQ(written(document.fd), xml);
}

TEST(MemoryDocument, MayBeCompressed)
{
    const Opened document(compressed(xml));
    ASSERT_EQ(document.status, 0);
    EXPECT_EQ(written(document.fd), xml);
}

TEST(MemoryDocument, IsTheSameAsTheFile)
{
    std::string large = "<R>";
    for (int i = 0; i < 20000; ++i)
        large += "<Item id=\"" + std::to_string(i) + "\">text &amp; \xc3\xa4</Item>\n";
    large += "</R>";
    for (const std::string& bytes : {large, compressed(large)}) {
        const Opened document(bytes);
        ASSERT_EQ(document.status, 0);
        Document file(bytes);
        const std::string text = written(document.fd);
        EXPECT_EQ(written(file.fd), text);
        const TemporaryFolder folder;
        kh_tree_write(&file.fd, folder.path("out.xml").c_str(), nullptr);
        EXPECT_EQ(Document::file(folder.path("out.xml")).written(), file.written());
    }
}

TEST(MemoryDocument, ReportsWhatFilesReport)
{
    const auto open = [](const char* data, long size) {
        return outcome_of([=](long* ierr) { kh_tree_init_memory(data, size, ierr); });
    };
    EXPECT_EQ(open(nullptr, 5), missing_argument("kh_tree_init_memory"));
    EXPECT_EQ(open("<R/>", -1), missing_argument("kh_tree_init_memory"));
    EXPECT_EQ(own_report(open("<R>", 3)), failure(KH_ERR_PARSE, "kh_tree_init_memory"));
    EXPECT_EQ(own_report(open("", 0)), failure(KH_ERR_PARSE, "kh_tree_init_memory"));
    char text[200];
    KH_last_report(text, sizeof text);
    EXPECT_NE(std::string(text).find("\n\tmemory:1:"), std::string::npos) << text;
    EXPECT_EQ(global_current_status[0], nullptr);
}

TEST(MemoryDocument, IsWrittenWithItsIndentationCompleted)
{
    Document document;
    kh_tree_create_root(&document.fd, "R", nullptr);
    kh_tree_add_child(&document.fd, ".", "A", nullptr);
    EXPECT_EQ(written(document.fd), "<?xml version=\"1.0\"?>\n<R>\n  <A/>\n</R>\n");
    EXPECT_EQ(written(document.fd), document.written());
}

TEST(MemoryDocument, IsWrittenInItsEncoding)
{
    const Opened document("<?xml version='1.0' encoding='ISO-8859-1'?><R>\xe4</R>");
    EXPECT_EQ(written(document.fd), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<R>\xe4</R>\n");
}

TEST(MemoryDocument, IsNotHandedOutWhereItCannotBeSaved)
{
    const Opened document("<?xml version='1.0' encoding='ISO-8859-1'?><R/>");
    long fd = document.fd;
    kh_tree_add_child(&fd, ".", "\xe2\x82\xac", nullptr); // no name holds a currency sign
    kh_tree_add_child(&fd, ".", "\xc5\x82", nullptr);     // but it may hold a letter that the encoding lacks
    char unchanged = 0;
    char* data = &unchanged;
    long size = 0;
    EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_write_memory(&fd, &data, &size, ierr); }),
              failure(KH_ERR_SAVE, "kh_tree_write_memory"));
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, -1);
}

TEST(MemoryDocument, ChecksDescriptorAndOutputs)
{
    Document document("<R/>");
    char* data = nullptr;
    long size = 0;
    const auto write = [&](long fd, char** bytes, long* count) {
        return outcome_of([&](long* ierr) { kh_tree_write_memory(&fd, bytes, count, ierr); });
    };
    EXPECT_EQ(write(512, &data, &size), failure(KH_ERR_DESCRIPTOR, "kh_tree_write_memory"));
    EXPECT_EQ(write(511, &data, &size), failure(KH_ERR_NO_DOCUMENT, "kh_tree_write_memory"));
    EXPECT_EQ(write(document.fd, nullptr, &size), missing_argument("kh_tree_write_memory"));
    EXPECT_EQ(write(document.fd, &data, nullptr), missing_argument("kh_tree_write_memory"));
    Document empty;
    EXPECT_EQ(write(empty.fd, &data, &size), failure(KH_ERR_NO_ROOT, "kh_tree_write_memory"));
}

} // namespace
