#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "model/array.hpp"

/// Compressed rows and columns of an instance.
///
/// The row lists of an instance have one row more than the instance: the objective, the last one.

namespace norv {

/// How a variable occurs in a row; any combination.
using Occurrence = std::uint8_t;
constexpr Occurrence linearOnly = 0;
constexpr Occurrence inQuadraticPart = 1;
constexpr Occurrence inInstructions = 2;

/// Entries in the order in which they came, duplicates included.
struct EntryList {
    Array<std::int32_t> rows;
    Array<std::int32_t> variables;
    Array<double> values;
    /// Of the entries from `nbLinear` on; those before are linear.
    Array<Occurrence> occurrences;

    void addLinear(std::int32_t row, std::int32_t variable, double value);
    /// States that the variable occurs in the row's quadratic part or instructions; all linear
    /// entries are there by then.
    void addOccurrence(std::int32_t row, std::int32_t variable, Occurrence occurrence);
    [[nodiscard]] Occurrence occurrenceOf(std::size_t k) const;
};

/// Variables ascending within a row, none twice, none without value and occurrence.
struct SparseRows {
    Array<std::int64_t> starts = {0, 0};  ///< [nbRows + 1]; at first the objective alone
    Array<std::int32_t> variables;
    Array<double> values;  ///< linear coefficients
    Array<Occurrence> occurrences;

    [[nodiscard]] std::int32_t nbEntries(std::int32_t row) const {
        return static_cast<std::int32_t>(starts[row + 1] - starts[row]);
    }
    /// The link takes this entry's whole contribution from elsewhere: the instruction list has it,
    /// or there is no linear term beside the quadratic ones.
    [[nodiscard]] bool isNonlinear(std::int64_t k) const {
        return (occurrences[k] & inInstructions) != 0 ||
               (occurrences[k] == inQuadraticPart && values[k] == 0.0);
    }
};

/// Rows ascending within a column.
struct SparseColumns {
    Array<std::int64_t> starts = {0};  ///< [nbVariables + 1]
    Array<std::int32_t> rows;
    Array<std::int64_t> positions;  ///< of the same entry in the rows' lists
};

/// Quadratic entries: first <= second, ascending within a row, none twice, none 0.
struct QuadraticRows {
    Array<std::int64_t> starts = {0, 0};  ///< [nbRows + 1]; at first the objective alone
    Array<std::int32_t> first;
    Array<std::int32_t> second;
    Array<double> values;  ///< coefficients of the products, as the builder was told

    [[nodiscard]] std::int32_t nbEntries(std::int32_t row) const {
        return static_cast<std::int32_t>(starts[row + 1] - starts[row]);
    }
};

struct QuadraticEntry {
    std::int32_t row;
    std::int32_t first;
    std::int32_t second;
    double value;
};

/// @param nbRows  of the list, the objective's included.
/// O(nbRows + nbVariables + entries).
[[nodiscard]] SparseRows compress(const EntryList& entries, std::int32_t nbRows,
                                  std::int32_t nbVariables);

/// O(q log q) for q entries.
[[nodiscard]] QuadraticRows compress(Array<QuadraticEntry> entries, std::int32_t nbRows);

/// @param nbRows  how many of the rows are listed in the columns, from the first on.
[[nodiscard]] SparseColumns transpose(const SparseRows& rows, std::int32_t nbRows,
                                      std::int32_t nbVariables);

}  // namespace norv
