#include "solve/settings/catalogue.hpp"

#include <algorithm>
#include <sstream>

#include "norv/edit_distance.hpp"
#include "solve/failure.hpp"

namespace norv {

std::string Catalogue::Entry::name() const {
    return row != nullptr ? row->name : option->name;
}
bool Catalogue::Entry::isFlag() const {
    return row != nullptr && row->kind == SettingRow::Kind::flag;
}
bool Catalogue::Entry::takesEmpty() const {
    return row != nullptr ? row->kind == SettingRow::Kind::text : option->isText;
}
std::string Catalogue::Entry::values() const {
    return row != nullptr ? valuesOf(*row) : option->values;
}
std::string Catalogue::Entry::initial() const {
    return row != nullptr ? row->initial : option->initial;
}
std::string Catalogue::Entry::meaning() const {
    return row != nullptr ? row->meaning : option->purpose;
}
std::string Catalogue::Entry::group() const {
    return row != nullptr ? row->group : option->group;
}

Catalogue::Catalogue(const std::string& definitionFile) {
    Options options;
    if (options.readDefinition(definitionFile)) {
        options_ = options.descriptions();
    } else {
        fault_ = options.messages().back().text;
    }
}

std::optional<Catalogue::Entry> Catalogue::find(std::string_view name) const {
    if (const SettingRow* row = findSetting(name)) return Entry{row, nullptr};
    const auto found = std::ranges::find_if(
        options_, [key = keyOf(name)](const auto& each) { return keyOf(each.name) == key; });
    if (found == options_.end()) return std::nullopt;
    return Entry{nullptr, &*found};
}

Catalogue::Entry Catalogue::require(std::string_view name, const std::string& source) const {
    if (const auto entry = find(name)) return *entry;
    throw Failure(ExitCode::badInput, source + ": " + unknownText(name));
}

std::string Catalogue::unknownText(std::string_view name) const {
    const std::string near = nearest(name);
    return "unknown setting \"" + std::string(name) + '"' +
           (near.empty() ? "" : ": did you mean \"" + near + "\"?") +
           (fault_.empty() ? "" : "; those of the link are not known: " + fault_);
}

std::vector<Catalogue::Entry> Catalogue::entries() const {
    std::vector<Entry> all;
    for (const SettingRow& row : settingRows()) all.push_back({&row, nullptr});
    for (const OptionDescription& option : options_) all.push_back({nullptr, &option});
    std::vector<std::string> groups;
    const auto rank = [&groups](const Entry& entry) {
        return std::ranges::find(groups, entry.group()) - groups.begin();
    };
    for (const Entry& each : all) {
        if (rank(each) == std::ssize(groups)) groups.push_back(each.group());
    }
    std::ranges::stable_sort(all, {}, rank);
    return all;
}

std::vector<MadeSetting> Catalogue::valuesIn(const Settings& settings) const {
    std::vector<MadeSetting> values;
    for (const Entry& entry : entries()) {
        const auto made = std::ranges::find(settings.made, entry.name(), &MadeSetting::name);
        const bool isMade = entry.row == nullptr && made != settings.made.end();
        values.push_back({entry.name(), isMade                 ? made->value
                                        : entry.row != nullptr ? valueOf(*entry.row, settings)
                                                               : entry.initial()});
    }
    return values;
}

/// A misspelling keeps most of the name; whatever is further away would be a guess.
std::string Catalogue::nearest(std::string_view name) const {
    constexpr std::size_t longestName = 64;
    const std::string key = keyOf(name);
    std::size_t nearestDistance = std::max<std::size_t>(1, (key.size() + 1) / 3) + 1;
    std::string found;
    const auto offer = [&](const std::string& known) {
        const std::size_t distance = editDistance(key, keyOf(known));
        if (known.size() < 2 || distance >= nearestDistance) return;
        nearestDistance = distance;
        found = known;
    };
    if (key.size() > longestName) return {};
    for (const SettingRow& row : settingRows()) {
        offer(row.name);
        std::istringstream aliases(row.aliases);
        for (std::string alias; aliases >> alias;) offer(alias);
    }
    for (const OptionDescription& option : options_) offer(option.name);
    return found;
}

}  // namespace norv
