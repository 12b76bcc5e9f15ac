#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "hostapi/codes.hpp"
#include "model/array.hpp"
#include "model/name_table.hpp"
#include "model/sparse.hpp"
#include "nonlinear/evaluator.hpp"
#include "norv/model.hpp"
#include "norv/special_ordered_set.hpp"

namespace norv {

struct Variables {
    Array<std::int32_t> types;
    Array<double> lower;
    Array<double> upper;
};

struct Rows {
    Array<std::int32_t> types;
    Array<double> rightHandSides;
};

/// A model instance, read-only once it is built. Indices count from 0; the objective is row
/// `nbRows` of the lists that say so.
struct Instance {
    Variables variables;
    Rows rows;
    NameTable variableNames{'x'};
    NameTable rowNames{'e'};
    bool hasNames = true;  ///< whether the link is told that there are names

    SparseRows entries;       ///< with the objective
    SparseColumns columns;    ///< without the objective
    QuadraticRows quadratic;  ///< with the objective

    Array<SpecialOrderedSet> sets;
    Array<std::int32_t> typesForLink;  ///< [nbVariables] with 3 or 4 for members; or empty: no sets

    Array<InstructionList> lists;
    Array<std::int32_t> listOfRow;  ///< [nbRows + 1] position in `lists` or -1; or empty
    std::int32_t sizeOfLargestList = 0;
    Array<double> pool;

    std::int32_t sense = hostapi::objective_sense::minimise;
    double objectiveConstant = 0.0;
    std::int32_t modelType = 0;

    [[nodiscard]] std::int32_t nbRows() const noexcept {
        return static_cast<std::int32_t>(rows.types.size());
    }
    [[nodiscard]] std::int32_t nbVariables() const noexcept {
        return static_cast<std::int32_t>(variables.types.size());
    }
    /// Variables that are not continuous to the link.
    [[nodiscard]] std::int32_t nbDiscrete() const noexcept;
    [[nodiscard]] std::int32_t typeForLink(std::int32_t variable) const noexcept {
        return typesForLink.empty() ? variables.types[variable] : typesForLink[variable];
    }
    [[nodiscard]] std::int32_t objective() const noexcept { return nbRows(); }

    /// Null when the row has none. @param row  0 to nbRows, the last one for the objective.
    [[nodiscard]] const InstructionList* listOf(std::int32_t row) const noexcept;
    /// hostapi::function_order. @param row  as for `listOf`.
    [[nodiscard]] std::int32_t orderOf(std::int32_t row) const noexcept;

    /// Linear or convex quadratic, continuous. "No" says nothing: the proof may have been too hard.
    /// Fractions of a second for each quadratic function.
    [[nodiscard]] bool isSurelyConvex() const;
    /// Does the variable occur in the objective, or in a row that is not free?
    [[nodiscard]] bool isUsed(std::int32_t variable) const noexcept;

    /// The function of a row, or the objective without its constant, at `point` [nbVariables].
    /// One thread at a time.
    /// @param leniency  null: relations are exact.
    [[nodiscard]] Evaluation evaluate(std::int32_t row, std::span<const double> point,
                                      Leniency* leniency = nullptr) const;

    mutable Evaluator evaluator;  ///< scratch of `evaluate`
};

/// The nearest value in the variable's domain, apart from integrality; 0 for not-a-number first.
[[nodiscard]] double project(double level, std::int32_t type, double lower, double upper) noexcept;

}  // namespace norv
