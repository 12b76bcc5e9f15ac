#include "readers/nl_model.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "hostapi/codes.hpp"
#include "nonlinear/emitter.hpp"
#include "readers/read_error.hpp"

namespace norv {

namespace {

constexpr std::int64_t mostInstructions = 100'000'000;

/// May `constant` move to the other side of the row without making its sides larger? Rows hold
/// within a tolerance relative to their sides, so the square of a distance to a far point, written
/// out, would be allowed to miss by more than the row says.
bool fitsIntoSides(double constant, const NlRow& row) {
    return std::ranges::all_of(std::array{row.lower, row.upper}, [constant](double side) {
        return std::isinf(side) || std::fabs(side - constant) <= std::fmax(1.0, std::fabs(side));
    });
}

/// The linear terms of the rows, by row.
class RowTerms {
public:
    explicit RowTerms(const NlInstance& instance) : starts_(instance.rows.size() + 1, 0) {
        for (const NlEntry& each : instance.entries) ++starts_[static_cast<std::size_t>(each.row)];
        std::size_t end = 0;
        for (std::size_t& each : starts_) each = end += each;
        terms_.resize(instance.entries.size());
        // From the back, so that each start moves from its row's end to its beginning.
        for (std::size_t k = instance.entries.size(); k-- > 0;) {
            const NlEntry& entry = instance.entries[k];
            terms_[--starts_[static_cast<std::size_t>(entry.row)]] = {entry.variable,
                                                                      entry.coefficient};
        }
    }

    [[nodiscard]] std::span<const LinearTerm> of(std::size_t row) const {
        return std::span(terms_).subspan(starts_[row], starts_[row + 1] - starts_[row]);
    }

private:
    std::vector<std::size_t> starts_;
    std::vector<LinearTerm> terms_;
};

class ModelMaker {
public:
    ModelMaker(const NlInstance& source, ModelBuilder& target)
        : instance_(source),
          builder_(target),
          pool_([&target](double value) { return target.addPoolConstant(value); }),
          emitter_(source.expressions, pool_),
          lastUser_(static_cast<std::size_t>(source.expressions.nbVariables()), unused) {}

    void make();

private:
    static constexpr std::int32_t unused = -2;

    void addVariables();
    void addRows();
    void addLogicalRows();
    void addObjective();
    [[nodiscard]] std::optional<QuadraticForm> quadraticForm(NodeIndex expression,
                                                             std::int32_t row);
    void addQuadraticForm(std::int32_t row, const QuadraticForm& form);
    void addTerms(std::int32_t row, std::span<const LinearTerm> terms);
    void addInstructions(std::int32_t row, NodeIndex expression, std::span<const LinearTerm> terms);
    void countInstructions(NodeIndex expression, std::int32_t row);

    const NlInstance& instance_;
    ModelBuilder& builder_;
    ConstantPool pool_;
    Emitter emitter_;
    std::vector<std::int32_t> lastUser_;  ///< by variable: the row whose list last named it
    std::int64_t nbInstructions_ = 0;
};

void ModelMaker::make() {
    addVariables();
    addRows();
    addLogicalRows();
    addObjective();
    for (const SpecialOrderedSet& each : instance_.sets) builder_.addSpecialOrderedSet(each);
    builder_.setWithNames(!instance_.names.rows.empty() || !instance_.names.variables.empty());
}

void ModelMaker::addVariables() {
    for (std::size_t j = 0; j < instance_.variables.size(); ++j) {
        const NlVariable& variable = instance_.variables[j];
        const bool isInteger = instance_.header.isInteger(static_cast<std::int32_t>(j));
        const bool isBinary = isInteger && variable.lower >= 0.0 && variable.upper <= 1.0;
        const std::int32_t type = isBinary    ? hostapi::variable_type::binary
                                  : isInteger ? hostapi::variable_type::integer
                                              : hostapi::variable_type::continuous;
        const auto& names = instance_.names.variables;
        builder_.addVariable(type, variable.lower, variable.upper, variable.level,
                             j < names.size() ? names[j] : std::string());
    }
    if (!instance_.hasValueVariables) return;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (std::size_t k = 0; k < instance_.piecewise.size(); ++k)
        builder_.addVariable(hostapi::variable_type::continuous, -infinity, infinity);
}

void ModelMaker::addRows() {
    const RowTerms rowTerms(instance_);
    const auto& names = instance_.names.rows;
    for (std::size_t i = 0; i < instance_.rows.size(); ++i) {
        const NlRow& row = instance_.rows[i];
        const auto index = static_cast<std::int32_t>(i);
        auto form = quadraticForm(row.expression, index);
        if (form && !form->quadratic.empty() && !fitsIntoSides(form->constant, row)) form.reset();
        const double constant = form ? form->constant : 0.0;
        builder_.addRangeRow(row.lower - constant, row.upper - constant,
                             i < names.size() ? names[i] : std::string());
        if (form) {
            addQuadraticForm(index, *form);
            addTerms(index, rowTerms.of(i));
        } else {
            addInstructions(index, row.expression, rowTerms.of(i));
        }
    }
}

void ModelMaker::addLogicalRows() {
    const auto& names = instance_.names.rows;
    for (const NodeIndex expression : instance_.logicalRows) {
        const auto i = static_cast<std::size_t>(builder_.nbRows());
        const std::int32_t row = builder_.addRow(hostapi::equation_type::logic, 1.0,
                                                 i < names.size() ? names[i] : std::string());
        countInstructions(expression, row);
        addInstructions(row, expression, {});
    }
}

void ModelMaker::addObjective() {
    if (instance_.objective < 0) return;
    const auto& objective = instance_.objectives[static_cast<std::size_t>(instance_.objective)];
    builder_.setSense(objective.maximise ? hostapi::objective_sense::maximise
                                         : hostapi::objective_sense::minimise);
    const auto form = quadraticForm(objective.expression, objectiveRow);
    if (form) {
        builder_.setObjectiveConstant(form->constant);
        addQuadraticForm(objectiveRow, *form);
        addTerms(objectiveRow, objective.terms);
    } else {
        addInstructions(objectiveRow, objective.expression, objective.terms);
    }
}

std::optional<QuadraticForm> ModelMaker::quadraticForm(NodeIndex expression, std::int32_t row) {
    if (expression == noNode) return QuadraticForm();
    countInstructions(expression, row);
    return findQuadraticForm(instance_.expressions, expression);
}

void ModelMaker::addQuadraticForm(std::int32_t row, const QuadraticForm& form) {
    addTerms(row, form.linear);
    for (const QuadraticTerm& each : form.quadratic)
        builder_.addQuadratic(row, each.first, each.second, each.coefficient);
}

void ModelMaker::addTerms(std::int32_t row, std::span<const LinearTerm> terms) {
    for (const LinearTerm& each : terms)
        builder_.addCoefficient(row, each.variable, each.coefficient);
}

/// Linear terms of variables that the list names go into the list, the others beside it.
void ModelMaker::addInstructions(std::int32_t row, NodeIndex expression,
                                 std::span<const LinearTerm> terms) {
    InstructionList list = emitter_.emit(expression);
    for (std::size_t k = 0; k < list.size(); ++k) {
        if (takesVariable(list.opcodes[k]))
            lastUser_[static_cast<std::size_t>(list.fields[k] - 1)] = row;
    }
    for (const LinearTerm& each : terms) {
        if (lastUser_[static_cast<std::size_t>(each.variable)] != row) {
            builder_.addCoefficient(row, each.variable, each.coefficient);
        } else if (each.coefficient != 0.0) {
            const bool isUnit = std::fabs(each.coefficient) == 1.0;
            appendLinearTerm(list, each.variable, each.coefficient,
                             isUnit ? 0 : pool_.entryOf(each.coefficient));
        }
    }
    builder_.setInstructions(row, list.opcodes, list.fields);
}

void ModelMaker::countInstructions(NodeIndex expression, std::int32_t row) {
    nbInstructions_ += emitter_.sizeBound(expression);
    if (nbInstructions_ <= mostInstructions) return;
    const std::string user =
        row == objectiveRow ? "the objective" : "row " + instance_.rowName(row);
    throw ReadError(instance_.path + ": " + user +
                    ": found common expressions that take more than " +
                    std::to_string(mostInstructions) +
                    " instructions when written out for each use, expected fewer");
}

}  // namespace

void buildModel(const NlInstance& instance, ModelBuilder& builder) {
    ModelMaker(instance, builder).make();
}

}  // namespace norv
