#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "defvars/equalities.hpp"

namespace vex {

/// Which variable is defined by which row, and the ways between defined variables.
class Definitions {
public:
    static constexpr std::int32_t none = -1;

    /// @param equalities  outlives this object.
    explicit Definitions(const Equalities& equalities)
        : jacobian(equalities),
          rows(static_cast<std::size_t>(equalities.nbVariables()), none),
          variables(static_cast<std::size_t>(equalities.nbRows()), none) {}

    [[nodiscard]] bool isDefined(std::int32_t variable) const {
        return rowDefining(variable) != none;
    }
    /// Row that defines `variable`, or none.
    [[nodiscard]] std::int32_t rowDefining(std::int32_t variable) const {
        return rows[static_cast<std::size_t>(variable)];
    }
    /// Variable that `row` defines, or none.
    [[nodiscard]] std::int32_t variableDefinedBy(std::int32_t row) const {
        return variables[static_cast<std::size_t>(row)];
    }
    void add(std::int32_t variable, std::int32_t row) {
        rows[static_cast<std::size_t>(variable)] = row;
        variables[static_cast<std::size_t>(row)] = variable;
    }

    /// The variables that a defined variable uses. It should be one of them itself, but a row given
    /// from outside may be any, even an empty one.
    [[nodiscard]] Equalities::Entries used(std::int32_t variable) const {
        return jacobian.row(rowDefining(variable));
    }
    /// The rows with `variable`; those that define something define its users.
    [[nodiscard]] Equalities::Entries rowsOf(std::int32_t variable) const {
        return jacobian.column(variable);
    }

private:
    const Equalities& jacobian;
    std::vector<std::int32_t> rows;       ///< [nbVariables]
    std::vector<std::int32_t> variables;  ///< [nbRows]
};

}  // namespace vex
