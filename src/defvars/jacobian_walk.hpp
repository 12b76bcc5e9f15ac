#pragma once

#include <cmath>
#include <cstdint>

#include "host/operations.hpp"

/// The entries of one row or column, one at a time, as the host delivers them.

namespace vex {

/// One entry of the Jacobian.
struct JacobianEntry {
    std::int32_t index = -1;     ///< variable of a row's entry, row of a column's; below 0: none
    std::int32_t nonlinear = 0;  ///< nonzero: the variable does not occur in the linear part alone
    double value = 0.0;          ///< coefficient

    /// An equation can be solved for a variable whose coefficient is larger than this.
    static constexpr double negligible = 1e-100;

    [[nodiscard]] bool isLinear() const { return nonlinear == 0; }
    [[nodiscard]] bool canBeSolvedFor() const { return isLinear() && std::abs(value) > negligible; }
};

/// A walk over one row (or column) that may be left and taken up again.
///
/// A walk can be copied and abandoned at any time: the host keeps nothing for it.
template <auto& operation>
class JacobianWalk {
public:
    /// At the end.
    JacobianWalk() = default;
    JacobianWalk(ModelHandle model, std::int32_t rowOrColumn) : nmo(model), line(rowOrColumn) {}

    [[nodiscard]] bool isAtEnd() const { return line < 0; }

    /// @return the next entry; its index is below 0 when there is none. Not at the end.
    JacobianEntry next() {
        JacobianEntry entry;
        operation(nmo, line, &cursor, &entry.value, &entry.index, &entry.nonlinear);
        if (cursor == nullptr || entry.index < 0) line = -1;
        return entry;
    }

private:
    ModelHandle nmo = nullptr;
    std::int32_t line = -1;
    void* cursor = nullptr;
};

using RowWalk = JacobianWalk<nmoGetRowJacInfoOne>;
using ColumnWalk = JacobianWalk<nmoGetColJacInfoOne>;

/// Calls `visit` with every entry of `walk`.
template <class Walk, class Visit>
void forEachEntry(Walk walk, Visit&& visit) {
    while (!walk.isAtEnd()) {
        const JacobianEntry entry = walk.next();
        if (entry.index >= 0) visit(entry);
    }
}

}  // namespace vex
