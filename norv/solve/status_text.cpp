#include "solve/status_text.hpp"

#include <algorithm>
#include <iterator>

#include "hostapi/codes.hpp"

namespace norv {
namespace {

struct StatusText {
    std::int32_t status;
    const char* text;
};

namespace model_status = hostapi::model_status;
constexpr StatusText modelTexts[] = {
    {model_status::optimal, "optimal"},
    {model_status::locallyOptimal, "locally optimal"},
    {model_status::infeasible, "infeasible"},
    {model_status::locallyInfeasible, "locally infeasible"},
    {model_status::intermediateInfeasible, "intermediate infeasible"},
    {model_status::feasible, "feasible"},
    {model_status::integerSolution, "feasible, with discrete variables"},
    {model_status::integerInfeasible, "infeasible, with discrete variables"},
    {model_status::errorNoSolution, "error, no solution"},
    {model_status::noSolutionReturned, "no solution returned"},
    {model_status::solvedUnique, "solved"},
};

namespace solve_status = hostapi::solve_status;
constexpr StatusText solveTexts[] = {
    {solve_status::normal, "normal completion"},
    {solve_status::iterationLimit, "iteration limit"},
    {solve_status::timeLimit, "time limit"},
    {solve_status::capabilityProblem, "capability problem"},
    {solve_status::userInterrupt, "user interrupt"},
    {solve_status::setupFailure, "setup failure"},
};

template <class Table>
std::string find(const Table& table, std::int32_t status) {
    const auto found =
        std::find_if(std::begin(table), std::end(table),
                     [&](const StatusText& entry) { return entry.status == status; });
    if (found == std::end(table)) return std::string("status ").append(std::to_string(status));
    return found->text;
}

}  // namespace

std::string modelStatusText(std::int32_t status) {
    return find(modelTexts, status);
}
std::string solveStatusText(std::int32_t status) {
    return find(solveTexts, status);
}

const char* rowTypeText(std::int32_t type) {
    namespace equation = hostapi::equation_type;
    switch (type) {
        case equation::equality:
            return "=";
        case equation::less:
            return "<=";
        case equation::greater:
            return ">=";
        case equation::logic:
            return "true";
        default:
            return "free";
    }
}

}  // namespace norv
