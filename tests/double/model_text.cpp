#include "double/model_text.hpp"

#include <array>
#include <map>
#include <string_view>
#include <vector>

#include "double/exchange.hpp"
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

constexpr std::size_t longestLine = 100;

class Writer {
public:
    explicit Writer(ls_solver* owner) : solver(owner), nbUses(nbExpressions()) {
        // What is left over from building is not counted.
        for (int k = 0; k < ls_nb_objectives(solver); ++k) use(at(ls_get_objective(solver, k)));
        for (int k = 0; k < ls_nb_constraints(solver); ++k)
            use(at(ls_get_constraint(solver, k)), /*isConstraint=*/true);
        for (int e = 0; e < static_cast<int>(nbUses.size()); ++e) nameIfOwn(at(e));
    }

    std::string objectives() const {
        const int nb = ls_nb_objectives(solver);
        std::string text = nb == 0 ? "no objective\n" : "";
        for (int k = 0; k < nb; ++k) {
            const bool minimise = ls_get_objective_direction(solver, k) == LS_MINIMIZE;
            text += minimise ? "min " : "max ";
            text += reference(at(ls_get_objective(solver, k))) + "\n";
        }
        return text == "min sum()\n" ? "" : text;
    }

    std::string constraints() const {
        std::string text, line;
        for (int k = 0; k < ls_nb_constraints(solver); ++k) {
            const LSExpression e = at(ls_get_constraint(solver, k));
            const std::string piece = ": " + full(e);
            if (e.isNamed() || line.size() + 1 + piece.size() > longestLine) {
                text += line + (line.empty() ? "" : "\n");
                line.clear();
            }
            if (e.isNamed())
                text += e.getName() + piece + "\n";
            else
                line += (line.empty() ? "" : " ") + piece;
        }
        return text + line + (line.empty() ? "" : "\n");
    }

    std::string decisionsAndDefinitions() const {
        std::string decisions, definitions, line, domain;
        for (const LSExpression e : own) {
            if (!e.isDecision()) {
                definitions += reference(e) + " = " + full(e) + "\n";
                continue;
            }
            if (full(e) != domain && !domain.empty()) line += " = " + domain;
            if (line.size() + reference(e).size() + domain.size() > longestLine) {
                decisions += line + (line.ends_with(")") ? "\n" : " = " + domain + "\n");
                line.clear();
            }
            domain = full(e);
            line += (line.empty() ? "" : " ") + reference(e);
        }
        return decisions + line + (line.empty() ? "" : " = " + domain + "\n") + definitions;
    }

private:
    std::size_t nbExpressions() const {
        return static_cast<std::size_t>(ls_nb_expressions(solver));
    }
    LSExpression at(int e) const { return {solver, e}; }

    void use(LSExpression root, bool isConstraint = false) {
        std::vector<LSExpression> open = {root};
        while (!open.empty()) {
            const LSExpression e = open.back();
            open.pop_back();
            if (++nbUses[static_cast<std::size_t>(e.getIndex())] > 1) continue;
            for (int k = 0; k < e.getNbOperands(); ++k) open.push_back(e.getOperand(k));
        }
        if (isConstraint) labels[root.getIndex()] = "";
    }

    void nameIfOwn(LSExpression e) {
        const bool isShared = nbUses[static_cast<std::size_t>(e.getIndex())] > 1;
        if (!e.isDecision() && (e.getOperator() == LS_OP_CONST || labels.count(e.getIndex()) != 0 ||
                                (!e.isNamed() && !isShared)))
            return;
        own.push_back(e);
        labels[e.getIndex()] = e.isNamed() ? e.getName() : "$" + std::to_string(own.size());
    }

    /// What stands for `e` as an operand.
    std::string reference(LSExpression e) const {
        const auto found = labels.find(e.getIndex());
        return found != labels.end() && !found->second.empty() ? found->second : full(e);
    }

    std::string full(LSExpression e) const {
        if (e.getOperator() == LS_OP_CONST)
            return e.isDouble() ? typedNumber(e.getDoubleValue()) : std::to_string(e.getIntValue());
        std::string text(operators.at(static_cast<std::size_t>(e.getOperator())));
        for (int k = 0; k < e.getNbOperands(); ++k)
            text += (k > 0 ? ", " : "(") + reference(e.getOperand(k));
        return text + (e.getNbOperands() > 0 ? ")" : "()");
    }

    ls_solver* solver;
    std::vector<int> nbUses;            ///< by expression
    std::map<int, std::string> labels;  ///< of what has a line of its own; empty: constraints
    std::vector<LSExpression> own;
};

}  // namespace

std::string modelText(ls_solver* solver) {
    const Silence silence;
    const Writer writer(solver);
    return writer.objectives() + writer.constraints() + writer.decisionsAndDefinitions();
}

std::string modelSize(ls_solver* solver) {
    const Silence silence;
    int nbDecisions = 0;
    for (int e = 0; e < ls_nb_expressions(solver); ++e)
        nbDecisions += ls_expr_is_decision(solver, e);
    return std::to_string(ls_nb_objectives(solver)) + " objectives, " +
           std::to_string(ls_nb_constraints(solver)) + " constraints, " +
           std::to_string(nbDecisions) + " decisions\n";
}

}  // namespace doubles
