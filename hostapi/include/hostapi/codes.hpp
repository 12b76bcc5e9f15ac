#pragma once

#include <cstdint>

/// Numbers that the host and the link exchange. The values are the host's.
///
/// They are plain 32-bit integers, not enumerations, since they cross a C interface in both
/// directions and a later host may send one that is not listed. Whoever reads one has a branch for
/// "anything else".

namespace hostapi {

/// What values a variable may take; bounds are apart (nmoGetVarLowerOne and the like).
namespace variable_type {
constexpr std::int32_t continuous = 0;
constexpr std::int32_t binary = 1;  ///< integer, within 0 and 1
constexpr std::int32_t integer = 2;
constexpr std::int32_t specialOrdered1 = 3;  ///< member of a set of which one may differ from 0
constexpr std::int32_t specialOrdered2 = 4;  ///< of which two neighbours may
constexpr std::int32_t semiContinuous = 5;   ///< 0, or within the bounds
constexpr std::int32_t semiInteger = 6;      ///< likewise, and integral
}  // namespace variable_type

/// How a row's function and its right-hand side compare.
namespace equation_type {
constexpr std::int32_t equality = 0;
constexpr std::int32_t greater = 1;
constexpr std::int32_t less = 2;
constexpr std::int32_t free = 3;      ///< not at all
constexpr std::int32_t external = 4;  ///< computed elsewhere; the link refuses it
constexpr std::int32_t cone = 5;      ///< likewise
constexpr std::int32_t logic = 6;     ///< a Boolean equality
}  // namespace equation_type

/// The most general part that a row or the objective has.
namespace function_order {
constexpr std::int32_t linear = 1;
constexpr std::int32_t quadratic = 2;
constexpr std::int32_t nonlinear = 3;  ///< the function has an instruction list
}  // namespace function_order

namespace objective_sense {
constexpr std::int32_t minimise = 0;
constexpr std::int32_t maximise = 1;
}  // namespace objective_sense

namespace objective_style {
/// The objective is a function of the variables; no objective variable stands in the rows.
constexpr std::int32_t function = 2;
}  // namespace objective_style

/// What the user says that the model is; 0: nothing.
namespace model_type {
/// Square system without objective: no objective line, "solved" in place of "optimal".
constexpr std::int32_t squareSystem = 8;
}  // namespace model_type

/// What is known about the levels in the model object (nmoModelStatSet).
namespace model_status {
constexpr std::int32_t optimal = 1;
constexpr std::int32_t locallyOptimal = 2;
constexpr std::int32_t infeasible = 4;
constexpr std::int32_t locallyInfeasible = 5;       ///< none found, or none within imposed bounds
constexpr std::int32_t intermediateInfeasible = 6;  ///< the levels violate a row
constexpr std::int32_t feasible = 7;                ///< without discrete variables
constexpr std::int32_t integerSolution = 8;         ///< feasible, with discrete variables
constexpr std::int32_t integerInfeasible = 10;      ///< proved, with discrete variables
constexpr std::int32_t errorNoSolution = 13;        ///< something failed
constexpr std::int32_t noSolutionReturned = 14;  ///< the model has something that is not supported
constexpr std::int32_t solvedUnique = 16;        ///< a square system is solved
}  // namespace model_status

/// Why the solve ended (nmoSolveStatSet).
namespace solve_status {
constexpr std::int32_t normal = 1;
constexpr std::int32_t iterationLimit = 2;
constexpr std::int32_t timeLimit = 3;
constexpr std::int32_t capabilityProblem = 6;  ///< beside model status 14
constexpr std::int32_t userInterrupt = 8;
constexpr std::int32_t setupFailure = 10;  ///< beside model status 13
}  // namespace solve_status

/// Indices of the statistics record (`nmoSetHeadnTail`, `nmoGetHeadnTail`).
namespace head_and_tail {
constexpr std::int32_t iterations = 3;  ///< that the search took
constexpr std::int32_t seconds = 4;     ///< likewise
constexpr std::int32_t objective = 5;   ///< computed by the host, read only
constexpr std::int32_t marginals = 9;   ///< 0: the solution has none
}  // namespace head_and_tail

/// Map type of pairs (variable, equation that defines it).
constexpr std::int32_t variableEquationMap = 1;

/// Names of the host's settings, read through `nevGet...Opt`.
namespace host_setting {
constexpr const char* systemDirectory = "NameSysDir";  ///< string, ends with a separator
constexpr const char* timeLimit = "ResLim";            ///< double, seconds
constexpr const char* iterationLimit = "IterLim";      ///< integer; noIterationLimit: none
}  // namespace host_setting

/// Value of the iteration limit that stands for none.
constexpr std::int32_t noIterationLimit = 2000000000;

/// Longest text result, without its terminator.
constexpr std::int32_t longestText = 255;

/// The search needs a box: in place of an infinite bound the link puts this one, or its negative
/// below. Whoever reads a result has to know, for a level there may stand for one beyond.
constexpr double imposedBound = 1e10;

/// Interface versions, checked when a library is bound. A library serves this one and older ones
/// as it sees fit, and its version entry says so.
namespace interface_version {
constexpr std::int32_t nmo = 16;
constexpr std::int32_t nev = 6;
constexpr std::int32_t opt = 4;
constexpr std::int32_t hux = 1;
}  // namespace interface_version

}  // namespace hostapi
