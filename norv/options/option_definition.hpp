#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "options/option_text.hpp"

namespace norv {

enum class OptionType { integer, real, text, pairs };

/// The value of an option; the alternative follows from its type, `pairs` has none.
using OptionValue = std::variant<std::monostate, std::int32_t, double, std::string>;

/// What a definition file says about one option.
struct OptionDefinition {
    OptionType type = OptionType::integer;
    std::string name;
    OptionValue initial;
    double lowest = 0.0;  ///< of integers and reals
    double highest = 0.0;
    std::int32_t mapType = 0;  ///< of pairs
    std::string group;
    std::string description;
};

/// Reads `text` as a value for the option.
/// @throws OptionError with message_type::wrongType, outOfRange or syntax.
[[nodiscard]] OptionValue parseValue(const OptionDefinition& option, const std::string& text);

/// Does the option's range contain the value? @throws OptionError if not.
void checkRange(const OptionDefinition& option, double value);

/// What the option takes, in a few words: "0 to 9".
[[nodiscard]] std::string valuesText(const OptionDefinition& option);
/// The value as it is written in an option file; empty for pairs.
[[nodiscard]] std::string valueText(const OptionValue& value);

/// Reads the contents of a definition file, whose format its own head comment describes.
/// @throws OptionError with message_type::definition, the line in front of the text ("12: …").
[[nodiscard]] std::vector<OptionDefinition> parseDefinitions(std::string_view contents);

/// The option of that name, ignoring case, or null.
[[nodiscard]] const OptionDefinition* findOption(const std::vector<OptionDefinition>& options,
                                                 std::string_view name) noexcept;

/// "unknown option …", with the nearest known name when one is near.
[[nodiscard]] OptionError unknownOption(const std::vector<OptionDefinition>& options,
                                        std::string_view name);

}  // namespace norv
