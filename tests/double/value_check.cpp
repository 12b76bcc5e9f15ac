#include "double/value_check.hpp"

#include <cmath>
#include <vector>

#include "double/exchange.hpp"
#include "host/operations.hpp"

namespace doubles {

namespace {

using localsolver::LSExpression;

double valueOf(const vex::NorvLocalSolver& link, LSExpression e) {
    return link.solver->getSolution().getValue(e);
}

/// Puts every decision at a value of its own. @return the levels of all variables then.
std::vector<double> setPoint(const vex::NorvLocalSolver& link, double scale) {
    std::vector<double> point(link.variables.size());
    for (std::size_t j = 0; j < point.size(); ++j) {
        const LSExpression x = link.variables[j];
        if (!vex::isBuilt(x) || !x.isDecision()) continue;
        const double wish = scale * (1.0 + 0.7 * static_cast<double>(j));
        if (x.isDouble())
            x.setDoubleValue(wish);
        else
            x.setIntValue(std::llround(wish));
    }
    for (std::size_t j = 0; j < point.size(); ++j) {
        if (vex::isBuilt(link.variables[j])) point[j] = valueOf(link, link.variables[j]);
    }
    return point;
}

/// @param largest  of the numbers that rounding errors come from.
std::string differenceOf(const std::string& what, norv::Evaluation host, double built,
                         double largest) {
    // Where the host has no value, what the engine says does not matter.
    if (host.nbErrors != 0 || !std::isfinite(host.value) || !std::isfinite(built)) return {};
    if (std::fabs(host.value - built) <= 1e-9 * std::fmax(largest, std::fabs(host.value)))
        return {};
    return "DIFFERS BY VALUE: " + what + " is " + typedNumber(host.value) + ", built " +
           typedNumber(built) + "\n";
}

}  // namespace

std::string differencesByValue(const vex::NorvLocalSolver& link, const norv::Model& model) {
    const Silence silence;
    std::string differences;
    for (const double scale : {0.0, 1.0, -2.5, 0.3, 1e3}) {
        const std::vector<double> point = setPoint(link, scale);
        double largest = 1.0;
        for (const double level : point) largest = std::fmax(largest, std::fabs(level));
        for (std::size_t at = 0; at < link.constraints.size(); ++at) {
            const auto i = static_cast<std::int32_t>(at);
            norv::Evaluation row;
            vex::nmoEvalFunc(link.nmo, i, point.data(), &row.value, &row.nbErrors);
            const LSExpression constraint = link.constraints[at];
            // A definition holds by itself.
            differences +=
                differenceOf("row " + std::to_string(i), row,
                             vex::isBuilt(constraint) ? valueOf(link, constraint.getOperand(0))
                                                      : vex::nmoGetRhsOne(link.nmo, i),
                             largest);
        }
        if (vex::optGetIntStr(link.opt, "hierarchicalobj") != 0) continue;
        differences += differenceOf("the objective", model.evaluateObjective(point),
                                    valueOf(link, link.objectives.at(0)), largest);
    }
    return differences;
}

}  // namespace doubles
