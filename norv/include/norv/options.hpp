#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hostapi/handles.hpp"
#include "norv/export.hpp"

namespace norv {

/// A message of the option library. Types up to 7 and type 9 are meant for the user's eyes.
struct OptionMessage {
    std::int32_t type = 0;
    std::string text;
};

/// A variable and the equation that defines it, by name, in the order of the option file.
struct DefinedVariablePair {
    std::string variable;
    std::string equation;
    std::string place;  ///< where it was set, in front of messages: "file:line"
};

/// What a user is told about an option.
struct OptionDescription {
    std::string name;
    std::string values;   ///< "0 to 9", "0 or more", "a text"
    std::string initial;  ///< the default, perhaps empty
    std::string value;    ///< as set, or the default
    std::string purpose;
    std::string group;     ///< heading under which it is defined
    bool isText = false;   ///< any value will do, also an empty one
    bool isPairs = false;  ///< takes two words, and more of them each time
};

/// The option object: definitions, values, messages.
class NORV_API Options {
public:
    /// Empty: no option is known until `readDefinition`.
    Options();
    ~Options();
    Options(Options&&) noexcept;
    Options& operator=(Options&&) noexcept;

    /// Reads an option definition file. Values that were set before stay set when the new
    /// definitions allow them. On failure the definitions stay as they were.
    /// @return whether the file was read without error; otherwise there are messages.
    [[nodiscard]] bool readDefinition(const std::string& path);

    /// Reads an option file. Lines with errors give messages and are skipped.
    /// @return whether the file was read without error.
    bool readFile(const std::string& path);

    /// Takes one setting, "name=value" or "name value", as a line of an option file.
    /// @param source  stands in front of the message when the setting is refused.
    /// @return whether the setting was taken; otherwise there is a message.
    bool set(std::string_view setting, std::string_view source);

    /// The value of a text option. @throws std::runtime_error when there is none of that name.
    [[nodiscard]] std::string text(std::string_view name) const;
    /// Was it set, by a file or otherwise? No for an unknown name.
    [[nodiscard]] bool isSet(std::string_view name) const noexcept;
    /// Of all options, in the order of their definitions.
    [[nodiscard]] std::vector<OptionDescription> descriptions() const;

    [[nodiscard]] const std::vector<OptionMessage>& messages() const noexcept;
    void clearMessages() noexcept;

    /// Never null; valid as long as this object or the one it was moved to.
    [[nodiscard]] hostapi::OptionHandle handle() const noexcept;

private:
    std::unique_ptr<hostapi::OptionRecord> record_;
};

/// The defining pairs of an option object of this library.
/// @param options  not null.
[[nodiscard]] NORV_API const std::vector<DefinedVariablePair>& definedVariablePairs(
    hostapi::OptionHandle options) noexcept;

}  // namespace norv
