// Option files.
//
// A setting is a name and its value, with blanks or "=" between them; "defvar" takes a variable and
// an equation. Settings end with the line; unless the end-of-line mode is on, ';' outside quotes
// ends one too, so that several fit on a line.

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "interface/names.hpp"
#include "options/option_record.hpp"

namespace hostapi {

using norv::OptionError;

namespace {

/// Takes the text up to the first ';' outside quotes and comments off the front of `rest`.
/// Quotes and comments begin where a word begins; so does the value after the first "=".
std::string_view takeSettingText(std::string_view& rest) noexcept {
    char quote = '\0';
    bool startsWord = true;
    bool seenEquals = false;
    std::size_t end = 0;
    for (; end < rest.size(); ++end) {
        const char c = rest[end];
        if (quote != '\0') {
            if (c == quote) quote = '\0';
            continue;
        }
        if (c == ';' || (startsWord && c == '#')) break;
        if (startsWord && (c == '"' || c == '\'')) quote = c;
        startsWord = c == ' ' || c == '\t' || (c == '=' && !seenEquals);
        seenEquals = seenEquals || c == '=';
    }
    const std::string_view setting = rest.substr(0, end);
    const bool isComment = end < rest.size() && rest[end] == '#';
    rest.remove_prefix(isComment ? rest.size() : std::min(end + 1, rest.size()));
    return setting;
}

/// Takes the option's name and an optional "=" off the front of `text`.
std::string_view takeName(std::string_view& text) noexcept {
    constexpr std::string_view blanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    const std::string_view name = text.substr(0, text.find_first_of(" \t="));
    text.remove_prefix(name.size());
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    if (text.starts_with('=')) text.remove_prefix(1);
    return name;
}

/// The lines of one option file.
class FileReader {
public:
    FileReader(OptionRecord& target, std::string filePath)
        : options_(target), path_(std::move(filePath)) {}

    /// @return no line was refused.
    bool read(std::string_view contents) {
        for (line_ = 1; !contents.empty(); ++line_) {
            const std::string_view text = norv::takeLine(contents);
            if (options_.echoes)
                options_.addMessage(norv::message_type::echo, norv::printable(text));
            if (!norv::hasNoContent(text)) readLine(text);
        }
        options_.addMessage(norv::message_type::summary,
                            path_ + ": " + std::to_string(nbTaken_) + " settings taken, " +
                                std::to_string(nbRefused_) + " refused");
        return nbRefused_ == 0;
    }

private:
    void readLine(std::string_view text) {
        if (options_.endsAtLineOnly) {
            readSetting(text);
            return;
        }
        while (!text.empty()) {
            const std::string_view setting = takeSettingText(text);
            if (!norv::hasNoContent(setting)) readSetting(setting);
        }
    }

    void readSetting(std::string_view text) {
        const std::string place = path_ + ":" + std::to_string(line_);
        if (!options_.takeSetting(text, place)) {
            ++nbRefused_;
            return;
        }
        ++nbTaken_;
        warnOfRepetition(takeName(text), place);
    }

    void warnOfRepetition(std::string_view name, const std::string& place) {
        const norv::OptionDefinition* option = findOption(options_.definitions, name);
        if (option == nullptr || option->type == norv::OptionType::pairs) return;
        const auto [earlier, isFirst] = lineOf_.emplace(option->name, line_);
        if (isFirst) return;
        options_.addMessage(norv::message_type::warning, place + ": option " + option->name +
                                                             " replaces the value of line " +
                                                             std::to_string(earlier->second));
        earlier->second = line_;
    }

    OptionRecord& options_;
    std::string path_;
    std::size_t line_ = 0;  ///< from 1
    std::size_t nbTaken_ = 0;
    std::size_t nbRefused_ = 0;
    std::map<std::string, std::size_t> lineOf_;  ///< where each option was set last
};

}  // namespace

bool OptionRecord::readFile(const std::string& path) {
    try {
        return FileReader(*this, path).read(norv::readWholeFile(path));
    } catch (const OptionError& error) {
        addMessage(error.type, path + ": " + error.what());
        return false;
    }
}

bool OptionRecord::takeSetting(std::string_view text, const std::string& place) {
    const std::string_view name = takeName(text);
    try {
        setFromWords(name, norv::splitWords(text), place);
        return true;
    } catch (const OptionError& error) {
        const norv::OptionDefinition* option = findOption(definitions, name);
        if (option != nullptr && option->type == norv::OptionType::pairs) ++nbRefusedPairs;
        addMessage(error.type, place + ": " + error.what());
        return false;
    }
}

}  // namespace hostapi
