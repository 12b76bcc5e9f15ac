#include "readers/mps_lines.hpp"

#include <algorithm>
#include <utility>

namespace norv {
namespace {

constexpr std::pair<std::string_view, MpsSection> keywords[] = {
    {"NAME", MpsSection::name},
    {"OBJSENSE", MpsSection::objectiveSense},
    {"OBJSENS", MpsSection::objectiveSense},
    {"OBJNAME", MpsSection::objectiveName},
    {"OBJECT", MpsSection::objectiveName},
    {"ROWS", MpsSection::rows},
    {"COLUMNS", MpsSection::columns},
    {"RHS", MpsSection::rightHandSides},
    {"RANGES", MpsSection::ranges},
    {"BOUNDS", MpsSection::bounds},
    {"QUADOBJ", MpsSection::quadraticObjective},
    {"QSECTION", MpsSection::quadraticTriangle},
    {"QMATRIX", MpsSection::quadraticMatrix},
    {"QCMATRIX", MpsSection::quadraticConstraint},
    {"SOS", MpsSection::specialOrdered},
    {"SETS", MpsSection::specialOrdered},
    {"SOS1", MpsSection::specialOrdered1},
    {"SOS2", MpsSection::specialOrdered2},
    {"ENDATA", MpsSection::end},
};

bool isBlank(char character) {
    return character == ' ' || character == '\t';
}

std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

}  // namespace

MpsSection sectionNamed(std::string_view keyword) {
    const auto* const found = std::find_if(std::begin(keywords), std::end(keywords),
                                           [&](const auto& each) { return each.first == keyword; });
    return found == std::end(keywords) ? MpsSection::none : found->second;
}

MpsLines::MpsLines(std::string_view text) : rest_(text) {
    constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
    if (rest_.substr(0, byteOrderMark.size()) == byteOrderMark) {
        rest_.remove_prefix(byteOrderMark.size());
    }
}

bool MpsLines::next() {
    while (!rest_.empty()) {
        ++number_;
        const std::size_t end = rest_.find('\n');
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        while (!line_.empty() && (isBlank(line_.back()) || line_.back() == '\r')) {
            line_.remove_suffix(1);
        }
        if (!line_.empty() && line_[0] != '*') return true;
    }
    line_ = {};
    return false;
}

void MpsFields::cut(std::string_view line, MpsLayout layout) {
    count_ = 0;
    if (layout == MpsLayout::free) {
        cutAtBlanks(line);
    } else {
        cutAtColumns(line);
    }
}

void MpsFields::append(std::string_view text) {
    if (count_ < most) fields_[count_] = text;
    ++count_;
}

void MpsFields::cutAtBlanks(std::string_view line) {
    const char* at = line.data();
    const char* const end = at + line.size();
    while (true) {
        while (at != end && isBlank(*at)) ++at;
        if (at == end) return;
        const char* const begin = at;
        while (at != end && !isBlank(*at)) ++at;
        append({begin, static_cast<std::size_t>(at - begin)});
    }
}

void MpsFields::cutAtColumns(std::string_view line) {
    // Begin and length; a name with blanks stays whole.
    constexpr std::pair<std::size_t, std::size_t> cards[] = {{1, 2},   {4, 8},  {14, 8},
                                                             {24, 12}, {39, 8}, {49, 12}};
    for (const auto& [begin, length] : cards) {
        if (begin >= line.size()) break;
        const std::string_view text = withoutBlanks(line.substr(begin, length));
        if (!text.empty()) append(text);
    }
}

std::string_view firstWord(std::string_view line) {
    const std::string_view text = withoutBlanks(line);
    return text.substr(0, text.find_first_of(" \t"));
}

}  // namespace norv
