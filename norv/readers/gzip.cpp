#include "readers/gzip.hpp"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <string>

#include "readers/read_error.hpp"

namespace norv {
namespace {

/// One zlib stream over the whole content; members are unpacked one after another.
class Inflater {
public:
    Inflater(const std::string& path, std::string_view content) : path_(path), rest_(content) {
        constexpr int gzipOnly = 16;
        if (inflateInit2(&stream_, MAX_WBITS + gzipOnly) != Z_OK) throw std::bad_alloc();
    }
    ~Inflater() { inflateEnd(&stream_); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    std::vector<char> unpackAll() {
        std::vector<char> result(std::max<std::size_t>(4 * rest_.size(), 4096));
        std::size_t filled = 0;
        do {
            unpackMember(result, filled);
            inflateReset(&stream_);
        } while (looksGzipped(rest_));
        if (!rest_.empty()) throw ReadError(path_ + ": damaged gzip data: bytes after its end");
        result.resize(filled);
        return result;
    }

private:
    void unpackMember(std::vector<char>& result, std::size_t& filled) {
        for (int status = Z_OK; status != Z_STREAM_END;) {
            if (filled == result.size()) result.resize(2 * filled);
            // zlib counts in 32 bits: larger contents go through in pieces.
            const std::size_t given = std::min<std::size_t>(rest_.size(), largestPiece);
            const std::size_t room = std::min<std::size_t>(result.size() - filled, largestPiece);
            stream_.next_in = reinterpret_cast<const Bytef*>(rest_.data());
            stream_.avail_in = static_cast<uInt>(given);
            stream_.next_out = reinterpret_cast<Bytef*>(result.data() + filled);
            stream_.avail_out = static_cast<uInt>(room);
            status = inflate(&stream_, Z_NO_FLUSH);
            rest_.remove_prefix(given - stream_.avail_in);
            filled += room - stream_.avail_out;
            check(status);
        }
    }

    void check(int status) const {
        if (status == Z_OK || status == Z_STREAM_END) return;
        if (status == Z_MEM_ERROR) throw std::bad_alloc();
        if (status == Z_BUF_ERROR && rest_.empty()) {
            throw ReadError(path_ + ": damaged gzip data: it ends before it is complete");
        }
        const char* reason = stream_.msg != nullptr ? stream_.msg : "unknown fault";
        throw ReadError(path_ + ": damaged gzip data: " + reason);
    }

    static constexpr std::size_t largestPiece = std::numeric_limits<uInt>::max();
    const std::string& path_;
    std::string_view rest_;
    z_stream stream_ = {};
};

}  // namespace

bool looksGzipped(std::string_view content) {
    return content.size() >= 2 && content[0] == '\x1f' && content[1] == '\x8b';
}

std::vector<char> gunzip(const std::string& path, std::string_view content) {
    return Inflater(path, content).unpackAll();
}

}  // namespace norv
