#include "options/option_record.hpp"

#include <cstdio>
#include <utility>

namespace hostapi {

using norv::OptionDefinition;
using norv::OptionError;
using norv::OptionType;
using norv::OptionValue;

namespace {

const char* kindOf(OptionType type) noexcept {
    switch (type) {
        case OptionType::integer:
            return "an integer";
        case OptionType::real:
            return "a real number";
        case OptionType::text:
            return "a text";
        case OptionType::pairs:
            return "a variable and an equation";
    }
    return "";
}

/// A value that was set under earlier definitions, if `option` still allows it.
bool stillAllows(const OptionDefinition& option, const OptionValue& value) {
    try {
        if (value.index() != option.initial.index()) return false;
        if (const auto* integer = std::get_if<std::int32_t>(&value)) checkRange(option, *integer);
        if (const auto* real = std::get_if<double>(&value)) checkRange(option, *real);
        return true;
    } catch (const OptionError&) {
        return false;
    }
}

}  // namespace

void OptionRecord::addMessage(std::int32_t type, std::string text) {
    messages.push_back({type, std::move(text)});
}

bool OptionRecord::readDefinition(const std::string& path) {
    try {
        adoptDefinitions(norv::parseDefinitions(norv::readWholeFile(path)));
        return true;
    } catch (const OptionError& error) {
        const char* separator = error.type == norv::message_type::unreadable ? ": " : ":";
        addMessage(error.type, path + separator + error.what());
        return false;
    }
}

void OptionRecord::adoptDefinitions(std::vector<OptionDefinition> fresh) {
    std::vector<norv::Setting> values;
    for (const OptionDefinition& option : fresh) values.push_back({option.initial, false});
    for (std::size_t k = 0; k < definitions.size(); ++k) {
        if (!settings[k].isSet) continue;
        const OptionDefinition* same = findOption(fresh, definitions[k].name);
        if (same != nullptr && stillAllows(*same, settings[k].value)) {
            values[static_cast<std::size_t>(same - fresh.data())] = settings[k];
        } else {
            if (definitions[k].type == OptionType::pairs) pairs.clear();
            addMessage(norv::message_type::warning,
                       "option " + definitions[k].name +
                           ": the new definitions do not allow the value, which is dropped");
        }
    }
    definitions = std::move(fresh);
    settings = std::move(values);
}

norv::Setting& OptionRecord::settingFor(const OptionDefinition& option) noexcept {
    return settings[static_cast<std::size_t>(&option - definitions.data())];
}

norv::Setting& OptionRecord::settingOf(std::string_view name, OptionType type) {
    const OptionDefinition* option = findOption(definitions, name);
    if (option == nullptr) throw unknownOption(definitions, name);
    if (option->type != type)
        throw OptionError(
            norv::message_type::wrongType,
            "option " + option->name + " is " + kindOf(option->type) + ", not " + kindOf(type));
    return settingFor(*option);
}

void OptionRecord::setInteger(std::string_view name, std::int32_t value) {
    norv::Setting& setting = settingOf(name, OptionType::integer);
    checkRange(*findOption(definitions, name), value);
    setting = {value, true};
}

bool OptionRecord::isSet(std::string_view name) const noexcept {
    const OptionDefinition* option = findOption(definitions, name);
    return option != nullptr &&
           settings[static_cast<std::size_t>(option - definitions.data())].isSet;
}

void OptionRecord::setFromWords(std::string_view name, const std::vector<std::string>& words,
                                const std::string& place) {
    const OptionDefinition* option = findOption(definitions, name);
    if (option == nullptr) throw unknownOption(definitions, name);
    const bool takesPair = option->type == OptionType::pairs;
    if (words.size() < (takesPair ? 2U : 1U))
        throw OptionError(norv::message_type::syntax,
                          "option " + option->name + " needs " + kindOf(option->type));
    if (words.size() > (takesPair ? 2U : 1U))
        throw OptionError(norv::message_type::syntax,
                          "option " + option->name + ": " + norv::excerpt(words.back()) +
                              " stands after the value; a value with blanks needs quotes");
    if (takesPair) {
        pairs.push_back({words[0], words[1], place});
        settingFor(*option).isSet = true;
        return;
    }
    settingFor(*option) = {parseValue(*option, words.front()), true};
}

void reportFailure(OptionRecord* options, const char* operation, const char* reason) noexcept {
    try {
        if (options != nullptr) {
            options->addMessage(norv::message_type::syntax, std::string(operation) + ": " + reason);
            return;
        }
    } catch (...) {  // no memory for a message: the standard error stream is what is left
    }
    std::fprintf(stderr, "prmdclib64: %s: %s\n", operation, reason);
}

}  // namespace hostapi
