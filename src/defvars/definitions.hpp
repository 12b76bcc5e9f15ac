#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "defvars/jacobian_walk.hpp"

namespace vex {

/// Which variable is defined by which row, in both directions, and the walks between them.
class Definitions {
public:
    static constexpr std::int32_t none = -1;

    explicit Definitions(ModelHandle model)
        : nmo(model),
          rows(static_cast<std::size_t>(nmoN(model)), none),
          variables(static_cast<std::size_t>(nmoM(model)), none) {}

    [[nodiscard]] std::int32_t nbVariables() const {
        return static_cast<std::int32_t>(rows.size());
    }
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

    /// Walk over the variables that a defined variable uses; it is itself one of them mostly.
    [[nodiscard]] RowWalk walkUsed(std::int32_t variable) const {
        return {nmo, rowDefining(variable)};
    }
    /// Walk over the rows of a variable, of which those that define something are its users.
    [[nodiscard]] ColumnWalk walkRows(std::int32_t variable) const { return {nmo, variable}; }

private:
    ModelHandle nmo;
    std::vector<std::int32_t> rows;       ///< [nbVariables]
    std::vector<std::int32_t> variables;  ///< [nbRows]
};

}  // namespace vex
