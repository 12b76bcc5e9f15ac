#include "solve/temporary_files.hpp"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <random>
#include <utility>

#include "norv/file_path.hpp"

namespace norv {
namespace {

constexpr int mostFiles = 16;
// A signal handler has no argument that could carry these.
std::atomic<const char*> paths[mostFiles] = {};
static_assert(std::atomic<const char*>::is_always_lock_free, "handlers may touch nothing else");

int enter(const char* path) {
    for (int k = 0; k < mostFiles; ++k) {
        const char* expected = nullptr;
        if (paths[k].compare_exchange_strong(expected, path)) return k;
    }
    return -1;
}

}  // namespace

TemporaryFile::TemporaryFile(std::string path)
    : path_(std::move(path)), slot_(enter(path_.c_str())) {}

TemporaryFile::~TemporaryFile() {
    if (slot_ >= 0) paths[slot_] = nullptr;
    std::error_code ignored;
    if (!isGone_) std::filesystem::remove(filePath(path_), ignored);
}

void TemporaryFile::renameTo(const std::string& target) {
    std::filesystem::rename(filePath(path_), filePath(target));
    isGone_ = true;
}

void removeTemporaryFiles() noexcept {
    for (const auto& each : paths) {
        if (const char* const path = each.load()) std::remove(path);  // unlink, where that matters
    }
}

std::string uniquePath(const std::string& prefix) {
    std::random_device random;
    return prefix + std::to_string(random()) + std::to_string(random());
}

}  // namespace norv
