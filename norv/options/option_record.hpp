#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hostapi/handles.hpp"
#include "norv/options.hpp"
#include "options/option_definition.hpp"

namespace norv {

/// The current value of one option.
struct Setting {
    OptionValue value;
    bool isSet = false;  ///< by someone, not by the default
};

}  // namespace norv

namespace hostapi {

/// What an option handle points to.
struct OptionRecord {
    std::vector<norv::OptionDefinition> definitions;
    std::vector<norv::Setting> settings;  ///< as many as definitions
    std::vector<norv::DefinedVariablePair> pairs;
    std::int32_t nbRefusedPairs = 0;
    std::vector<norv::OptionMessage> messages;
    bool echoes = false;          ///< lines of option files become messages
    bool endsAtLineOnly = false;  ///< no ';' between settings

    void addMessage(std::int32_t type, std::string text);

    /// Reads a definition file; messages tell what went wrong. @return success.
    [[nodiscard]] bool readDefinition(const std::string& path);
    /// Reads an option file; see option_file.cpp. @return no line was refused.
    bool readFile(const std::string& path);
    /// Takes one setting; `place` stands in front of the message. @return taken.
    bool takeSetting(std::string_view text, const std::string& place);

    /// The setting of that name for a value of `type`.
    /// @throws norv::OptionError (unknownName, wrongType)
    [[nodiscard]] norv::Setting& settingOf(std::string_view name, norv::OptionType type);
    /// Sets an integer option. @throws norv::OptionError (unknownName, wrongType, outOfRange)
    void setInteger(std::string_view name, std::int32_t value);
    [[nodiscard]] bool isSet(std::string_view name) const noexcept;
    /// Takes a value or a pair for an option of any type, as words of a file.
    /// @param place  where the words stand.
    /// @throws norv::OptionError
    void setFromWords(std::string_view name, const std::vector<std::string>& words,
                      const std::string& place);

private:
    [[nodiscard]] norv::Setting& settingFor(const norv::OptionDefinition& option) noexcept;
    void adoptDefinitions(std::vector<norv::OptionDefinition> fresh);
};

/// Adds a message of type syntax; for failures that nothing else reports.
void reportFailure(OptionRecord* options, const char* operation, const char* reason) noexcept;

}  // namespace hostapi
