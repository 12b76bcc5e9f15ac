#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "norv/environment.hpp"
#include "norv/export.hpp"
#include "norv/model.hpp"
#include "norv/special_ordered_set.hpp"

namespace norv {

/// Where the row of a coefficient is asked for: the objective.
constexpr std::int32_t objectiveRow = -1;

/// Collects a model instance entry by entry and compresses it at the end.
///
/// Order of calls: variables and rows first, in any mixture with coefficients of rows and variables
/// that exist already. Appending is O(1) amortised. Duplicate entries are added up; entries that
/// are 0 in the end are dropped. Everything below throws std::invalid_argument, with the item's
/// name or number in the text, for indices out of range, unknown types and numbers that are not
/// numbers; after that the builder is as before the call.
class NORV_API ModelBuilder {
public:
    ModelBuilder();
    ~ModelBuilder();
    ModelBuilder(const ModelBuilder& other);  ///< may go its own way from there
    ModelBuilder& operator=(const ModelBuilder&) = delete;
    ModelBuilder(ModelBuilder&&) noexcept;
    ModelBuilder& operator=(ModelBuilder&&) noexcept;

    /// @param type   hostapi::variable_type.
    /// @param lower, upper  infinite: no bound; lower > upper is an infeasible instance, no error.
    /// @param level  starting value, projected on the bounds by `finish`.
    /// @param name   at most 255 characters; empty: generated.
    /// @return the variable's index.
    std::int32_t addVariable(std::int32_t type, double lower, double upper, double level = 0.0,
                             std::string_view name = {});
    void setVariableType(std::int32_t variable, std::int32_t type);
    void setBounds(std::int32_t variable, double lower, double upper);
    void setLevel(std::int32_t variable, double level);

    /// @param type  hostapi::equation_type.
    /// @return the row's index.
    std::int32_t addRow(std::int32_t type, double rightHandSide, std::string_view name = {});

    /// Turns `row` into lower <= function <= upper. The row itself becomes `>= lower`; a twin with
    /// the same entries, `<= upper`, is appended after all other rows by `finish`, named
    /// "<name>_up" ("e7_up" for the seventh row without a name; "_up" gets further "_" in front
    /// until the name is free). Equal bounds make the row an equality, an infinite one leaves the
    /// other side alone, without a twin; two infinite ones make it free.
    void setRange(std::int32_t row, double lower, double upper);
    /// `addRow` and `setRange` in one.
    std::int32_t addRangeRow(double lower, double upper, std::string_view name = {});

    /// Adds value * variable to the function of `row`, or of the objective (`objectiveRow`).
    void addCoefficient(std::int32_t row, std::int32_t variable, double value);
    /// Adds value * first * second to the function of `row`, or of the objective.
    void addQuadratic(std::int32_t row, std::int32_t first, std::int32_t second, double value);

    /// Adds a nonlinear part, in the host's postfix instruction code, to `row` or the objective.
    /// Fields count variables and pool entries from 1. A second call replaces the first.
    ///
    /// The function of the row is the sum of all that was added. A variable that the list contains
    /// reaches the link through the list alone, so `finish` moves its linear coefficient, if it has
    /// one, to the end of the list.
    /// @param opcodes, fields  of equal length, at least 1.
    void setInstructions(std::int32_t row, std::span<const std::int32_t> opcodes,
                         std::span<const std::int32_t> fields);
    /// Appends a constant to the pool, which all lists share.
    /// @return its entry number for the fields, from 1.
    std::int32_t addPoolConstant(double value);

    /// Adds a special ordered set. Its members keep their types and bounds; the link sees them as
    /// of type 3 or 4.
    /// @param set  members are variables, none twice.
    void addSpecialOrderedSet(SpecialOrderedSet set);
    void removeSpecialOrderedSets() noexcept;

    void setSense(std::int32_t sense);           ///< hostapi::objective_sense; at first minimise
    void setObjectiveConstant(double constant);  ///< at first 0
    void setModelType(std::int32_t type);        ///< the host's code; at first 0, no type stated
    void setWithNames(bool withNames);           ///< whether the link sees names; at first true

    [[nodiscard]] std::int32_t nbRows() const noexcept;
    [[nodiscard]] std::int32_t nbVariables() const noexcept;
    [[nodiscard]] std::int32_t nbSpecialOrderedSets() const noexcept;

    /// Compresses the instance. O(rows + variables + entries), but O(q log q) for the quadratic
    /// ones. The builder is empty afterwards.
    /// @param environment  must outlive the model.
    /// @throws std::invalid_argument when coefficients that were added up exceed double precision,
    /// naming row and variable; the builder is empty then too.
    [[nodiscard]] Model finish(const Environment& environment);

private:
    struct NORV_LOCAL Draft;
    std::unique_ptr<Draft> draft_;
};

}  // namespace norv
