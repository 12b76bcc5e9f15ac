#include "norv/model.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "model/model_record.hpp"

namespace norv {

namespace {

std::int32_t checked(const char* what, std::int32_t index, std::int32_t count) {
    if (index >= 0 && index < count) return index;
    throw std::out_of_range(std::string(what) + " " + std::to_string(index) +
                            " is out of range, the instance has " + std::to_string(count));
}

std::int32_t checkedVariable(const Instance& instance, std::int32_t variable) {
    return checked("variable", variable, instance.nbVariables());
}

std::int32_t checkedRow(const Instance& instance, std::int32_t row) {
    return checked("row", row, instance.nbRows());
}

void checkLength(const Instance& instance, std::span<const double> point) {
    if (point.size() != static_cast<std::size_t>(instance.nbVariables()))
        throw std::invalid_argument("a point has one value per variable");
}

}  // namespace

Model::Model(std::unique_ptr<hostapi::ModelRecord> instance) noexcept
    : record_(std::move(instance)) {}
Model::~Model() = default;
Model::Model(Model&&) noexcept = default;
Model& Model::operator=(Model&&) noexcept = default;

hostapi::ModelHandle Model::handle() const noexcept {
    return record_.get();
}

std::int32_t Model::nbRows() const noexcept {
    return record_->instance.nbRows();
}
std::int32_t Model::nbVariables() const noexcept {
    return record_->instance.nbVariables();
}
std::int32_t Model::nbDiscrete() const noexcept {
    return record_->instance.nbDiscrete();
}
std::int64_t Model::nbCoefficients() const noexcept {
    return record_->instance.entries.starts[record_->instance.objective()];
}
bool Model::isQuadratic() const noexcept {
    return !record_->instance.quadratic.values.empty();
}
bool Model::isNonlinear() const noexcept {
    return !record_->instance.lists.empty();
}
bool Model::hasObjective() const noexcept {
    // Occurrences in quadratic entries and instruction lists are entries too.
    return record_->instance.entries.nbEntries(record_->instance.objective()) > 0;
}
bool Model::isSurelyConvex() const {
    return record_->instance.isSurelyConvex();
}
std::int32_t Model::sense() const noexcept {
    return record_->instance.sense;
}
std::int32_t Model::modelType() const noexcept {
    return record_->instance.modelType;
}

std::int32_t Model::variableType(std::int32_t variable) const {
    return record_->instance.variables.types[checkedVariable(record_->instance, variable)];
}
double Model::lower(std::int32_t variable) const {
    return record_->instance.variables.lower[checkedVariable(record_->instance, variable)];
}
double Model::upper(std::int32_t variable) const {
    return record_->instance.variables.upper[checkedVariable(record_->instance, variable)];
}
bool Model::isUsed(std::int32_t variable) const {
    return record_->instance.isUsed(checkedVariable(record_->instance, variable));
}
std::int32_t Model::rowType(std::int32_t row) const {
    return record_->instance.rows.types[checkedRow(record_->instance, row)];
}
std::span<const SpecialOrderedSet> Model::specialOrderedSets() const noexcept {
    return record_->instance.sets;
}
double Model::rightHandSide(std::int32_t row) const {
    return record_->instance.rows.rightHandSides[checkedRow(record_->instance, row)];
}
std::string Model::variableName(std::int32_t variable) const {
    return record_->instance.variableNames.nameOf(checkedVariable(record_->instance, variable));
}
std::string Model::rowName(std::int32_t row) const {
    return record_->instance.rowNames.nameOf(checkedRow(record_->instance, row));
}

std::span<const double> Model::levels() const noexcept {
    return record_->solution.levels;
}
void Model::setLevel(std::int32_t variable, double level) {
    record_->solution.levels[checkedVariable(record_->instance, variable)] = level;
}

void Model::setLevels(std::span<const double> point) {
    checkLength(record_->instance, point);
    std::copy(point.begin(), point.end(), record_->solution.levels.begin());
    const Evaluation objective = evaluateObjective(point);
    record_->solution.headAndTail[hostapi::head_and_tail::objective] =
        objective.nbErrors == 0 ? objective.value : std::numeric_limits<double>::quiet_NaN();
}

void Model::takeResults(const Model& other) {
    if (other.nbVariables() < nbVariables())
        throw std::invalid_argument("results are taken from a model with the same variables");
    const std::size_t nbOwn = record_->solution.levels.size();
    record_->solution = other.record_->solution;
    record_->solution.levels.resize(nbOwn);
}

std::int32_t Model::modelStatus() const noexcept {
    return record_->solution.modelStatus;
}
std::int32_t Model::solveStatus() const noexcept {
    return record_->solution.solveStatus;
}
void Model::setModelStatus(std::int32_t status) noexcept {
    record_->solution.modelStatus = status;
}
void Model::setSolveStatus(std::int32_t status) noexcept {
    record_->solution.solveStatus = status;
}
double Model::headAndTail(std::int32_t index) const {
    return record_->solution.headAndTail[checked("statistic", index, SolutionRecord::nbStatistics)];
}

std::vector<LinearPart> Model::linearPart(std::int32_t row) const {
    const Instance& instance = record_->instance;
    const std::int32_t i = row < 0 ? instance.objective() : checkedRow(instance, row);
    std::vector<LinearPart> terms;
    for (std::int64_t k = instance.entries.starts[i]; k < instance.entries.starts[i + 1]; ++k) {
        if (instance.entries.values[k] != 0.0)
            terms.push_back({instance.entries.variables[k], instance.entries.values[k]});
    }
    return terms;
}

std::vector<QuadraticPart> Model::quadraticPart(std::int32_t row) const {
    const Instance& instance = record_->instance;
    const QuadraticRows& entries = instance.quadratic;
    const std::int32_t i = row < 0 ? instance.objective() : checkedRow(instance, row);
    std::vector<QuadraticPart> terms;
    for (std::int64_t k = entries.starts[i]; k < entries.starts[i + 1]; ++k)
        terms.push_back({entries.first[k], entries.second[k], entries.values[k]});
    return terms;
}

bool Model::hasInstructions(std::int32_t row) const {
    const Instance& instance = record_->instance;
    return instance.listOf(row < 0 ? instance.objective() : checkedRow(instance, row)) != nullptr;
}

double Model::objectiveConstant() const noexcept {
    return record_->instance.objectiveConstant;
}

Evaluation Model::evaluateRow(std::int32_t row, std::span<const double> point,
                              Leniency* leniency) const {
    checkLength(record_->instance, point);
    return record_->instance.evaluate(checkedRow(record_->instance, row), point, leniency);
}

Evaluation Model::evaluateObjective(std::span<const double> point, Leniency* leniency) const {
    checkLength(record_->instance, point);
    Evaluation result = record_->instance.evaluate(record_->instance.objective(), point, leniency);
    result.value += record_->instance.objectiveConstant;
    return result;
}

void Model::setOptionFile(std::string path, std::int32_t number) {
    if (path.size() > static_cast<std::size_t>(hostapi::longestText))
        throw std::length_error("the option file's path has more than 255 characters: " + path);
    record_->optionFileNumber = path.empty() ? 0 : number;
    record_->optionFile = std::move(path);
}

}  // namespace norv
