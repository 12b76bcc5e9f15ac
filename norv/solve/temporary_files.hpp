#pragma once

#include <string>

namespace norv {

/// A file that goes with this object, and also when a second signal ends the process.
class TemporaryFile {
public:
    /// Nothing is opened. @param path  of a file that nobody else uses.
    explicit TemporaryFile(std::string path);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    /// Gives the file to `target`, which it replaces.
    /// @throws std::filesystem::filesystem_error
    void renameTo(const std::string& target);

private:
    std::string path_;
    int slot_;  ///< in the list for signal handlers; -1: the list is full
    bool isGone_ = false;
};

/// Removes all temporary files that there are. Async-signal-safe.
void removeTemporaryFiles() noexcept;

/// `prefix` and some digits that no other process will come to.
[[nodiscard]] std::string uniquePath(const std::string& prefix);

}  // namespace norv
