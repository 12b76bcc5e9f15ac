#include "readers/input_text.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>

#include "norv/file_path.hpp"
#include "readers/gzip.hpp"
#include "readers/read_error.hpp"

namespace norv {
namespace {

/// Reads until the end instead of asking for the size, so that pipes work too.
std::vector<char> readWhole(std::istream& file, const std::string& path) {
    std::vector<char> bytes(std::size_t{1} << 16U);
    std::size_t filled = 0;
    while (true) {
        file.read(bytes.data() + filled, static_cast<std::streamsize>(bytes.size() - filled));
        const auto got = static_cast<std::size_t>(file.gcount());
        filled += got;
        if (got == 0) break;
        if (filled == bytes.size()) bytes.resize(2 * filled);
    }
    if (file.bad()) throw ReadError(path + ": cannot be read: " + std::strerror(errno));
    bytes.resize(filled);
    return bytes;
}

}  // namespace

InputText::InputText(std::string path, std::vector<char> bytes)
    : path_(std::move(path)), bytes_(std::move(bytes)) {}

InputText InputText::fromFile(const std::string& path) {
    std::ifstream file(filePath(path), std::ios::binary);
    if (!file) throw ReadError(path + ": cannot be opened: " + std::strerror(errno));
    return fromStream(file, path);
}

InputText InputText::fromStream(std::istream& in, const std::string& path) {
    std::vector<char> bytes = readWhole(in, path);
    const std::string_view content(bytes.data(), bytes.size());
    return {path, looksGzipped(content) ? gunzip(path, content) : std::move(bytes)};
}

InputText InputText::fromMemory(std::string path, std::string_view content) {
    std::vector<char> bytes = looksGzipped(content)
                                  ? gunzip(path, content)
                                  : std::vector<char>(content.begin(), content.end());
    return {std::move(path), std::move(bytes)};
}

}  // namespace norv
