#include "readers/mps_model.hpp"

#include <utility>

#include "hostapi/codes.hpp"

namespace norv {
namespace {

std::int32_t equationTypeOf(MpsRowType type) {
    switch (type) {
        case MpsRowType::equality:
            return hostapi::equation_type::equality;
        case MpsRowType::greater:
            return hostapi::equation_type::greater;
        case MpsRowType::less:
            return hostapi::equation_type::less;
        case MpsRowType::free:
            break;
    }
    return hostapi::equation_type::free;
}

std::int32_t variableTypeOf(const MpsColumn& column) {
    switch (column.kind) {
        case MpsColumnKind::continuous:
            return hostapi::variable_type::continuous;
        case MpsColumnKind::binary:
            return hostapi::variable_type::binary;
        case MpsColumnKind::semiContinuous:
            return hostapi::variable_type::semiContinuous;
        case MpsColumnKind::semiInteger:
            return hostapi::variable_type::semiInteger;
        case MpsColumnKind::integer:
            break;
    }
    return column.lower >= 0.0 && column.upper <= 1.0 ? hostapi::variable_type::binary
                                                      : hostapi::variable_type::integer;
}

/// Adds all rows but the objective's.
/// @return [rows of the file] index in the builder.
std::vector<std::int32_t> addRows(const MpsInstance& instance, ModelBuilder& builder) {
    std::vector<std::int32_t> indices(instance.rows.size(), objectiveRow);
    for (std::size_t i = 0; i < instance.rows.size(); ++i) {
        if (static_cast<std::int32_t>(i) == instance.objective) continue;
        const MpsRow& row = instance.rows[i];
        indices[i] = builder.addRow(equationTypeOf(row.type), row.rightHandSide, row.name);
        if (!row.isRange) continue;
        const Sides sides = sidesOf(row);
        builder.setRange(indices[i], sides.lower, sides.upper);
    }
    return indices;
}

}  // namespace

void buildModel(const MpsInstance& instance, ModelBuilder& builder) {
    const std::vector<std::int32_t> rows = addRows(instance, builder);
    const auto rowOf = [&](std::int32_t row) { return rows[static_cast<std::size_t>(row)]; };
    for (std::size_t j = 0; j < instance.columns.size(); ++j) {
        const MpsColumn& column = instance.columns[j];
        const std::int32_t variable = builder.addVariable(variableTypeOf(column), column.lower,
                                                          column.upper, /*level=*/0.0, column.name);
        for (std::size_t k = instance.columnStarts[j]; k < instance.columnStarts[j + 1]; ++k) {
            const MpsEntry& entry = instance.entries[k];
            builder.addCoefficient(rowOf(entry.row), variable, entry.value);
        }
    }
    for (const MpsQuadraticTerm& term : instance.quadraticTerms) {
        builder.addQuadratic(rowOf(term.row), term.first, term.second, term.coefficient);
    }
    for (const MpsSet& each : instance.sets) {
        SpecialOrderedSet set = {each.type == 1 ? hostapi::variable_type::specialOrdered1
                                                : hostapi::variable_type::specialOrdered2,
                                 std::string(each.name),
                                 {}};
        for (const MpsSetMember& member : each.members) set.members.push_back(member.column);
        builder.addSpecialOrderedSet(std::move(set));
    }
    builder.setSense(instance.maximise ? hostapi::objective_sense::maximise
                                       : hostapi::objective_sense::minimise);
    builder.setObjectiveConstant(instance.objectiveConstant);
}

}  // namespace norv
