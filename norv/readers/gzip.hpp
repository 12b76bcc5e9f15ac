#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace norv {

/// Does `content` begin like a gzip file?
bool looksGzipped(std::string_view content);

/// Unpacks all members of a gzip file. `path` serves messages.
/// Throws ReadError on damaged or incomplete data and on bytes after the last member.
std::vector<char> gunzip(const std::string& path, std::string_view content);

}  // namespace norv
