#include "readers/mps_layout.hpp"

#include <algorithm>

namespace norv {
namespace {

/// A field of the fixed layout, columns from 0, and what it holds.
struct Card {
    std::size_t begin;
    std::size_t end;
    bool isName;
};

constexpr Card cards[] = {{1, 3, false},   {4, 12, true},  {14, 22, true},
                          {24, 36, false}, {39, 47, true}, {49, 61, false}};
constexpr std::size_t nbCards = std::size(cards);

bool isDataSection(MpsSection section) {
    return section >= MpsSection::rows && section < MpsSection::end;
}

bool hasOnlyBlanks(std::string_view line, std::size_t begin, std::size_t end) {
    for (std::size_t k = begin; k < std::min(end, line.size()); ++k) {
        if (line[k] != ' ') return false;
    }
    return true;
}

bool hasBlankInside(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return false;
    const std::size_t blank = text.find(' ', first);
    return blank != std::string_view::npos &&
           text.find_first_not_of(' ', blank) != std::string_view::npos;
}

/// One data line against the cards.
class CardLine {
public:
    explicit CardLine(std::string_view line) : line_(line) {
        std::size_t gap = 0;
        for (std::size_t k = 0; k < nbCards; ++k) {
            const Card& card = cards[k];
            fits_ = fits_ && hasOnlyBlanks(line, gap, card.begin);
            gap = card.end;
            if (hasOnlyBlanks(line, card.begin, card.end)) continue;
            filled_ |= 1U << k;
            const std::string_view text = line.substr(card.begin, card.end - card.begin);
            const bool blankInside = hasBlankInside(text);
            if (card.isName) {
                fits_ = fits_ && text[0] != ' ';
                hasBlankName_ = hasBlankName_ || blankInside;
            } else {
                fits_ = fits_ && !blankInside;
            }
        }
        fits_ = fits_ && hasOnlyBlanks(line, gap, line.size()) &&
                line.find('\t') == std::string_view::npos;
    }

    [[nodiscard]] bool hasBlankName() const { return hasBlankName_; }

    [[nodiscard]] bool fits(MpsSection section) const {
        if (!fits_) return false;
        switch (section) {
            case MpsSection::rows:
                return filled_ == 0b000011;
            case MpsSection::columns:
                return filled_ == 0b001110 || filled_ == 0b111110;
            case MpsSection::rightHandSides:
            case MpsSection::ranges:  // the name of the set may be blank
                return (filled_ | 0b10U) == 0b001110 || (filled_ | 0b10U) == 0b111110;
            case MpsSection::bounds:
                return (filled_ | 0b10U) == 0b000111 || (filled_ | 0b10U) == 0b001111;
            default:
                return true;
        }
    }

private:
    std::string_view line_;
    unsigned filled_ = 0;  ///< bit k: card k is not blank
    bool fits_ = true;
    bool hasBlankName_ = false;
};

}  // namespace

MpsLayoutFinding recogniseMpsLayout(std::string_view text) {
    MpsSection section = MpsSection::none;
    bool hasBlankName = false;
    MpsLines lines(text);
    while (section != MpsSection::end && lines.next()) {
        if (lines.isHeader()) {
            section = sectionNamed(firstWord(lines.line()));
            continue;
        }
        const bool isMarker = section == MpsSection::columns &&
                              lines.line().find("'MARKER'") != std::string_view::npos;
        if (!isDataSection(section) || isMarker) continue;
        const CardLine line(lines.line());
        if (!line.fits(section)) return {MpsLayout::free, lines.number()};
        hasBlankName = hasBlankName || line.hasBlankName();
    }
    return {hasBlankName ? MpsLayout::cards : MpsLayout::free, 0};
}

}  // namespace norv
