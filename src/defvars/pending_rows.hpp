#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "defvars/prefetch.hpp"

namespace vex {

/// The rows that may still define a variable, the one with the fewest candidates first.
///
/// The order is ascending number of candidate entries, then ascending number of those that the row
/// can be solved for, then ascending row index. Both numbers only fall, so no row comes back to
/// numbers that it had: the rows of equal numbers share a bucket, where an entry is outdated as
/// soon as its row's numbers differ. A bucket mostly receives its rows in ascending order and then
/// costs O(1) per row, otherwise O(log n); finding a bucket is O(log n) in their number.
class PendingRows {
public:
    explicit PendingRows(std::int32_t nbRows) : rows_(static_cast<std::size_t>(nbRows)) {}

    /// Counts an entry of a candidate in `row`, which is not pending yet.
    void countCandidate(std::int32_t row, bool canBeSolvedFor);
    /// Does the row have a candidate that it can be solved for?
    [[nodiscard]] bool hasSolvable(std::int32_t row) const { return at(row).nbSolvable > 0; }
    /// Makes `row` pending.
    void insert(std::int32_t row);

    /// A candidate of `row` is none any longer. Without one that it can be solved for the row is
    /// no longer pending; a row that is not pending stays as it is.
    void uncountCandidate(std::int32_t row, bool canBeSolvedFor);

    /// Asks for the counts of `row`.
    void prefetch(std::int32_t row) const { prefetchAddress(&at(row)); }

    [[nodiscard]] bool isEmpty() const { return buckets_.empty(); }
    /// Removes and returns the first row.
    std::int32_t takeFirst();

private:
    struct Row {
        std::int32_t nbCandidates = 0;
        std::int32_t nbSolvable = 0;
        bool isPending = false;
    };

    /// Rows of equal numbers.
    struct Bucket {
        std::vector<std::int32_t> ascending;  ///< those before `next` are gone
        std::size_t next = 0;
        std::vector<std::int32_t> others;  ///< heap, least row first
        std::int32_t nbPending = 0;        ///< without outdated ones
    };
    using Key = std::uint64_t;  ///< the numbers, in their order
    using Buckets = std::map<Key, Bucket>;

    [[nodiscard]] Row& at(std::int32_t row) { return rows_[static_cast<std::size_t>(row)]; }
    [[nodiscard]] const Row& at(std::int32_t row) const {
        return rows_[static_cast<std::size_t>(row)];
    }
    [[nodiscard]] Key keyOf(std::int32_t row) const;
    [[nodiscard]] bool isOutdated(std::int32_t row, Key key) const;
    void remove(std::int32_t row, Buckets::iterator bucket);

    std::vector<Row> rows_;  ///< [nbRows]
    Buckets buckets_;        ///< none without a pending row
};

}  // namespace vex
