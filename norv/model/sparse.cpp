#include "model/sparse.hpp"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <stdexcept>
#include <tuple>

namespace norv {

namespace {

/// Turns counts, shifted by one, into starts.
void accumulate(Array<std::int64_t>& starts) {
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
}

/// Stable counting sort: the positions of `keys` by ascending key, taken in the order `before`
/// (empty: as they stand).
Array<std::uint32_t> orderByKey(const Array<std::int32_t>& keys,
                                std::span<const std::uint32_t> before, std::int32_t nbKeys) {
    Array<std::int64_t> next(static_cast<std::size_t>(nbKeys) + 1, 0);
    for (const std::int32_t key : keys) ++next[key + 1];
    accumulate(next);
    Array<std::uint32_t> order(keys.size());
    for (std::size_t k = 0; k < keys.size(); ++k) {
        const std::uint32_t position = before.empty() ? static_cast<std::uint32_t>(k) : before[k];
        order[next[keys[position]]++] = position;
    }
    return order;
}

/// Appends to compressed rows and keeps their promises.
class RowWriter {
public:
    RowWriter(SparseRows& target, std::size_t capacity) : rows_(target) {
        rows_.variables.reserve(capacity);
        rows_.values.reserve(capacity);
        rows_.occurrences.reserve(capacity);
    }

    void add(std::int32_t variable, double value, Occurrence occurrence) {
        const bool isNew =
            static_cast<std::int64_t>(rows_.variables.size()) == rows_.starts.back() ||
            rows_.variables.back() != variable;
        if (isNew) {
            dropEmptyEntry();
            rows_.variables.push_back(variable);
            rows_.values.push_back(value);
            rows_.occurrences.push_back(occurrence);
            return;
        }
        rows_.values.back() += value;
        rows_.occurrences.back() |= occurrence;
    }

    void closeRow() {
        dropEmptyEntry();
        rows_.starts.push_back(static_cast<std::int64_t>(rows_.variables.size()));
    }

private:
    void dropEmptyEntry() {
        if (static_cast<std::int64_t>(rows_.variables.size()) == rows_.starts.back()) return;
        if (rows_.values.back() != 0.0 || rows_.occurrences.back() != linearOnly) return;
        rows_.variables.pop_back();
        rows_.values.pop_back();
        rows_.occurrences.pop_back();
    }

    SparseRows& rows_;
};

}  // namespace

void EntryList::addLinear(std::int32_t row, std::int32_t variable, double value) {
    assert(occurrences.empty());
    rows.push_back(row);
    variables.push_back(variable);
    values.push_back(value);
}

void EntryList::addOccurrence(std::int32_t row, std::int32_t variable, Occurrence occurrence) {
    rows.push_back(row);
    variables.push_back(variable);
    values.push_back(0.0);
    occurrences.push_back(occurrence);
}

Occurrence EntryList::occurrenceOf(std::size_t k) const {
    const std::size_t nbLinear = rows.size() - occurrences.size();
    return k < nbLinear ? linearOnly : occurrences[k - nbLinear];
}

SparseRows compress(const EntryList& entries, std::int32_t nbRows, std::int32_t nbVariables) {
    if (entries.rows.size() > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("an instance may have at most 4294967295 coefficients");
    const auto byVariable = orderByKey(entries.variables, {}, nbVariables);
    const auto byRow = orderByKey(entries.rows, byVariable, nbRows);
    SparseRows rows;
    rows.starts = {0};
    rows.starts.reserve(static_cast<std::size_t>(nbRows) + 1);
    RowWriter writer(rows, byRow.size());
    std::size_t k = 0;
    for (std::int32_t i = 0; i < nbRows; ++i) {
        for (; k < byRow.size() && entries.rows[byRow[k]] == i; ++k) {
            const std::uint32_t position = byRow[k];
            writer.add(entries.variables[position], entries.values[position],
                       entries.occurrenceOf(position));
        }
        writer.closeRow();
    }
    return rows;
}

QuadraticRows compress(Array<QuadraticEntry> entries, std::int32_t nbRows) {
    for (QuadraticEntry& each : entries) {
        if (each.first > each.second) std::swap(each.first, each.second);
    }
    const auto place = [](const QuadraticEntry& each) {
        return std::tie(each.row, each.first, each.second);
    };
    std::stable_sort(entries.begin(), entries.end(),
                     [place](const auto& a, const auto& b) { return place(a) < place(b); });
    QuadraticRows rows;
    rows.starts.assign(static_cast<std::size_t>(nbRows) + 1, 0);
    for (auto from = entries.begin(); from != entries.end();) {
        QuadraticEntry merged = *from;
        for (++from; from != entries.end() && place(*from) == place(merged); ++from)
            merged.value += from->value;
        if (merged.value == 0.0) continue;
        ++rows.starts[merged.row + 1];
        rows.first.push_back(merged.first);
        rows.second.push_back(merged.second);
        rows.values.push_back(merged.value);
    }
    accumulate(rows.starts);
    return rows;
}

SparseColumns transpose(const SparseRows& rows, std::int32_t nbRows, std::int32_t nbVariables) {
    SparseColumns columns;
    const std::int64_t nbEntries = rows.starts[nbRows];
    columns.starts.assign(static_cast<std::size_t>(nbVariables) + 1, 0);
    for (std::int64_t k = 0; k < nbEntries; ++k) ++columns.starts[rows.variables[k] + 1];
    accumulate(columns.starts);
    columns.rows.resize(static_cast<std::size_t>(nbEntries));
    columns.positions.resize(static_cast<std::size_t>(nbEntries));
    Array<std::int64_t> next(columns.starts.begin(), columns.starts.end() - 1);
    for (std::int32_t i = 0; i < nbRows; ++i) {
        for (std::int64_t k = rows.starts[i]; k < rows.starts[i + 1]; ++k) {
            const std::int64_t position = next[rows.variables[k]]++;
            columns.rows[position] = i;
            columns.positions[position] = k;
        }
    }
    return columns;
}

}  // namespace norv
