#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace norv {

/// A model file, whole in memory. Readers hand out views into it, so it outlives what they return.
/// Moving it keeps the views valid.
class InputText {
public:
    /// Reads `path`, unpacking it when its content (whatever its name) is gzip, also of several
    /// members. Throws ReadError naming the file and the reason.
    static InputText fromFile(const std::string& path);

    /// Reads a stream to its end, likewise. @param path  for messages.
    static InputText fromStream(std::istream& in, const std::string& path);

    /// A text made in memory; `path` serves messages only. Unpacked like a file.
    static InputText fromMemory(std::string path, std::string_view content);

    InputText(InputText&&) = default;
    InputText& operator=(InputText&&) = default;
    InputText(const InputText&) = delete;
    InputText& operator=(const InputText&) = delete;
    ~InputText() = default;

    [[nodiscard]] std::string_view text() const { return {bytes_.data(), bytes_.size()}; }
    [[nodiscard]] const std::string& path() const { return path_; }

private:
    InputText(std::string path, std::vector<char> bytes);

    std::string path_;
    std::vector<char> bytes_;
};

}  // namespace norv
