#include "writers/written_names.hpp"

#include <algorithm>
#include <charconv>
#include <unordered_set>

namespace norv {
namespace {

bool isAllowed(const std::string& name, std::string_view forbidden, bool startsLikeNumbers) {
    if (name.empty() || name.size() > 255) return false;
    const bool startsLikeNumber = name[0] == '.' || (name[0] >= '0' && name[0] <= '9');
    if (startsLikeNumber && !startsLikeNumbers) return false;
    return std::ranges::all_of(name, [forbidden](char c) {
        return static_cast<unsigned char>(c) > 0x20 && static_cast<unsigned char>(c) < 0x7f &&
               forbidden.find(c) == std::string_view::npos;
    });
}

/// Words that end a list of names, in any case.
bool isKeyword(std::string name) {
    constexpr std::string_view words[] = {
        "st",     "bound",    "bounds", "general",  "generals", "gen",     "integer",  "int",
        "binary", "binaries", "bin",    "end",      "free",     "inf",     "infinity", "sos",
        "semi",   "min",      "max",    "minimize", "maximize", "subject", "such"};
    for (char& each : name) each = each >= 'A' && each <= 'Z' ? static_cast<char>(each + 32) : each;
    return std::ranges::find(words, name) != std::end(words);
}

/// "3 e5" could be read as a number; no number stands in front of a row's name.
bool isExponent(const std::string& name, char initial) {
    const bool startsLikeOne = name[0] == 'e' || name[0] == 'E';
    return initial == 'x' && startsLikeOne &&
           (name.size() == 1 || (name[1] >= '0' && name[1] <= '9'));
}

template <class NameOf>
std::vector<std::string> namesOf(std::int32_t count, const NameOf& nameOf, char initial,
                                 std::string_view forbidden, bool startsLikeNumbers,
                                 std::string& remark) {
    std::vector<std::string> names;
    std::unordered_set<std::string> seen;
    for (std::int32_t k = 0; k < count; ++k) {
        names.push_back(nameOf(k));
        const std::string& name = names.back();
        const bool isTaken = !seen.insert(name).second;
        const bool isWord = !startsLikeNumbers && (isKeyword(name) || isExponent(name, initial));
        if (isAllowed(name, forbidden, startsLikeNumbers) && !isTaken && !isWord) continue;
        remark += (remark.empty() ? "" : "; ") + std::string("the names ") + initial + "1, " +
                  initial + "2, ... replace those of the model, as \"" + name +
                  (isTaken ? "\" stands for two things" : "\" cannot stand here");
        names.clear();
        for (std::int32_t i = 0; i < count; ++i) names.push_back(initial + std::to_string(i + 1));
        break;
    }
    return names;
}

}  // namespace

WrittenNames::WrittenNames(const Model& model, std::string_view forbidden, bool startsLikeNumbers)
    : rows_(namesOf(
          model.nbRows(), [&model](std::int32_t i) { return model.rowName(i); }, 'r', forbidden,
          startsLikeNumbers, remark_)),
      variables_(namesOf(
          model.nbVariables(), [&model](std::int32_t j) { return model.variableName(j); }, 'x',
          forbidden, startsLikeNumbers, remark_)) {}

std::string WrittenNames::objective() const {
    std::string name = "obj";
    while (std::ranges::find(rows_, name) != rows_.end()) name += '_';
    return name;
}

std::string writtenNumber(double value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

}  // namespace norv
