#include "defvars/recomputation.hpp"

#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "host/operations.hpp"

namespace vex {

namespace {

/// One recomputation of all levels, depth first.
class Recomputation {
public:
    /// @param writesLevels  also to the model object.
    Recomputation(ModelHandle model, const DefinedVariables& defined, std::span<double> allLevels,
                  bool writesLevels)
        : nmo_(model),
          definedVariables_(defined),
          levels_(allLevels),
          writes_(writesLevels),
          states_(levels_.size(), State::open) {}

    bool run() {
        for (const auto& [variable, row] : definedVariables_) {
            const bool isDone = states_[index(variable)] == State::done;
            if (!isDone && !evaluateDefinedVariable(variable, row)) return false;
        }
        return true;
    }

private:
    /// Recomputes `variable` and, before it, the defined variables that its row needs.
    bool evaluateDefinedVariable(std::int32_t variable, std::int32_t row);

    enum class State : std::uint8_t { open, inProgress, done };

    /// A variable whose row is being looked through.
    struct Visit {
        std::int32_t variable;
        std::int32_t row;
        double coefficient;    ///< 0 unless the variable occurs in the row
        std::size_t first;     ///< of the row's variables in `pending`
        std::size_t nbPassed;  ///< of them
    };

    static std::size_t index(std::int32_t k) { return static_cast<std::size_t>(k); }
    void begin(std::int32_t variable, std::int32_t row);
    bool finish(const Visit& visit);

    ModelHandle nmo_;
    const DefinedVariables& definedVariables_;
    std::span<double> levels_;  ///< [nbVariables] recomputed ones replaced
    bool writes_;
    std::vector<State> states_;          ///< [nbVariables]
    std::vector<Visit> visits_;          ///< each one waits for the next
    std::vector<std::int32_t> pending_;  ///< variables of the rows of `visits`, one after another
    std::vector<double> values_;         ///< scratch: coefficients of one row
};

bool Recomputation::evaluateDefinedVariable(std::int32_t variable, std::int32_t row) {
    begin(variable, row);
    while (!visits_.empty()) {
        Visit& visit = visits_.back();
        if (visit.first + visit.nbPassed == pending_.size()) {
            if (!finish(visit)) return false;
            pending_.resize(visit.first);
            visits_.pop_back();
            continue;
        }
        const std::int32_t needed = pending_[visit.first + visit.nbPassed++];
        if (needed == visit.variable || states_[index(needed)] == State::done) continue;
        const auto definition = definedVariables_.find(needed);
        if (definition == definedVariables_.end()) continue;
        if (states_[index(needed)] == State::inProgress) return false;
        begin(needed, definition->second);
    }
    return true;
}

void Recomputation::begin(std::int32_t variable, std::int32_t row) {
    states_[index(variable)] = State::inProgress;
    std::int32_t nbEntries = 0;
    std::int32_t nbQuadratic = 0;
    std::int32_t nbNonlinear = 0;
    nmoGetRowStat(nmo_, row, &nbEntries, &nbQuadratic, &nbNonlinear);
    const std::size_t first = pending_.size();
    pending_.resize(first + index(nbEntries));
    values_.resize(index(nbEntries));
    nmoGetRowSparse(nmo_, row, pending_.data() + first, values_.data(), /*nonlinear=*/nullptr,
                    &nbEntries, &nbNonlinear);
    pending_.resize(first + index(nbEntries));
    double coefficient = 0.0;
    for (std::size_t k = 0; k < index(nbEntries); ++k) {
        if (pending_[first + k] == variable) coefficient = values_[k];
    }
    visits_.push_back({variable, row, coefficient, first, /*nbPassed=*/0});
}

/// Solves the row for the variable, with all others at their levels.
bool Recomputation::finish(const Visit& visit) {
    double& level = levels_[index(visit.variable)];
    level = 0.0;
    double othersValue = 0.0;
    std::int32_t nbErrors = 0;
    nmoEvalFunc(nmo_, visit.row, levels_.data(), &othersValue, &nbErrors);
    if (nbErrors != 0) return false;
    level = (nmoGetRhsOne(nmo_, visit.row) - othersValue) / visit.coefficient;
    if (!std::isfinite(level)) return false;
    if (writes_) nmoSetVarLOne(nmo_, visit.variable, level);
    states_[index(visit.variable)] = State::done;
    return true;
}

}  // namespace

bool evaluateDefinedVariables(ModelHandle nmo, const DefinedVariables& definedVariables) {
    if (definedVariables.empty()) return true;
    std::vector<double> levels(static_cast<std::size_t>(nmoN(nmo)));
    nmoGetVarL(nmo, levels.data());
    return Recomputation(nmo, definedVariables, levels, /*writesLevels=*/true).run();
}

bool computeDefinedVariables(ModelHandle nmo, const DefinedVariables& definedVariables,
                             std::span<double> levels) {
    return Recomputation(nmo, definedVariables, levels, /*writesLevels=*/false).run();
}

}  // namespace vex
