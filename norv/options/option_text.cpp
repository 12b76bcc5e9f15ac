#include "options/option_text.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "interface/names.hpp"
#include "norv/edit_distance.hpp"
#include "norv/file_path.hpp"

namespace norv {

namespace {

constexpr std::size_t longestFile = std::size_t{16} << 20;  ///< bytes; far beyond any real one

bool isBlank(char c) noexcept {
    return c == ' ' || c == '\t';
}

bool isControl(char c) noexcept {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7f;
}

void checkCharacters(std::string_view line) {
    const auto found = std::find_if(line.begin(), line.end(), isControl);
    if (found == line.end()) return;
    throw OptionError(message_type::syntax, "the line has a control character, code " +
                                                std::to_string(static_cast<int>(*found)));
}

/// Takes the word in quotes that `rest` begins with.
std::string takeQuoted(std::string_view& rest) {
    const char quote = rest.front();
    std::string word;
    for (std::size_t k = 1; k < rest.size(); ++k) {
        if (rest[k] != quote) {
            word += rest[k];
        } else if (k + 1 < rest.size() && rest[k + 1] == quote) {
            word += rest[k++];
        } else {
            rest.remove_prefix(k + 1);
            return word;
        }
    }
    throw OptionError(message_type::syntax, "the quote before " + excerpt(word) + " is not closed");
}

}  // namespace

std::string printable(std::string_view text) {
    std::string result(text);
    std::replace_if(result.begin(), result.end(), isControl, '?');
    return result;
}

std::string excerpt(std::string_view text) {
    constexpr std::size_t longest = 60;
    const std::string shown = printable(text.substr(0, longest));
    return '"' + shown + (text.size() > longest ? "...\"" : "\"");
}

std::vector<std::string> splitWords(std::string_view line) {
    checkCharacters(line);
    std::vector<std::string> words;
    while (true) {
        line.remove_prefix(static_cast<std::size_t>(
            std::find_if_not(line.begin(), line.end(), isBlank) - line.begin()));
        if (line.empty() || line.front() == '#') return words;
        if (line.front() == '"' || line.front() == '\'') {
            words.push_back(takeQuoted(line));
            continue;
        }
        const auto end = std::find_if(line.begin(), line.end(), isBlank);
        words.emplace_back(line.begin(), end);
        line.remove_prefix(words.back().size());
    }
}

bool hasNoContent(std::string_view line) noexcept {
    const auto first = std::find_if_not(line.begin(), line.end(), isBlank);
    return first == line.end() || *first == '*' || *first == '#';
}

std::string_view takeLine(std::string_view& rest) noexcept {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

std::string readWholeFile(const std::string& path) {
    errno = 0;
    std::ifstream file(filePath(path), std::ios::binary);
    if (!file) {
        const std::string reason = errno == 0 ? "unknown reason" : std::strerror(errno);
        throw OptionError(message_type::unreadable, "cannot be opened: " + reason);
    }
    std::string contents;
    std::array<char, 4096> piece{};
    do {
        file.read(piece.data(), piece.size());
        contents.append(piece.data(), static_cast<std::size_t>(file.gcount()));
        if (contents.size() > longestFile)
            throw OptionError(message_type::unreadable, "is larger than 16 MiB");
    } while (file);
    // A directory opens like a file and fails here.
    if (file.bad() || !file.eof()) throw OptionError(message_type::unreadable, "cannot be read");
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (contents.starts_with(byteOrderMark)) contents.erase(0, byteOrderMark.size());
    return contents;
}

std::size_t editDistance(std::string_view a, std::string_view b) {
    const std::size_t width = b.size() + 1;
    std::vector<std::size_t> table((a.size() + 1) * width);
    const auto at = [&](std::size_t i, std::size_t j) -> std::size_t& {
        return table[i * width + j];
    };
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                at(i, j) = i + j;
                continue;
            }
            const char x = lowerCase(a[i - 1]);
            const char y = lowerCase(b[j - 1]);
            at(i, j) =
                std::min({at(i - 1, j) + 1, at(i, j - 1) + 1, at(i - 1, j - 1) + (x == y ? 0 : 1)});
            const bool isSwap =
                i > 1 && j > 1 && x == lowerCase(b[j - 2]) && y == lowerCase(a[i - 2]);
            if (isSwap) at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
        }
    }
    return table.back();
}

}  // namespace norv
