#include "double/model_text.hpp"

#include <array>
#include <cmath>
#include <map>
#include <string_view>
#include <vector>

#include "double/call_log.hpp"
#include "double/exchange.hpp"
#include "host/operations.hpp"
#include "localsolver.hpp"

namespace doubles {

namespace {

using localsolver::LSExpression;

/// By operator code; spelt here, so that a wrong table elsewhere shows.
constexpr std::array<std::string_view, 37> operators = {
    "bool", "float", "const", "sum",   "sub", "prod",       "max",  "min",   "eq",    "neq",
    "geq",  "leq",   "gt",    "lt",    "if",  "not",        "and",  "or",    "xor",   "abs",
    "dist", "div",   "mod",   "array", "at",  "scalarprod", "ceil", "floor", "round", "sqrt",
    "log",  "exp",   "pow",   "cos",   "sin", "tan",        "int"};

class Writer {
public:
    explicit Writer(ls_solver* owner) : solver(owner) {
        // What is left over from building is not counted.
        for (int k = 0; k < ls_nb_objectives(solver); ++k) use(at(ls_get_objective(solver, k)));
        for (int k = 0; k < ls_nb_constraints(solver); ++k) {
            use(at(ls_get_constraint(solver, k)));
            labels[ls_get_constraint(solver, k)] = "";
        }
        for (int e = 0; e < ls_nb_expressions(solver); ++e) nameIfOwn(at(e));
    }

    std::string size() const {
        return std::to_string(ls_nb_objectives(solver)) + " objectives, " +
               std::to_string(ls_nb_constraints(solver)) + " constraints, " +
               std::to_string(decisions.size()) + " decisions\n";
    }

    std::string text() const {
        Lines lines;
        const int nb = ls_nb_objectives(solver);
        if (nb == 0) lines.addLines("no objective\n");
        for (int k = 0; k < nb; ++k) {
            const bool minimise = ls_get_objective_direction(solver, k) == LS_MINIMIZE;
            const std::string function = reference(at(ls_get_objective(solver, k)));
            if (nb > 1 || !minimise || function != "sum()")
                lines.addLines((minimise ? "min " : "max ") + function + "\n");
        }
        for (int k = 0; k < ls_nb_constraints(solver); ++k) {
            const LSExpression e = at(ls_get_constraint(solver, k));
            if (e.isNamed())
                lines.addLines(e.getName() + ": " + full(e) + "\n");
            else
                lines.addPiece(": " + full(e));
        }
        lines.flush();
        for (std::size_t k = 0; k < decisions.size(); ++k) {
            const std::string domain = full(decisions[k]);
            const bool isLast = k + 1 == decisions.size() || full(decisions[k + 1]) != domain;
            lines.addPiece(reference(decisions[k]) + (isLast ? " = " + domain : ""));
        }
        for (const LSExpression e : definitions)
            lines.addLines(reference(e) + " = " + full(e) + "\n");
        return lines.text();
    }

private:
    LSExpression at(int e) const { return {solver, e}; }

    void use(LSExpression e) {
        if (++nbUses[e.getIndex()] > 1) return;
        for (int k = 0; k < e.getNbOperands(); ++k) use(e.getOperand(k));
    }

    /// A label for what has a line of its own.
    void nameIfOwn(LSExpression e) {
        const bool isNone = e.getOperator() == LS_OP_CONST || labels.count(e.getIndex()) != 0;
        if (!e.isDecision() && (isNone || (!e.isNamed() && nbUses[e.getIndex()] < 2))) return;
        (e.isDecision() ? decisions : definitions).push_back(e);
        const std::size_t number = decisions.size() + definitions.size();
        labels[e.getIndex()] = e.isNamed() ? e.getName() : "$" + std::to_string(number);
    }

    /// What stands for `e` as an operand.
    std::string reference(LSExpression e) const {
        const auto found = labels.find(e.getIndex());
        return found != labels.end() && !found->second.empty() ? found->second : full(e);
    }

    std::string full(LSExpression e) const {
        if (e.getOperator() == LS_OP_CONST)
            return e.isDouble() ? typedNumber(e.getDoubleValue()) : std::to_string(e.getIntValue());
        std::string operands;
        for (int k = 0; k < e.getNbOperands(); ++k)
            operands += (k > 0 ? ", " : "") + reference(e.getOperand(k));
        return std::string(operators.at(static_cast<std::size_t>(e.getOperator()))) + "(" +
               operands + ")";
    }

    ls_solver* solver;
    std::map<int, int> nbUses;
    std::map<int, std::string> labels;  ///< empty: constraints
    std::vector<LSExpression> decisions, definitions;
};

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

}  // namespace

std::string modelText(ls_solver* solver, bool inFull) {
    const Silence silence;
    const Writer writer(solver);
    return inFull ? writer.text() : writer.size();
}

std::string differencesByValue(const vex::NorvLocalSolver& link, const norv::Model& model) {
    const Silence silence;
    std::string differences;
    for (const double scale : {0.0, 1.0, -2.5, 0.3, 1e3}) {
        const std::vector<double> point = setPoint(link, scale);
        double largest = 1.0;  // of the numbers that rounding errors come from
        for (const double level : point) largest = std::fmax(largest, std::fabs(level));
        const auto compare = [&](std::size_t row, norv::Evaluation host, double built) {
            // Where the host has no value, what the engine says does not matter.
            const double allowed = 1e-9 * std::fmax(largest, std::fabs(host.value));
            if (host.nbErrors == 0 && std::isfinite(host.value) && std::isfinite(built) &&
                !(std::fabs(host.value - built) <= allowed))
                differences += "DIFFERS BY VALUE: row " + std::to_string(row) + " is " +
                               typedNumber(host.value) + ", built " + typedNumber(built) + "\n";
        };
        for (std::size_t at = 0; at < link.constraints.size(); ++at) {
            const auto i = static_cast<std::int32_t>(at);
            norv::Evaluation row;
            vex::nmoEvalFunc(link.nmo, i, point.data(), &row.value, &row.nbErrors);
            const LSExpression constraint = link.constraints[at];
            // A definition holds by itself.
            compare(at, row,
                    vex::isBuilt(constraint) ? valueOf(link, constraint.getOperand(0))
                                             : vex::nmoGetRhsOne(link.nmo, i));
        }
        // The objective comes behind the rows.
        if (vex::optGetIntStr(link.opt, "hierarchicalobj") == 0)
            compare(link.constraints.size(), model.evaluateObjective(point),
                    valueOf(link, link.objectives.at(0)));
    }
    return differences;
}

}  // namespace doubles
