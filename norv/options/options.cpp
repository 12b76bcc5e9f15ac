#include "norv/options.hpp"

#include "options/option_record.hpp"

namespace norv {

Options::Options() : record_(std::make_unique<hostapi::OptionRecord>()) {}
Options::~Options() = default;
Options::Options(Options&&) noexcept = default;
Options& Options::operator=(Options&&) noexcept = default;

bool Options::readDefinition(const std::string& path) {
    return record_->readDefinition(path);
}

bool Options::readFile(const std::string& path) {
    return record_->readFile(path);
}

bool Options::set(std::string_view setting, std::string_view source) {
    return record_->takeSetting(setting, std::string(source));
}

std::string Options::text(std::string_view name) const {
    return std::get<std::string>(record_->settingOf(name, OptionType::text).value);
}

bool Options::isSet(std::string_view name) const noexcept {
    return record_->isSet(name);
}

std::vector<OptionDescription> Options::descriptions() const {
    std::vector<OptionDescription> all;
    for (std::size_t k = 0; k < record_->definitions.size(); ++k) {
        const OptionDefinition& option = record_->definitions[k];
        all.push_back({option.name, valuesText(option), valueText(option.initial),
                       valueText(record_->settings[k].value), option.description, option.group,
                       option.type == OptionType::text, option.type == OptionType::pairs});
    }
    return all;
}

const std::vector<OptionMessage>& Options::messages() const noexcept {
    return record_->messages;
}

void Options::clearMessages() noexcept {
    record_->messages.clear();
}

hostapi::OptionHandle Options::handle() const noexcept {
    return record_.get();
}

const std::vector<DefinedVariablePair>& definedVariablePairs(
    hostapi::OptionHandle options) noexcept {
    return options->pairs;
}

}  // namespace norv
