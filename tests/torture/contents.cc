#include "torture/contents.h"

#include <algorithm>
#include <zlib.h>

namespace torture {

std::string repeated(std::size_t count, const std::string& piece)
{
    std::string text;
    text.reserve(count * piece.size());
    while (count-- > 0)
        text += piece;
    return text;
}

std::string utf16(const std::string& text)
{
    std::string wide = "\xff\xfe";
    for (const char c : text)
        wide += {c, '\0'};
    return wide;
}

namespace {

/// Compresses a text piece by piece.
class Packer {
public:
    Packer() { deflateInit2(&stream_, 9, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY); }
    ~Packer() { deflateEnd(&stream_); }
    Packer(const Packer&) = delete;
    Packer& operator=(const Packer&) = delete;

    void add(const std::string& text, int flush = Z_NO_FLUSH)
    {
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
        stream_.avail_in = static_cast<uInt>(text.size());
        do {
            char piece[1U << 14];
            stream_.next_out = reinterpret_cast<Bytef*>(piece);
            stream_.avail_out = sizeof piece;
            deflate(&stream_, flush);
            packed_.append(piece, sizeof piece - stream_.avail_out);
        } while (stream_.avail_out == 0);
    }

    std::string take()
    {
        add("", Z_FINISH);
        return std::move(packed_);
    }

private:
    z_stream stream_ = {};
    std::string packed_;
};

} // namespace

std::string gzip(const std::string& text)
{
    Packer packer;
    packer.add(text);
    return packer.take();
}

std::string gzip_bomb(const std::string& before, std::size_t count, const std::string& after)
{
    Packer packer;
    packer.add(before);
    const std::string blanks(std::min<std::size_t>(count, 1U << 20), ' ');
    for (; count > 0; count -= std::min(count, blanks.size()))
        packer.add(blanks.substr(0, std::min(count, blanks.size())));
    packer.add(after);
    return packer.take();
}

} // namespace torture
