#include "double/model_text.hpp"

#include <array>
#include <map>
#include <string_view>
#include <vector>

#include "double/exchange.hpp"

namespace doubles {

namespace {

/// By operator code; spelt here, so that a wrong table elsewhere shows.
constexpr std::array<std::string_view, 37> operators = {
    "bool", "float", "const", "sum",   "sub", "prod",       "max",  "min",   "eq",    "neq",
    "geq",  "leq",   "gt",    "lt",    "if",  "not",        "and",  "or",    "xor",   "abs",
    "dist", "div",   "mod",   "array", "at",  "scalarprod", "ceil", "floor", "round", "sqrt",
    "log",  "exp",   "pow",   "cos",   "sin", "tan",        "int"};

constexpr std::size_t longestLine = 99;

class Writer {
public:
    explicit Writer(ls_solver* solver_) : solver(solver_) {}

    void label(int e, const std::string& text) { labels[e] = text; }

    /// What stands for `e` as an operand.
    std::string reference(int e) const {
        const auto found = labels.find(e);
        return found != labels.end() ? found->second : full(e);
    }

    std::string full(int e) const {
        const int op = ls_expr_get_operator(solver, e);
        if (op == LS_OP_CONST) {
            return ls_expr_is_double(solver, e) != 0
                       ? typedNumber(ls_expr_get_double_value(solver, e))
                       : std::to_string(ls_expr_get_int_value(solver, e));
        }
        std::string text = std::string(operators.at(static_cast<std::size_t>(op))) + "(";
        for (int k = 0; k < ls_expr_nb_operands(solver, e); ++k)
            text += (k > 0 ? ", " : "") + reference(ls_expr_get_operand(solver, e, k));
        return text + ")";
    }

private:
    ls_solver* solver;
    std::map<int, std::string> labels;
};

}  // namespace

std::string nameOf(ls_solver* solver, int expression) {
    if (ls_expr_is_named(solver, expression) == 0) return {};
    std::string name(static_cast<std::size_t>(ls_expr_get_name(solver, expression, nullptr, 0)),
                     '\0');
    ls_expr_get_name(solver, expression, name.data(), static_cast<int>(name.size()));
    name.pop_back();
    return name;
}

std::string modelText(ls_solver* solver) {
    const Silence silence;
    Writer writer(solver);
    const int nbExpressions = ls_nb_expressions(solver);
    std::vector<int> nbUses(static_cast<std::size_t>(nbExpressions));
    std::vector<bool> isConstraint(nbUses.size());
    std::vector<int> open;
    const auto use = [&](int e) {  // what is left over from building it is not counted
        if (++nbUses[static_cast<std::size_t>(e)] == 1) open.push_back(e);
    };
    for (int k = 0; k < ls_nb_objectives(solver); ++k) use(ls_get_objective(solver, k));
    for (int k = 0; k < ls_nb_constraints(solver); ++k) {
        use(ls_get_constraint(solver, k));
        isConstraint[static_cast<std::size_t>(ls_get_constraint(solver, k))] = true;
    }
    while (!open.empty()) {
        const int e = open.back();
        open.pop_back();
        for (int k = 0; k < ls_expr_nb_operands(solver, e); ++k)
            use(ls_expr_get_operand(solver, e, k));
    }

    std::vector<int> own;
    for (int e = 0; e < nbExpressions; ++e) {
        const auto at = static_cast<std::size_t>(e);
        const std::string name = nameOf(solver, e);
        const bool isOwn = ls_expr_is_decision(solver, e) != 0 ||
                           (ls_expr_get_operator(solver, e) != LS_OP_CONST && !isConstraint[at] &&
                            (!name.empty() || nbUses[at] > 1));
        if (!isOwn) continue;
        own.push_back(e);
        writer.label(e, name.empty() ? "$" + std::to_string(own.size()) : name);
    }
    std::string text = ls_nb_objectives(solver) == 0 ? "no objective\n" : "";
    for (int k = 0; k < ls_nb_objectives(solver); ++k) {
        const int e = ls_get_objective(solver, k);
        if (ls_nb_objectives(solver) == 1 && ls_expr_get_operator(solver, e) == LS_OP_SUM &&
            ls_expr_nb_operands(solver, e) == 0)
            continue;
        const bool minimise = ls_get_objective_direction(solver, k) == LS_MINIMIZE;
        text += (minimise ? "min " : "max ") + writer.reference(e) + "\n";
    }
    for (int k = 0; k < ls_nb_constraints(solver); ++k) {
        const int e = ls_get_constraint(solver, k);
        text += nameOf(solver, e) + ": " + writer.full(e) + "\n";
    }
    std::string line;
    std::string domain;
    std::string definitions;
    for (const int e : own) {
        if (ls_expr_is_decision(solver, e) == 0) {
            definitions += writer.reference(e) + " = " + writer.full(e) + "\n";
            continue;
        }
        if (writer.full(e) != domain && !domain.empty()) line += " = " + domain;
        if (line.size() + writer.reference(e).size() + domain.size() > longestLine) {
            text += line + (line.ends_with(")") ? "\n" : " = " + domain + "\n");
            line.clear();
        }
        domain = writer.full(e);
        line += (line.empty() ? "" : " ") + writer.reference(e);
    }
    return text + line + (line.empty() ? "" : " = " + domain + "\n") + definitions;
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
