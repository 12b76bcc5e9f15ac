#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "defvars/defined_variables.hpp"
#include "defvars/prefetch.hpp"
#include "host/codes.hpp"

namespace vex {

/// Entries of the rows that may define a variable, by rows and by columns, read from the host once:
/// of all equalities, and of the rows that are named as definitions. The other rows stay empty.
class Jacobian {
public:
    /// An entry of a row or of a column.
    struct Entry {
        std::int32_t index = -1;      ///< variable of a row's entry, row of a column's
        bool isLinear = false;        ///< the variable occurs in the row's linear part alone
        bool canBeSolvedFor = false;  ///< linear, and the coefficient is not negligible
    };
    using Entries = std::span<const Entry>;

    /// @param known  its rows are read too, whatever their type.
    Jacobian(ModelHandle nmo, const DefinedVariables& known);

    [[nodiscard]] std::int32_t nbVariables() const { return nbOf(columnStarts_); }
    [[nodiscard]] std::int32_t nbRows() const { return nbOf(rowStarts_); }
    [[nodiscard]] bool isEquality(std::int32_t i) const { return equality_[place(i)]; }

    /// In the host's order; without entries for a row that is not read.
    [[nodiscard]] Entries row(std::int32_t i) const { return entries(rowEntries_, rowStarts_, i); }
    /// The entries in rows that are read, ascending.
    [[nodiscard]] Entries column(std::int32_t j) const {
        return entries(columnEntries_, columnStarts_, j);
    }

    /// Ask for the place where row `i` (column `j`) starts, and for the first entries of row `i`.
    void prefetchRowStart(std::int32_t i) const { prefetchAddress(&rowStarts_[place(i)]); }
    void prefetchColumnStart(std::int32_t j) const { prefetchAddress(&columnStarts_[place(j)]); }
    void prefetchRow(std::int32_t i) const { prefetchAddress(row(i).data()); }

private:
    using Starts = std::vector<std::size_t>;

    static std::size_t place(std::int32_t k) { return static_cast<std::size_t>(k); }
    static std::int32_t nbOf(const Starts& starts) {
        return static_cast<std::int32_t>(starts.size()) - 1;
    }
    static Entries entries(const std::vector<Entry>& all, const Starts& starts, std::int32_t k) {
        return {all.data() + starts[place(k)], all.data() + starts[place(k) + 1]};
    }
    void readRow(ModelHandle nmo, std::int32_t i);
    void transpose();

    std::vector<bool> equality_;  ///< [nbRows]
    Starts rowStarts_;            ///< [nbRows + 1]
    Starts columnStarts_;         ///< [nbVariables + 1]
    std::vector<Entry> rowEntries_;
    std::vector<Entry> columnEntries_;
};

}  // namespace vex
