#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "hostapi/handles.hpp"
#include "norv/export.hpp"
#include "norv/leniency.hpp"
#include "norv/special_ordered_set.hpp"

namespace norv {

/// The host's own minus and plus infinity are those of the IEEE format: no finite bound, however
/// large, can be mistaken for them. Use std::numeric_limits<double>::infinity().

/// A function's value and what went wrong on the way.
struct Evaluation {
    double value = 0.0;
    std::int32_t nbErrors = 0;  ///< nonzero: `value` means nothing
};

/// coefficient * variable
struct LinearPart {
    std::int32_t variable;
    double coefficient;
};

/// coefficient * first * second; first <= second
struct QuadraticPart {
    std::int32_t first;
    std::int32_t second;
    double coefficient;
};

/// One model instance: the data a `ModelBuilder` collected and the solution record.
///
/// Rows and variables count from 0, in the order in which they were added, whatever index base and
/// row order the link chose for itself.
class NORV_API Model {
public:
    /// An empty instance in the hands of the record's owner.
    explicit Model(std::unique_ptr<hostapi::ModelRecord> instance) noexcept;
    ~Model();
    Model(Model&&) noexcept;
    Model& operator=(Model&&) noexcept;

    /// Never null; valid as long as this object or the one it was moved to.
    [[nodiscard]] hostapi::ModelHandle handle() const noexcept;

    [[nodiscard]] std::int32_t nbRows() const noexcept;  ///< free rows included
    [[nodiscard]] std::int32_t nbVariables() const noexcept;
    [[nodiscard]] std::int32_t nbDiscrete() const noexcept;
    [[nodiscard]] std::int64_t nbCoefficients() const noexcept;  ///< without the objective's
    [[nodiscard]] bool isQuadratic() const noexcept;             ///< any quadratic entry anywhere
    [[nodiscard]] bool isNonlinear() const noexcept;             ///< any instruction list anywhere
    /// Does any variable occur in the objective?
    [[nodiscard]] bool hasObjective() const noexcept;
    /// Are all functions linear or convex quadratic, all variables continuous? "No" says nothing:
    /// of large or nearly singular functions it is not told. Fractions of a second for each.
    [[nodiscard]] bool isSurelyConvex() const;
    [[nodiscard]] std::int32_t sense() const noexcept;
    [[nodiscard]] std::int32_t modelType() const noexcept;

    /// The variable's own type, hostapi::variable_type, whatever sets it is a member of.
    [[nodiscard]] std::int32_t variableType(std::int32_t variable) const;
    [[nodiscard]] double lower(std::int32_t variable) const;
    [[nodiscard]] double upper(std::int32_t variable) const;
    /// Does the variable occur in the objective, or in a row that is not free?
    [[nodiscard]] bool isUsed(std::int32_t variable) const;
    [[nodiscard]] std::span<const SpecialOrderedSet> specialOrderedSets() const noexcept;
    [[nodiscard]] std::int32_t rowType(std::int32_t row) const;
    [[nodiscard]] double rightHandSide(std::int32_t row) const;
    /// The name given, or "x1", "x2", … where there is none.
    [[nodiscard]] std::string variableName(std::int32_t variable) const;
    /// The name given, or "e1", "e2", … where there is none.
    [[nodiscard]] std::string rowName(std::int32_t row) const;

    /// The linear terms of a row, or of the objective for row -1: variables ascending, none twice,
    /// no coefficient is 0. Where the row has instructions, variables in them are not listed.
    [[nodiscard]] std::vector<LinearPart> linearPart(std::int32_t row) const;
    /// The quadratic terms likewise: pairs ascending, none twice.
    [[nodiscard]] std::vector<QuadraticPart> quadraticPart(std::int32_t row) const;
    /// Has the row, or the objective for row -1, a part that is neither linear nor quadratic?
    [[nodiscard]] bool hasInstructions(std::int32_t row) const;
    [[nodiscard]] double objectiveConstant() const noexcept;

    /// [nbVariables] Projected on the bounds at first, later as the link wrote them.
    [[nodiscard]] std::span<const double> levels() const noexcept;
    void setLevel(std::int32_t variable, double level);
    /// All levels at once [nbVariables]; the objective in the statistics becomes that of this
    /// point. O(variables + entries of the objective).
    void setLevels(std::span<const double> point);

    /// Levels, statuses and statistics of a model that begins with this one's variables.
    void takeResults(const Model& other);

    /// Statuses and statistics, 0 until someone sets them; see hostapi/codes.hpp for values.
    [[nodiscard]] std::int32_t modelStatus() const noexcept;
    [[nodiscard]] std::int32_t solveStatus() const noexcept;
    void setModelStatus(std::int32_t status) noexcept;
    void setSolveStatus(std::int32_t status) noexcept;
    [[nodiscard]] double headAndTail(std::int32_t index) const;

    /// The value of a row's function (no right-hand side) at `point` [nbVariables].
    /// @param leniency  of the relations inside; null: they are exact.
    [[nodiscard]] Evaluation evaluateRow(std::int32_t row, std::span<const double> point,
                                         Leniency* leniency = nullptr) const;
    /// The value of the objective, constant included, likewise.
    [[nodiscard]] Evaluation evaluateObjective(std::span<const double> point,
                                               Leniency* leniency = nullptr) const;

    /// The option file that the link is to read; an empty path stands for none.
    /// @param number  1 for the ordinary one; shown in the link's trace.
    /// @throws std::length_error beyond 255 characters.
    void setOptionFile(std::string path, std::int32_t number = 1);

private:
    std::unique_ptr<hostapi::ModelRecord> record_;
};

}  // namespace norv
