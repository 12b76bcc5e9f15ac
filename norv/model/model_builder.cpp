#include "norv/model_builder.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "model/model_record.hpp"

namespace norv {

namespace {

[[noreturn]] void refuse(const std::string& reason) {
    throw std::invalid_argument(reason);
}

void checkNumber(double value, const char* what) {
    if (!std::isfinite(value)) refuse(std::string(what) + " is no finite number");
}

void checkBounds(double lower, double upper) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (std::isnan(lower) || lower == infinity) refuse("a lower bound is a number or -infinity");
    if (std::isnan(upper) || upper == -infinity) refuse("an upper bound is a number or infinity");
}

void checkName(std::string_view name) {
    if (name.size() > static_cast<std::size_t>(hostapi::longestText))
        refuse("a name has more than 255 characters: " + std::string(name));
}

void checkType(std::int32_t type, std::int32_t last, const char* what) {
    if (type < 0 || type > last)
        refuse("there is no " + std::string(what) + " " + std::to_string(type));
}

}  // namespace

struct ModelBuilder::Draft {
    Instance instance;
    Array<double> levels;
    EntryList entries;                              ///< rows from `objectiveRow` on
    Array<QuadraticEntry> quadratic;                ///< likewise
    std::map<std::int32_t, InstructionList> lists;  ///< by row, likewise
    std::map<std::int32_t, double> rangeUppers;     ///< row to the bound that its twin gets

    std::int32_t checkedVariable(std::int32_t variable) const {
        if (variable >= 0 && variable < instance.nbVariables()) return variable;
        refuse("variable " + std::to_string(variable) + " is out of range, there are " +
               std::to_string(instance.nbVariables()));
    }
    /// @param first  0, or `objectiveRow` where the objective is allowed.
    std::int32_t checkedRow(std::int32_t row, std::int32_t first) const {
        if (row >= first && row < instance.nbRows()) return row;
        refuse("row " + std::to_string(row) + " is out of range, there are " +
               std::to_string(instance.nbRows()));
    }

    std::int32_t appendRow(std::int32_t type, double rightHandSide, std::string_view name) {
        instance.rows.types.push_back(type);
        instance.rows.rightHandSides.push_back(rightHandSide);
        instance.rowNames.add(name);
        return instance.nbRows() - 1;
    }

    void appendTwins();
    void copyIntoTwins(const Array<std::int32_t>& twinOf);
    void compressEntries();
    void checkSums() const;
    void installLists();
    void typeMembers();
};

/// Gives every range row its second row.
void ModelBuilder::Draft::appendTwins() {
    if (rangeUppers.empty()) return;
    const std::int32_t nbBefore = instance.nbRows();
    std::set<std::string> names;
    for (std::int32_t i = 0; i < nbBefore; ++i) names.insert(instance.rowNames.nameOf(i));
    Array<std::int32_t> twinOf(static_cast<std::size_t>(nbBefore), -1);
    for (const auto& [row, upper] : rangeUppers) {
        std::string ending = "_up";
        const auto twinName = [&, i = row] {
            const std::size_t room = static_cast<std::size_t>(hostapi::longestText) - ending.size();
            return instance.rowNames.nameOf(i).substr(0, room) + ending;
        };
        while (!names.insert(twinName()).second) ending.insert(0, "_");
        twinOf[row] = appendRow(hostapi::equation_type::less, upper, twinName());
    }
    copyIntoTwins(twinOf);
}

void ModelBuilder::Draft::copyIntoTwins(const Array<std::int32_t>& twinOf) {
    const auto twinAt = [&twinOf](std::int32_t row) { return row < 0 ? -1 : twinOf[row]; };
    const std::size_t nbEntries = entries.rows.size();
    for (std::size_t k = 0; k < nbEntries; ++k) {
        const std::int32_t twin = twinAt(entries.rows[k]);
        if (twin >= 0) entries.addLinear(twin, entries.variables[k], entries.values[k]);
    }
    const std::size_t nbQuadratic = quadratic.size();
    for (std::size_t k = 0; k < nbQuadratic; ++k) {
        QuadraticEntry copy = quadratic[k];
        copy.row = twinAt(copy.row);
        if (copy.row >= 0) quadratic.push_back(copy);
    }
    std::map<std::int32_t, InstructionList> copies;
    for (const auto& [row, list] : lists) {
        if (twinAt(row) >= 0) copies.emplace(twinAt(row), list);
    }
    lists.merge(copies);
}

/// Rows, quadratic rows and columns; the objective becomes the last row.
void ModelBuilder::Draft::compressEntries() {
    const std::int32_t objective = instance.objective();
    std::replace(entries.rows.begin(), entries.rows.end(), objectiveRow, objective);
    for (QuadraticEntry& each : quadratic) each.row = each.row < 0 ? objective : each.row;
    instance.quadratic = compress(std::move(quadratic), objective + 1);
    for (std::int32_t i = 0; i <= objective; ++i) {
        for (auto k = instance.quadratic.starts[i]; k < instance.quadratic.starts[i + 1]; ++k) {
            entries.addOccurrence(i, instance.quadratic.first[k], inQuadraticPart);
            entries.addOccurrence(i, instance.quadratic.second[k], inQuadraticPart);
        }
    }
    for (const auto& [row, list] : lists) {
        const std::int32_t i = row < 0 ? objective : row;
        for (std::size_t k = 0; k < list.opcodes.size(); ++k) {
            if (takesVariable(list.opcodes[k]))
                entries.addOccurrence(i, list.fields[k] - 1, inInstructions);
        }
    }
    instance.entries = compress(entries, objective + 1, instance.nbVariables());
    instance.columns = transpose(instance.entries, instance.nbRows(), instance.nbVariables());
}

/// Coefficients are finite one by one; their sums need not be.
void ModelBuilder::Draft::checkSums() const {
    const auto isInfinite = [](double value) { return !std::isfinite(value); };
    const auto refuseIn = [&](const auto& starts, auto position,
                              const Array<std::int32_t>& variables) {
        const auto after = std::upper_bound(starts.begin(), starts.end(), position);
        const auto row = static_cast<std::int32_t>(after - starts.begin()) - 1;
        refuse("the coefficients of " + instance.variableNames.nameOf(variables[position]) +
               " in " +
               (row == instance.objective() ? "the objective"
                                            : "row " + instance.rowNames.nameOf(row)) +
               " add up beyond double precision");
    };
    const SparseRows& linear = instance.entries;
    const auto found = std::find_if(linear.values.begin(), linear.values.end(), isInfinite);
    if (found != linear.values.end())
        refuseIn(linear.starts, found - linear.values.begin(), linear.variables);
    // Doubled, because that is how the link will see a diagonal entry.
    const QuadraticRows& squares = instance.quadratic;
    const auto square = std::find_if(squares.values.begin(), squares.values.end(),
                                     [&](double value) { return isInfinite(2.0 * value); });
    if (square != squares.values.end())
        refuseIn(squares.starts, square - squares.values.begin(), squares.first);
}

/// A member of several sets is seen as one of the first.
void ModelBuilder::Draft::typeMembers() {
    if (instance.sets.empty()) return;
    instance.typesForLink = instance.variables.types;
    for (auto set = instance.sets.rbegin(); set != instance.sets.rend(); ++set) {
        for (const std::int32_t member : set->members) instance.typesForLink[member] = set->type;
    }
}

/// Numbers the lists by row and moves the linear terms of their variables into them.
void ModelBuilder::Draft::installLists() {
    if (lists.empty()) return;
    const SparseRows& rows = instance.entries;
    instance.listOfRow.assign(static_cast<std::size_t>(instance.nbRows()) + 1, -1);
    for (auto& [row, list] : lists) {
        const std::int32_t i = row < 0 ? instance.objective() : row;
        for (std::int64_t k = rows.starts[i]; k < rows.starts[i + 1]; ++k) {
            if ((rows.occurrences[k] & inInstructions) == 0 || rows.values[k] == 0.0) continue;
            instance.pool.push_back(rows.values[k]);
            appendLinearTerm(list, rows.variables[k], rows.values[k],
                             static_cast<std::int32_t>(instance.pool.size()));
        }
        instance.listOfRow[i] = static_cast<std::int32_t>(instance.lists.size());
        instance.sizeOfLargestList =
            std::max(instance.sizeOfLargestList, static_cast<std::int32_t>(list.size()));
        instance.lists.push_back(std::move(list));
    }
}

ModelBuilder::ModelBuilder() : draft_(std::make_unique<Draft>()) {}
ModelBuilder::~ModelBuilder() = default;
ModelBuilder::ModelBuilder(const ModelBuilder& other)
    : draft_(std::make_unique<Draft>(*other.draft_)) {}
ModelBuilder::ModelBuilder(ModelBuilder&&) noexcept = default;
ModelBuilder& ModelBuilder::operator=(ModelBuilder&&) noexcept = default;

std::int32_t ModelBuilder::addVariable(std::int32_t type, double lower, double upper, double level,
                                       std::string_view name) {
    checkType(type, hostapi::variable_type::semiInteger, "variable type");
    checkBounds(lower, upper);
    checkName(name);
    Instance& instance = draft_->instance;
    instance.variables.types.push_back(type);
    instance.variables.lower.push_back(lower);
    instance.variables.upper.push_back(upper);
    instance.variableNames.add(name);
    draft_->levels.push_back(level);
    return instance.nbVariables() - 1;
}

void ModelBuilder::setVariableType(std::int32_t variable, std::int32_t type) {
    checkType(type, hostapi::variable_type::semiInteger, "variable type");
    draft_->instance.variables.types[draft_->checkedVariable(variable)] = type;
}

void ModelBuilder::setBounds(std::int32_t variable, double lower, double upper) {
    draft_->checkedVariable(variable);
    checkBounds(lower, upper);
    draft_->instance.variables.lower[variable] = lower;
    draft_->instance.variables.upper[variable] = upper;
}

void ModelBuilder::setLevel(std::int32_t variable, double level) {
    draft_->levels[draft_->checkedVariable(variable)] = level;
}

std::int32_t ModelBuilder::addRow(std::int32_t type, double rightHandSide, std::string_view name) {
    checkType(type, hostapi::equation_type::logic, "equation type");
    checkNumber(rightHandSide, "a right-hand side");
    checkName(name);
    return draft_->appendRow(type, rightHandSide, name);
}

void ModelBuilder::setRange(std::int32_t row, double lower, double upper) {
    draft_->checkedRow(row, 0);
    checkBounds(lower, upper);
    const bool hasLower = std::isfinite(lower);
    const bool hasUpper = std::isfinite(upper);
    const bool isEquality = lower == upper;
    draft_->instance.rows.types[row] = isEquality ? hostapi::equation_type::equality
                                       : hasLower ? hostapi::equation_type::greater
                                       : hasUpper ? hostapi::equation_type::less
                                                  : hostapi::equation_type::free;
    draft_->instance.rows.rightHandSides[row] = hasLower ? lower : hasUpper ? upper : 0.0;
    draft_->rangeUppers.erase(row);
    if (hasLower && hasUpper && !isEquality) draft_->rangeUppers[row] = upper;
}

std::int32_t ModelBuilder::addRangeRow(double lower, double upper, std::string_view name) {
    checkBounds(lower, upper);
    const std::int32_t row = addRow(hostapi::equation_type::free, 0.0, name);
    setRange(row, lower, upper);
    return row;
}

void ModelBuilder::addCoefficient(std::int32_t row, std::int32_t variable, double value) {
    draft_->checkedRow(row, objectiveRow);
    draft_->checkedVariable(variable);
    checkNumber(value, "a coefficient");
    draft_->entries.addLinear(row, variable, value);
}

void ModelBuilder::addQuadratic(std::int32_t row, std::int32_t first, std::int32_t second,
                                double value) {
    draft_->checkedRow(row, objectiveRow);
    draft_->checkedVariable(first);
    draft_->checkedVariable(second);
    // Doubled, because that is how the link will see a diagonal entry.
    checkNumber(2.0 * value, "twice a quadratic coefficient");
    draft_->quadratic.push_back({row, first, second, value});
}

void ModelBuilder::setInstructions(std::int32_t row, std::span<const std::int32_t> opcodes,
                                   std::span<const std::int32_t> fields) {
    draft_->checkedRow(row, objectiveRow);
    if (opcodes.empty() || opcodes.size() != fields.size())
        refuse("an instruction list has at least one opcode and one field per opcode");
    const Instance& instance = draft_->instance;
    const ListCheck check = checkInstructions(opcodes, fields, instance.nbVariables(),
                                              static_cast<std::int32_t>(instance.pool.size()));
    if (!check.fault.empty()) {
        const std::string name = row < 0 ? "the objective" : instance.rowNames.nameOf(row);
        refuse(name + ": " + check.fault);
    }
    InstructionList& list = draft_->lists[row];
    list.opcodes.assign(opcodes.begin(), opcodes.end());
    list.fields.assign(fields.begin(), fields.end());
    list.depth = check.depth;
}

std::int32_t ModelBuilder::addPoolConstant(double value) {
    draft_->instance.pool.push_back(value);
    return static_cast<std::int32_t>(draft_->instance.pool.size());
}

void ModelBuilder::addSpecialOrderedSet(SpecialOrderedSet set) {
    const bool isType = set.type == hostapi::variable_type::specialOrdered1 ||
                        set.type == hostapi::variable_type::specialOrdered2;
    if (!isType) refuse("there is no set type " + std::to_string(set.type));
    std::vector<std::int32_t> sorted = set.members;
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t k = 0; k < sorted.size(); ++k) {
        draft_->checkedVariable(sorted[k]);
        if (k > 0 && sorted[k] == sorted[k - 1])
            refuse("special ordered set \"" + set.name + "\" has variable " +
                   std::to_string(sorted[k]) + " twice");
    }
    draft_->instance.sets.push_back(std::move(set));
}

void ModelBuilder::removeSpecialOrderedSets() noexcept {
    draft_->instance.sets.clear();
}

std::int32_t ModelBuilder::nbSpecialOrderedSets() const noexcept {
    return static_cast<std::int32_t>(draft_->instance.sets.size());
}

void ModelBuilder::setSense(std::int32_t sense) {
    draft_->instance.sense = sense;
}

void ModelBuilder::setObjectiveConstant(double constant) {
    checkNumber(constant, "an objective constant");
    draft_->instance.objectiveConstant = constant;
}

void ModelBuilder::setModelType(std::int32_t type) {
    draft_->instance.modelType = type;
}

void ModelBuilder::setWithNames(bool withNames) {
    draft_->instance.hasNames = withNames;
}

std::int32_t ModelBuilder::nbRows() const noexcept {
    return draft_->instance.nbRows();
}

std::int32_t ModelBuilder::nbVariables() const noexcept {
    return draft_->instance.nbVariables();
}

Model ModelBuilder::finish(const Environment& environment) {
    const std::unique_ptr<Draft> done = std::exchange(draft_, std::make_unique<Draft>());
    done->appendTwins();
    done->compressEntries();
    done->checkSums();
    done->installLists();
    done->typeMembers();
    Instance& instance = done->instance;
    for (std::int32_t j = 0; j < instance.nbVariables(); ++j) {
        const Variables& variables = instance.variables;
        done->levels[j] =
            project(done->levels[j], variables.types[j], variables.lower[j], variables.upper[j]);
    }
    auto record = std::make_unique<hostapi::ModelRecord>();
    record->instance = std::move(instance);
    record->solution.levels = std::move(done->levels);
    record->environment = environment.handle();
    return Model(std::move(record));
}

}  // namespace norv
