#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "norv/options.hpp"
#include "solve/settings/setting_table.hpp"

namespace norv {

/// All that has a name: the program's settings and the link's options.
class Catalogue {
public:
    struct Entry {
        const SettingRow* row = nullptr;            ///< a setting of the program, or
        const OptionDescription* option = nullptr;  ///< an option of the link

        [[nodiscard]] std::string name() const;
        [[nodiscard]] bool isFlag() const;
        [[nodiscard]] bool takesEmpty() const;  ///< is an empty value one?
        [[nodiscard]] std::string values() const;
        [[nodiscard]] std::string initial() const;
        [[nodiscard]] std::string meaning() const;
        [[nodiscard]] std::string group() const;
    };

    /// @param definitionFile  path of optlocalsolver.def. Without it there are the program's
    ///                        settings only, and the first unknown name raises its fault.
    explicit Catalogue(const std::string& definitionFile);

    /// Nothing for an unknown name.
    [[nodiscard]] std::optional<Entry> find(std::string_view name) const;
    /// Failure (badInput) with the source and `unknownText`.
    [[nodiscard]] Entry require(std::string_view name, const std::string& source) const;
    /// What is to be said about an unknown name: `unknown setting "tmlim": did you mean "timelim"?`
    [[nodiscard]] std::string unknownText(std::string_view name) const;
    /// Of the program, then of the link, each in the order of its table; grouped.
    [[nodiscard]] std::vector<Entry> entries() const;

    /// All of them with the values that they have.
    [[nodiscard]] std::vector<MadeSetting> valuesIn(const Settings& settings) const;

private:
    [[nodiscard]] std::string nearest(std::string_view name) const;

    std::vector<OptionDescription> options_;
    std::string fault_;  ///< why there are no options
};

}  // namespace norv
