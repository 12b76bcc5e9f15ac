#pragma once

#include <memory>
#include <span>
#include <vector>

#include "evaluate/propagator.hpp"
#include "global/factorable_model.hpp"
#include "global/switches.hpp"

namespace engine {

/// A row that holds in a box: form <= 0.
using Cut = LinearForm;

/// The linear relaxation of a factorable model over the box that a propagator knows.
///
/// Its rows: those of the model; a fixed number for each definition, so that a basis of one box
/// starts another; then cuts. Every row holds at every point of the box that satisfies the
/// definitions.
class Relaxation {
public:
    /// Both outlive it.
    Relaxation(const FactorableModel& factorable, const ClosedModel& model,
               const Propagator& propagator);

    /// Takes the propagator's ranges over and builds the rows anew. O(size of the model).
    /// @return false: some column has no value left.
    bool refresh();
    void addCut(const Cut& cut);
    /// Adds lines and planes that `levels` [nbColumns] are beyond. @return how many.
    std::size_t separate(std::span<const double> levels, std::vector<Cut>& cuts) const;
    /// Adds the lines nearest to all curves at `levels`, from both sides.
    void supportAt(std::span<const double> levels, std::vector<Cut>& cuts) const;
    /// The columns at a point whose expressions have `values` [nbExpressions].
    [[nodiscard]] std::vector<double> levelsAt(const std::vector<Value>& values) const;
    /// |result - function of the arguments| of a definition at `levels`, relative above 1; 0 where
    /// nothing is known of it.
    [[nodiscard]] double missOf(const Definition& definition, std::span<const double> levels) const;
    [[nodiscard]] const LinearModel& rows() const { return rows_; }
    [[nodiscard]] const FactorableModel& factorable() const { return factorable_; }
    /// Rows that are there in every box: the model's and the definitions'.
    [[nodiscard]] std::size_t nbFixedRows() const { return nbFixedRows_; }
    /// [first, last) rows of a definition.
    [[nodiscard]] std::pair<std::size_t, std::size_t> rowsOf(std::size_t definition) const {
        return {firstRow_[definition], firstRow_[definition + 1]};
    }
    /// Whether a column may be limited from outside: it stands for an expression whose value is a
    /// number at every point of the box. A limit says that there is one, and would cut off points
    /// at which it is undefined without harm, in a branch that is not taken.
    [[nodiscard]] bool canLimit(std::int32_t column) const {
        const ExpressionIndex e = factorable_.origin[static_cast<std::size_t>(column)].expression;
        return e != noExpression && isKnown(e);
    }
    [[nodiscard]] Range rangeOf(std::int32_t column) const {
        const auto j = static_cast<std::size_t>(column);
        return {rows_.lower[j], rows_.upper[j], false};
    }

private:
    /// The function of the arguments' levels.
    static double valueAt(const Definition& definition, std::span<const double> levels);
    [[nodiscard]] bool isKnown(ExpressionIndex e) const;
    [[nodiscard]] bool isActive(const Definition& definition) const;
    void takeRanges();
    [[nodiscard]] Range imageOf(const Definition& definition) const;
    void addRows(const Definition& definition);
    void addCurveRows(const Definition& definition);
    void addProductRows(const Definition& definition);
    void addChoiceRows(const Definition& definition);
    void addAtMostRows(const Definition& definition);
    void addIsZeroRows(const Definition& definition);
    void addLargestRows(const Definition& definition);
    void addCut(const Definition& definition, const Line& line, bool isBelow,
                std::vector<Cut>& cuts) const;
    /// slope * argument + offset, as far as the argument's switch allows no more.
    [[nodiscard]] LinearForm formOf(const Definition& definition, const Line& line,
                                    bool isBelow) const;
    void addLine(const Definition& definition, const Line& line, bool isBelow);
    void addFreeRow(std::int32_t column);
    /// lower <= form + factor * column <= upper; a free row where a number is beyond use.
    void addRow(const LinearForm& form, std::int32_t column, double factor, double lower,
                double upper);

    const FactorableModel& factorable_;
    const ClosedModel& model_;
    const Propagator& propagator_;
    std::vector<Switch> switch_;  ///< [nbColumns]
    LinearModel rows_;
    std::size_t nbModelRows_;
    std::size_t nbModelEntries_;
    std::size_t nbFixedRows_ = 0;
    std::vector<std::size_t> firstRow_;  ///< [nbDefinitions + 1]
};

/// The value of `form` at `levels`.
double valueOf(const LinearForm& form, std::span<const double> levels);

}  // namespace engine
