#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "solve/settings/settings.hpp"

namespace norv {

/// Where the value of a setting is kept. A choice of two words is a flag: the second word sets it.
using SettingPlace = std::variant<bool*, std::int32_t*, double*, std::string*>;

/// One setting of the program. Help, manual page, completions, nearest names, "name=?" and the
/// handling of all ways to set it come from its row; docs/norvsolve.md has the table again.
struct SettingRow {
    enum class Kind : std::uint8_t { flag, integer, number, text, choice };

    const char* name;     ///< as it is written after two hyphens
    const char* aliases;  ///< further names, separated by blanks; those of one letter take a hyphen
    const char* group;    ///< heading in the help
    Kind kind;
    const char* values;  ///< of a number "0 1024", of a choice "reformulate refuse", else a word
    const char* initial;
    const char* meaning;
    SettingPlace (*place)(Settings& settings);
    bool isForFiles = true;  ///< may stand in an option file
};

/// All rows, in the order of the help.
[[nodiscard]] std::span<const SettingRow> settingRows();

/// Names are the same whatever their case, hyphens and underscores: "time-limit", "timelimit" and
/// "TIME_LIMIT" have one key.
[[nodiscard]] std::string keyOf(std::string_view name);

/// The row with that name or alias; null when the program has no such setting.
[[nodiscard]] const SettingRow* findSetting(std::string_view name);

/// "0 to 1024", "0 or more", "reformulate or refuse", "FILE"
[[nodiscard]] std::string valuesOf(const SettingRow& row);
/// The value that the setting has, as a user would write it.
[[nodiscard]] std::string valueOf(const SettingRow& row, const Settings& settings);

/// @param source  stands in front of complaints.
/// Failure (badInput) for a value of another kind or outside the range, naming setting and value.
void assign(const SettingRow& row, const std::string& value, const std::string& source,
            Settings& settings);

}  // namespace norv
