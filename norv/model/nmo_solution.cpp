// Levels, statuses and statistics that the link writes back.

#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

#include "model/nmo_operations.hpp"
#include "norv/options.hpp"

using hostapi::ModelHandle;
using hostapi::ModelRecord;
using norv::guarded;
using norv::guardedVoid;
using norv::noIndex;
using norv::noValue;

namespace {

double& statistic(ModelRecord& model, std::int32_t index) {
    if (index < 0 || index >= norv::SolutionRecord::nbStatistics)
        throw std::out_of_range("there is no statistic " + std::to_string(index));
    return model.solution.headAndTail[index];
}

/// Finds rows or variables by name.
class NameIndex {
public:
    NameIndex(const norv::NameTable& names, const char* what) : kind_(what) {
        const auto nbNames = static_cast<std::int32_t>(names.size());
        for (std::int32_t k = 0; k < nbNames; ++k) {
            const auto [place, isNew] = indices_.emplace(names.nameOf(k), k);
            if (!isNew) place->second = ambiguous;
        }
    }

    /// @throws std::invalid_argument when the name stands for none or for several.
    [[nodiscard]] std::int32_t find(const std::string& name) const {
        const auto found = indices_.find(name);
        if (found == indices_.end())
            throw std::invalid_argument("the model has no " + kind_ + " \"" + name + "\"");
        if (found->second == ambiguous)
            throw std::invalid_argument("the model has several " + kind_ + "s \"" + name + "\"");
        return found->second;
    }

private:
    static constexpr std::int32_t ambiguous = -1;
    std::string kind_;
    std::unordered_map<std::string, std::int32_t> indices_;
};

/// Resolves the pairs into the arrays, writes every failure to the log.
/// @return number of pairs that could not be resolved.
std::int32_t resolvePairs(const ModelRecord& model, hostapi::OptionHandle options,
                          std::int32_t* nbPairs, std::int32_t* rows, std::int32_t* variables) {
    const auto& pairs = norv::definedVariablePairs(options);
    const NameIndex rowIndex(model.instance.rowNames, "equation");
    const NameIndex variableIndex(model.instance.variableNames, "variable");
    std::int32_t nbResolved = 0;
    std::int32_t nbFailed = 0;
    for (const norv::DefinedVariablePair& pair : pairs) {
        try {
            const std::int32_t i = rowIndex.find(pair.equation);
            const std::int32_t j = variableIndex.find(pair.variable);
            const std::int32_t index = model.indexOfRow(i);
            if (index - model.view.indexBase >= model.nbVisibleRows()) {
                throw std::invalid_argument("equation \"" + pair.equation +
                                            "\" is a free row and defines nothing");
            }
            if (rows != nullptr) rows[nbResolved] = index;
            if (variables != nullptr) variables[nbResolved] = j + model.view.indexBase;
            ++nbResolved;
        } catch (const std::invalid_argument& failure) {
            ++nbFailed;
            if (model.environment != nullptr)
                norv::writeLogAndStatus(*model.environment,
                                        pair.place + ": defvar: " + failure.what() + ".\n");
        }
    }
    norv::deliver(nbPairs, nbResolved);
    return nbFailed;
}

}  // namespace

void nmoSetVarLOne(ModelHandle nmo, std::int32_t variable, double level) {
    guardedVoid(__func__, nmo, [variable, level](ModelRecord& m) {
        m.solution.levels[m.variableAt(variable)] = level;
    });
}

void nmoSetHeadnTail(ModelHandle nmo, std::int32_t index, double value) {
    guardedVoid(__func__, nmo, [index, value](ModelRecord& m) { statistic(m, index) = value; });
}

double nmoGetHeadnTail(ModelHandle nmo, std::int32_t index) {
    return guarded(__func__, nmo, noValue, [index](ModelRecord& m) { return statistic(m, index); });
}

void nmoModelStatSet(ModelHandle nmo, std::int32_t status) {
    guardedVoid(__func__, nmo, [status](ModelRecord& m) { m.solution.modelStatus = status; });
}

void nmoSolveStatSet(ModelHandle nmo, std::int32_t status) {
    guardedVoid(__func__, nmo, [status](ModelRecord& m) { m.solution.solveStatus = status; });
}

std::int32_t nmoModelStat(ModelHandle nmo) {
    return guarded(__func__, nmo, noIndex, [](ModelRecord& m) { return m.solution.modelStatus; });
}

void nmoCompleteSolution(ModelHandle nmo) {
    guardedVoid(__func__, nmo, [](ModelRecord& m) {
        const norv::Evaluation objective =
            m.instance.evaluate(m.instance.objective(), m.solution.levels);
        m.solution.headAndTail[hostapi::head_and_tail::objective] =
            objective.nbErrors == 0 ? objective.value + m.instance.objectiveConstant : noValue;
    });
}

std::int32_t nmoGetVarEquMap(ModelHandle nmo, std::int32_t mapType, hostapi::OptionHandle options,
                             std::int32_t /*flag*/, std::int32_t* nbPairs, std::int32_t* rows,
                             std::int32_t* variables, std::int32_t* errors) {
    norv::deliver(nbPairs, 0);
    norv::deliver(errors, 0);
    return guarded(__func__, nmo, 1, [=](ModelRecord& m) {
        if (mapType != hostapi::variableEquationMap || options == nullptr) return 0;
        const std::int32_t nbFailed = resolvePairs(m, options, nbPairs, rows, variables);
        norv::deliver(errors, nbFailed);
        return nbFailed == 0 ? 0 : 1;
    });
}
