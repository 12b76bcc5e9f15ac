#include "solve/conflict.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"
#include "solve/link_library.hpp"
#include "solve/number_text.hpp"
#include "solve/settings/command_line.hpp"
#include "solve/termination_signals.hpp"

namespace norv {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

bool canBeTaken(const Model& model) {
    if (!model.specialOrderedSets().empty()) return false;
    for (std::int32_t i = 0; i < model.nbRows(); ++i) {
        if (model.hasInstructions(i)) return false;
    }
    return true;
}

/// Which variables occur in the rows.
std::vector<bool> variablesIn(const Model& model, const std::vector<std::int32_t>& rows) {
    std::vector<bool> isUsed(static_cast<std::size_t>(model.nbVariables()), false);
    for (const std::int32_t i : rows) {
        for (const LinearPart& each : model.linearPart(i))
            isUsed[static_cast<std::size_t>(each.variable)] = true;
        for (const QuadraticPart& each : model.quadraticPart(i))
            isUsed[static_cast<std::size_t>(each.first)] =
                isUsed[static_cast<std::size_t>(each.second)] = true;
    }
    return isUsed;
}

void addRow(ModelBuilder& builder, const Model& model, std::int32_t i,
            const std::vector<std::int32_t>& positions) {
    const auto positionOf = [&](std::int32_t j) { return positions[static_cast<std::size_t>(j)]; };
    const std::int32_t row =
        builder.addRow(model.rowType(i), model.rightHandSide(i), model.rowName(i));
    for (const LinearPart& each : model.linearPart(i))
        builder.addCoefficient(row, positionOf(each.variable), each.coefficient);
    for (const QuadraticPart& each : model.quadraticPart(i))
        builder.addQuadratic(row, positionOf(each.first), positionOf(each.second),
                             each.coefficient);
}

class Filter {
public:
    Filter(const Model& source, const SolveSettings& settings, std::chrono::duration<double> budget)
        : model_(source),
          link_(settings.link),
          end_(std::chrono::steady_clock::now() +
               std::chrono::duration_cast<std::chrono::steady_clock::duration>(budget)) {
        environment_.setSystemDirectory(systemDirectory(settings.systemDirectory));
        environment_.setTimeLimit(1.0);
    }

    std::optional<Conflict> find() {
        for (std::int32_t i = 0; i < model_.nbRows(); ++i) {
            if (model_.rowType(i) != hostapi::equation_type::free) found_.rows.push_back(i);
        }
        found_.bounds = boundsOf(found_.rows);
        if (!isInfeasible(found_)) return std::nullopt;
        leaveOutRows();
        found_.bounds = boundsOf(found_.rows);
        leaveOutBounds();
        found_.isMinimal = !isOver();
        return found_;
    }

private:
    [[nodiscard]] bool isOver() const {
        return std::chrono::steady_clock::now() >= end_ || TerminationSignals::haveCome();
    }

    [[nodiscard]] std::vector<Conflict::Bound> boundsOf(
        const std::vector<std::int32_t>& rows) const {
        std::vector<Conflict::Bound> bounds;
        const std::vector<bool> isUsed = variablesIn(model_, rows);
        for (std::int32_t j = 0; j < model_.nbVariables(); ++j) {
            if (!isUsed[static_cast<std::size_t>(j)]) continue;
            if (!std::isinf(model_.lower(j))) bounds.push_back({j, /*isUpper=*/false});
            if (!std::isinf(model_.upper(j))) bounds.push_back({j, /*isUpper=*/true});
        }
        return bounds;
    }

    bool isInfeasible(const Conflict& part) {
        namespace status = hostapi::model_status;
        Model model = conflictModel(model_, part, environment_);
        link_.solve(model, nullptr);
        const bool isProved = model.modelStatus() == status::infeasible ||
                              model.modelStatus() == status::integerInfeasible ||
                              (model.modelStatus() == status::locallyInfeasible &&
                               model.solveStatus() == hostapi::solve_status::normal);
        return isProved;
    }

    /// Leaves out `size` items from each place on, where the rest is still infeasible.
    template <class Items>
    void leaveOut(Items Conflict::*items, std::size_t size) {
        for (std::size_t k = 0; k < (found_.*items).size() && !isOver();) {
            Conflict smaller = found_;
            auto& rest = smaller.*items;
            const auto first = rest.begin() + static_cast<std::ptrdiff_t>(k);
            const auto last = first + static_cast<std::ptrdiff_t>(std::min(size, rest.size() - k));
            rest.erase(first, last);
            if (isInfeasible(smaller)) {
                found_ = std::move(smaller);
            } else {
                k += size;
            }
        }
    }
    void leaveOutRows() {
        for (std::size_t size = std::max<std::size_t>(found_.rows.size() / 2, 1); size > 0;
             size /= 2)
            leaveOut(&Conflict::rows, size);
    }
    void leaveOutBounds() {
        for (std::size_t size = std::max<std::size_t>(found_.bounds.size() / 2, 1); size > 0;
             size /= 2)
            leaveOut(&Conflict::bounds, size);
    }

    const Model& model_;
    LinkLibrary link_;
    Environment environment_;
    std::chrono::steady_clock::time_point end_;
    Conflict found_;
};

}  // namespace

std::optional<Conflict> findConflict(const Model& model, const SolveSettings& settings,
                                     std::chrono::duration<double> budget) {
    if (!canBeTaken(model)) return std::nullopt;
    return Filter(model, settings, budget).find();
}

Model conflictModel(const Model& model, const Conflict& conflict, const Environment& environment) {
    const std::vector<bool> isUsed = variablesIn(model, conflict.rows);
    std::vector<double> lower(isUsed.size(), -infinity);
    std::vector<double> upper(isUsed.size(), infinity);
    for (const Conflict::Bound& each : conflict.bounds) {
        const auto j = static_cast<std::size_t>(each.variable);
        (each.isUpper ? upper[j] : lower[j]) =
            each.isUpper ? model.upper(each.variable) : model.lower(each.variable);
    }
    ModelBuilder builder;
    std::vector<std::int32_t> positions(isUsed.size(), -1);
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        const auto k = static_cast<std::size_t>(j);
        if (!isUsed[k]) continue;
        // Without its bounds a binary variable is an integer one.
        std::int32_t type = model.variableType(j);
        const bool isWide = lower[k] < 0.0 || upper[k] > 1.0;
        if (type == hostapi::variable_type::binary && isWide)
            type = hostapi::variable_type::integer;
        positions[k] =
            builder.addVariable(type, lower[k], upper[k], /*level=*/0.0, model.variableName(j));
    }
    for (const std::int32_t i : conflict.rows) addRow(builder, model, i, positions);
    return builder.finish(environment);
}

std::string conflictText(const Model& model, const Conflict& conflict) {
    constexpr std::size_t mostNames = 20;
    std::vector<std::string> parts;
    for (const std::int32_t i : conflict.rows) parts.push_back("row " + model.rowName(i));
    for (const Conflict::Bound& each : conflict.bounds) {
        const double bound = each.isUpper ? model.upper(each.variable) : model.lower(each.variable);
        parts.push_back(model.variableName(each.variable) + (each.isUpper ? " <= " : " >= ") +
                        numberText(bound, 10));
    }
    std::string text;
    for (std::size_t k = 0; k < std::min(parts.size(), mostNames); ++k)
        text += (k > 0 ? ", " : "") + parts[k];
    if (parts.size() > mostNames)
        text += " and " + std::to_string(parts.size() - mostNames) + " more";
    return text;
}

}  // namespace norv
