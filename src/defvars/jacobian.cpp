#include "defvars/jacobian.hpp"

#include <cmath>

#include "host/operations.hpp"

namespace vex {

namespace {

/// No equation is solved for a variable whose coefficient is not larger than this.
constexpr double negligible = 1e-100;

std::size_t nbEntriesOf(ModelHandle nmo, std::int32_t i) {
    std::int32_t nbEntries = 0;
    std::int32_t nbQuadratic = 0;
    std::int32_t nbNonlinear = 0;
    nmoGetRowStat(nmo, i, &nbEntries, &nbQuadratic, &nbNonlinear);
    return static_cast<std::size_t>(nbEntries);
}

}  // namespace

Jacobian::Jacobian(ModelHandle nmo, const DefinedVariables& known)
    : equality_(static_cast<std::size_t>(nmoM(nmo))),
      rowStarts_(1, 0),
      columnStarts_(static_cast<std::size_t>(nmoN(nmo)) + 1) {
    std::vector<bool> isRead(equality_.size(), false);
    for (const auto& [variable, row] : known) isRead[static_cast<std::size_t>(row)] = true;
    std::size_t nbEntries = 0;
    for (std::size_t at = 0; at < equality_.size(); ++at) {
        const auto i = static_cast<std::int32_t>(at);
        equality_[at] = nmoGetEquTypeOne(nmo, i) == equation_type::equality;
        isRead[at] = isRead[at] || equality_[at];
        if (isRead[at]) nbEntries += nbEntriesOf(nmo, i);
    }
    rowEntries_.reserve(nbEntries);
    rowStarts_.reserve(equality_.size() + 1);
    for (std::size_t at = 0; at < equality_.size(); ++at) {
        if (isRead[at]) readRow(nmo, static_cast<std::int32_t>(at));
        rowStarts_.push_back(rowEntries_.size());
    }
    transpose();
}

void Jacobian::readRow(ModelHandle nmo, std::int32_t i) {
    void* cursor = nullptr;
    do {
        double value = 0.0;
        std::int32_t variable = -1;
        std::int32_t nonlinear = 0;
        nmoGetRowJacInfoOne(nmo, i, &cursor, &value, &variable, &nonlinear);
        if (variable < 0) return;
        const bool isLinear = nonlinear == 0;
        rowEntries_.push_back({variable, isLinear, isLinear && std::abs(value) > negligible});
    } while (cursor != nullptr);
}

void Jacobian::transpose() {
    // A column's start is kept one place too far and counts up while the column fills, until it is
    // the start of the next one.
    Starts& starts = columnStarts_;
    starts.assign(starts.size() + 1, 0);
    for (const Entry& entry : rowEntries_) ++starts[static_cast<std::size_t>(entry.index) + 2];
    for (std::size_t j = 2; j < starts.size(); ++j) starts[j] += starts[j - 1];
    columnEntries_.resize(rowEntries_.size());
    for (std::int32_t i = 0; i < nbRows(); ++i) {
        for (const auto& [variable, isLinear, canBeSolvedFor] : row(i)) {
            std::size_t& place = starts[static_cast<std::size_t>(variable) + 1];
            columnEntries_[place++] = {i, isLinear, canBeSolvedFor};
        }
    }
    starts.pop_back();
}

}  // namespace vex
