#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "defvars/jacobian.hpp"
#include "defvars/prefetch.hpp"

namespace vex {

/// Which variable is defined by which row, and the ways between definitions.
///
/// Definitions are numbered from 0 in the order in which they come: what belongs to a definition
/// lies near to what belongs to those found shortly before it.
class Definitions {
public:
    static constexpr std::int32_t none = -1;

    /// @param source  outlives this object.
    explicit Definitions(const Jacobian& source)
        : jacobian_(source),
          ofVariables_(static_cast<std::size_t>(source.nbVariables()), none),
          byRows_(static_cast<std::size_t>(source.nbRows()), none) {}

    [[nodiscard]] std::int32_t size() const { return static_cast<std::int32_t>(pairs_.size()); }
    /// Definition of `variable`, or none.
    [[nodiscard]] std::int32_t definitionOf(std::int32_t variable) const {
        return ofVariables_[static_cast<std::size_t>(variable)];
    }
    [[nodiscard]] bool isDefined(std::int32_t variable) const {
        return definitionOf(variable) != none;
    }
    /// Definition by `row`, or none.
    [[nodiscard]] std::int32_t definitionBy(std::int32_t row) const {
        return byRows_[static_cast<std::size_t>(row)];
    }
    [[nodiscard]] std::int32_t variable(std::int32_t d) const { return at(d).variable; }
    [[nodiscard]] std::int32_t row(std::int32_t d) const { return at(d).row; }

    /// @return its number.
    std::int32_t add(std::int32_t variable, std::int32_t row) {
        const std::int32_t d = size();
        pairs_.push_back({variable, row});
        ofVariables_[static_cast<std::size_t>(variable)] = d;
        byRows_[static_cast<std::size_t>(row)] = d;
        return d;
    }

    /// The variables that definition `d` uses. The defined one should be among them, but a row
    /// given from outside may be any, even an empty one.
    [[nodiscard]] Jacobian::Entries used(std::int32_t d) const { return jacobian_.row(row(d)); }
    /// The rows with `variable`; those that define something define its users.
    [[nodiscard]] Jacobian::Entries rowsOf(std::int32_t variable) const {
        return jacobian_.column(variable);
    }

    /// Asks for the place of definitionOf(variable).
    void prefetchOf(std::int32_t variable) const {
        prefetchAddress(&ofVariables_[static_cast<std::size_t>(variable)]);
    }

private:
    struct Pair {
        std::int32_t variable = none;
        std::int32_t row = none;
    };

    [[nodiscard]] const Pair& at(std::int32_t d) const {
        return pairs_[static_cast<std::size_t>(d)];
    }

    const Jacobian& jacobian_;
    std::vector<Pair> pairs_;                ///< [size()]
    std::vector<std::int32_t> ofVariables_;  ///< [nbVariables]
    std::vector<std::int32_t> byRows_;       ///< [nbRows]
};

}  // namespace vex
