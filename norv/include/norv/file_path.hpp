#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Names of files are UTF-8 on Windows, whatever its code page is, and plain bytes elsewhere. Every
/// file is opened through `filePath`: a narrow string would pass through the code page.

namespace norv {

/// The path of the file with this name.
/// @throws std::filesystem::filesystem_error on Windows, for a name that is not UTF-8.
inline std::filesystem::path filePath(std::string_view name) {
    return {std::u8string(name.begin(), name.end())};
}

/// The name back, in the same coding.
inline std::string fileName(const std::filesystem::path& path) {
    const std::u8string name = path.u8string();
    return {name.begin(), name.end()};
}

}  // namespace norv
