#include "defvars/option_pairs.hpp"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "host/operations.hpp"

namespace vex {

namespace {

struct Pairs {
    std::vector<std::int32_t> equations;
    std::vector<std::int32_t> variables;  ///< of the same length
};

bool areWithin(const std::vector<std::int32_t>& indices, std::int32_t count) {
    return std::all_of(indices.begin(), indices.end(),
                       [count](std::int32_t k) { return k >= 0 && k < count; });
}

/// @return nothing when the host fails or delivers what the model does not have.
std::optional<Pairs> fetchPairs(ModelHandle nmo, OptionHandle opt, std::int32_t nbAnnounced) {
    const std::int32_t room = std::max(nmoM(nmo), nbAnnounced);
    if (room < 0) return std::nullopt;
    const auto size = static_cast<std::size_t>(room);
    Pairs pairs{std::vector<std::int32_t>(size), std::vector<std::int32_t>(size)};
    std::int32_t nbPairs = nbAnnounced;
    const std::int32_t failure =
        nmoGetVarEquMap(nmo, variableEquationMap, opt, /*flag=*/0, &nbPairs, pairs.equations.data(),
                        pairs.variables.data(), /*errors=*/nullptr);
    if (failure != 0 || nbPairs < 0 || nbPairs > room) return std::nullopt;
    pairs.equations.resize(static_cast<std::size_t>(nbPairs));
    pairs.variables.resize(static_cast<std::size_t>(nbPairs));
    if (!areWithin(pairs.equations, nmoM(nmo)) || !areWithin(pairs.variables, nmoN(nmo)))
        return std::nullopt;
    return pairs;
}

std::string nameOfVariable(ModelHandle nmo, std::int32_t variable) {
    char name[longestText + 1];
    return nmoGetVarNameOne(nmo, variable, name);
}

std::string nameOfEquation(ModelHandle nmo, std::int32_t equation) {
    char name[longestText + 1];
    return nmoGetEquNameOne(nmo, equation, name);
}

/// In a list the pieces are made from left to right, so the host is asked for names in that order.
std::string joined(std::initializer_list<std::string> pieces) {
    std::string text;
    for (const std::string& piece : pieces) text += piece;
    return text;
}

/// Enters the pair into the maps. @return why it cannot be, or an empty text.
std::string enter(ModelHandle nmo, std::int32_t v, std::int32_t e,
                  DefinedVariables& definedVariables, DefiningEquations& definingEquations) {
    if (nmoGetEquTypeOne(nmo, e) != equation_type::equality) {
        return joined({"WARNING: Cannot define variable ", nameOfVariable(nmo, v), " via equation ",
                       nameOfEquation(nmo, e), ": Equation need to be of equality type (=e=)."});
    }
    if (nmoGetVarTypeOne(nmo, v) != variable_type::continuous) {
        return "WARNING: Variable " + nameOfVariable(nmo, v) +
               " cannot be defined variable: Variable type need to be continuous.";
    }
    if (const auto known = definedVariables.find(v); known != definedVariables.end()) {
        return joined({"WARNING: Variable ", nameOfVariable(nmo, v),
                       " already defined by equation ", nameOfEquation(nmo, known->second),
                       ", treating second definition via equation ", nameOfEquation(nmo, e),
                       " as constraint."});
    }
    if (const auto known = definingEquations.find(e); known != definingEquations.end()) {
        return joined({"WARNING: Equation ", nameOfEquation(nmo, e), " already defines variable ",
                       nameOfVariable(nmo, known->second), ", treating ", nameOfVariable(nmo, v),
                       " as normal variable."});
    }
    definedVariables[v] = e;
    definingEquations[e] = v;
    return {};
}

}  // namespace

bool readDefinedVariableOptions(ModelHandle nmo, OptionHandle opt,
                                DefinedVariables& definedVariables,
                                DefiningEquations& definingEquations) {
    if (opt == nullptr) return true;
    std::int32_t nbErrors = 0;  // refused lines of the option file: the user has read of them
    const std::int32_t nbAnnounced = optVarEquMapCount(opt, variableEquationMap, &nbErrors);
    if (nbAnnounced == 0) return true;
    const EnvironmentHandle nev = nmoEnvironment(nmo);
    const std::optional<Pairs> pairs = fetchPairs(nmo, opt, nbAnnounced);
    if (!pairs) {
        nevLogStat(nev, "Error parsing defined variables information.");
        return false;
    }
    for (std::size_t k = 0; k < pairs->variables.size(); ++k) {
        const std::string warning = enter(nmo, pairs->variables[k], pairs->equations[k],
                                          definedVariables, definingEquations);
        if (!warning.empty()) nevLogStat(nev, warning.c_str());
    }
    nevLogStatPChar(nev, ("Options file informs about equations that define variables... " +
                          std::to_string(definedVariables.size()) + " many.\n")
                             .c_str());
    return true;
}

}  // namespace vex
