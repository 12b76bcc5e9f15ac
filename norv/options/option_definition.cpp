#include "options/option_definition.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "hostapi/codes.hpp"
#include "interface/names.hpp"
#include "norv/edit_distance.hpp"

namespace norv {

namespace {

struct TypeWords {
    std::string_view keyword;
    OptionType type;
    std::size_t nbWords;  ///< of a definition line
    std::string_view shape;
};

constexpr std::array typeWords = {
    TypeWords{"integer", OptionType::integer, 6, "integer NAME DEFAULT LOWEST HIGHEST DESCRIPTION"},
    TypeWords{"real", OptionType::real, 6, "real NAME DEFAULT LOWEST HIGHEST DESCRIPTION"},
    TypeWords{"text", OptionType::text, 4, "text NAME DEFAULT DESCRIPTION"},
    TypeWords{"pairs", OptionType::pairs, 4, "pairs NAME MAPTYPE DESCRIPTION"}};

/// The shortest text that reads back as the same number.
std::string numberText(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

template <class Number>
Number parseNumber(const OptionDefinition& option, std::string_view text, const char* kind) {
    const std::string_view digits = text.starts_with('+') ? text.substr(1) : text;
    Number value{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool isWhole = end == digits.data() + digits.size() && !digits.empty();
    if (!isWhole || error == std::errc::invalid_argument || std::isnan(static_cast<double>(value)))
        throw OptionError(message_type::wrongType,
                          "option " + option.name + " takes " + kind + ", not " + excerpt(text));
    if (error == std::errc::result_out_of_range)
        throw OptionError(message_type::outOfRange, "option " + option.name + ": " + excerpt(text) +
                                                        " is beyond the range of " + kind);
    return value;
}

[[noreturn]] void refuse(const std::string& reason) {
    throw OptionError(message_type::definition, reason);
}

/// Range and default of a number, of which `words` holds the default first.
void parseNumberDefinition(OptionDefinition& option, const std::vector<std::string>& words) {
    OptionDefinition bounds;
    bounds.type = OptionType::real;
    bounds.name = option.name;
    option.lowest = parseNumber<double>(bounds, words[3], "a real number as its lowest value");
    option.highest = parseNumber<double>(bounds, words[4], "a real number as its highest value");
    option.initial = parseValue(option, words[2]);
    option.description = words[5];
}

OptionDefinition parseDefinition(const std::vector<std::string>& words) {
    const auto found = std::find_if(
        typeWords.begin(), typeWords.end(),
        [&words](const TypeWords& each) { return sameName(each.keyword, words.front()); });
    if (found == typeWords.end())
        refuse(excerpt(words.front()) + " is none of group, integer, real, text, pairs");
    if (words.size() != found->nbWords) refuse("expected: " + std::string(found->shape));
    OptionDefinition option;
    option.type = found->type;
    option.name = words[1];
    if (found->nbWords == 6) {
        parseNumberDefinition(option, words);
        return option;
    }
    option.description = words[3];
    if (option.type == OptionType::text) {
        option.initial = parseValue(option, words[2]);
    } else {
        option.mapType = parseNumber<std::int32_t>(option, words[2], "an integer as its map type");
    }
    return option;
}

}  // namespace

void checkRange(const OptionDefinition& option, double value) {
    if (value >= option.lowest && value <= option.highest) return;
    throw OptionError(message_type::outOfRange, "option " + option.name + ": " + numberText(value) +
                                                    " is outside " + numberText(option.lowest) +
                                                    " to " + numberText(option.highest));
}

OptionValue parseValue(const OptionDefinition& option, const std::string& text) {
    if (option.type == OptionType::text) {
        if (text.size() > static_cast<std::size_t>(hostapi::longestText))
            throw OptionError(message_type::syntax, "option " + option.name +
                                                        " takes at most 255 characters, not " +
                                                        std::to_string(text.size()));
        return text;
    }
    if (option.type == OptionType::integer) {
        const auto value = parseNumber<std::int32_t>(option, text, "an integer");
        checkRange(option, value);
        return value;
    }
    const auto value = parseNumber<double>(option, text, "a real number");
    checkRange(option, value);
    return value;
}

std::string valuesText(const OptionDefinition& option) {
    if (option.type == OptionType::pairs) return "a variable and an equation";
    if (option.type == OptionType::text) return "a text";
    const bool isOpen = option.highest >= std::numeric_limits<std::int32_t>::max();
    if (isOpen && std::isinf(option.lowest)) return "a number";
    const std::string lowest = numberText(option.lowest);
    return isOpen ? lowest + " or more" : lowest + " to " + numberText(option.highest);
}

std::string valueText(const OptionValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* integer = std::get_if<std::int32_t>(&value)) return std::to_string(*integer);
    const auto* real = std::get_if<double>(&value);
    return real != nullptr ? numberText(*real) : std::string();
}

std::vector<OptionDefinition> parseDefinitions(std::string_view contents) {
    std::vector<OptionDefinition> options;
    std::string group;
    for (std::size_t line = 1; !contents.empty(); ++line) {
        const std::string_view text = takeLine(contents);
        if (hasNoContent(text)) continue;
        try {
            const std::vector<std::string> words = splitWords(text);
            if (sameName(words.front(), "group")) {
                if (words.size() != 2) refuse("expected: group NAME");
                group = words[1];
                continue;
            }
            OptionDefinition option = parseDefinition(words);
            if (findOption(options, option.name) != nullptr)
                refuse("option " + excerpt(option.name) + " is defined twice");
            option.group = group;
            options.push_back(std::move(option));
        } catch (const OptionError& error) {
            refuse(std::to_string(line) + ": " + error.what());
        }
    }
    if (options.empty()) refuse(" no option is defined");
    return options;
}

const OptionDefinition* findOption(const std::vector<OptionDefinition>& options,
                                   std::string_view name) noexcept {
    const auto found =
        std::find_if(options.begin(), options.end(),
                     [name](const OptionDefinition& each) { return sameName(each.name, name); });
    return found == options.end() ? nullptr : &*found;
}

OptionError unknownOption(const std::vector<OptionDefinition>& options, std::string_view name) {
    // A misspelling keeps most of the name; whatever is further away would be a guess.
    constexpr std::size_t longestName = 64;
    std::size_t nearestDistance = std::max<std::size_t>(1, name.size() / 3) + 1;
    const OptionDefinition* nearest = nullptr;
    if (name.size() <= longestName) {
        for (const OptionDefinition& option : options) {
            const std::size_t distance = editDistance(name, option.name);
            if (distance >= nearestDistance) continue;
            nearestDistance = distance;
            nearest = &option;
        }
    }
    const std::string advice =
        nearest == nullptr ? "" : ", did you mean \"" + nearest->name + "\"?";
    return {message_type::unknownName, "unknown option " + excerpt(name) + advice};
}

}  // namespace norv
