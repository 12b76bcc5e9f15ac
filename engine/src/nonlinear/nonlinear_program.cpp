#include "nonlinear/nonlinear_program.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "operators/relation.hpp"

namespace engine {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// A constraint, or its negation.
struct Wanted {
    ExpressionIndex expression;
    bool isTrue;
};

}  // namespace

NonlinearProgram::NonlinearProgram(const ClosedModel& model) : model_(model), graph_(model) {
    addRows();
    for (const Objective& o : model.objective)
        root_.push_back(graph_.nodeOf(graph_.add(o.expression)));
    graph_.keepOnly(root_);
    adjoint_.assign(static_cast<std::size_t>(graph_.nbNodes()), 0.0);
    findCones();
    hessian_.emplace(graph_);
}

void NonlinearProgram::addRows() {
    std::vector<Wanted> open;
    std::vector<std::uint8_t> isAdded(model_.op.size(), 0);
    for (const ExpressionIndex e : model_.constraint) {
        if (std::exchange(isAdded[static_cast<std::size_t>(e)], 1) == 0) open.push_back({e, true});
    }
    std::reverse(open.begin(), open.end());
    while (!open.empty()) {
        const auto [e, isTrue] = open.back();
        open.pop_back();
        const auto x = model_.operandsOf(e);
        const ls_operator op = model_.operatorOf(e);
        if (isRelation(op)) {
            addRow(isTrue ? op : relationOf(op).negation, x[0], x[1]);
        } else if (op == LS_OP_NOT) {
            open.push_back({x[0], !isTrue});
        } else if (op == (isTrue ? LS_OP_AND : LS_OP_OR)) {
            for (std::size_t k = x.size(); k-- > 0;) open.push_back({x[k], isTrue});
        } else {
            isWhole_ = isWhole_ && op == LS_OP_CONST;
        }
    }
}

void NonlinearProgram::addRow(ls_operator relation, ExpressionIndex left, ExpressionIndex right) {
    if (relation == LS_OP_NEQ) {
        isWhole_ = false;
        return;
    }
    const auto isReal = [this](ExpressionIndex e) {
        return model_.isDouble[static_cast<std::size_t>(e)] != 0;
    };
    const AffineTerm difference = graph_.addDifference(left, right);
    double step = 0.0;
    if (relation == LS_OP_GT || relation == LS_OP_LT) {
        const auto sizeOf = [this](ExpressionIndex e) {
            const AffineTerm side = graph_.add(e);
            return side.isConstant() ? std::fabs(side.constant) : 0.0;
        };
        step = isReal(left) || isReal(right)
                   ? 2.0 * relationTolerance * std::max({1.0, sizeOf(left), sizeOf(right)})
                   : 1.0;
    }
    const bool isAbove = relation == LS_OP_GEQ || relation == LS_OP_GT;
    const bool isBelow = relation == LS_OP_LEQ || relation == LS_OP_LT;
    root_.push_back(graph_.nodeOf(difference));
    lower_.push_back(isBelow ? -infinity : step);
    upper_.push_back(isAbove ? infinity : -step);
}

void NonlinearProgram::findCones() {
    std::vector<std::int32_t> seenBy(static_cast<std::size_t>(graph_.nbNodes()), -1);
    for (std::size_t f = 0; f < nbFunctions(); ++f) addCone(f, seenBy);
    jacobian_.assign(column_.size(), 0.0);
    // Linear functions have their derivatives now and for ever.
    for (std::size_t f = 0; f < nbFunctions(); ++f) {
        if (isLinear_[f] == 0) continue;
        const std::int32_t root = root_[f];
        const auto x = graph_.operandsOf(root);
        for (std::size_t k = start_[f]; k < start_[f + 1]; ++k) {
            if (x.empty()) {
                jacobian_[k] = 1.0;
                continue;
            }
            const auto place = std::find(x.begin(), x.end(), column_[k]);
            jacobian_[k] = graph_.coefficientAt(graph_.firstOf(root) +
                                                static_cast<std::size_t>(place - x.begin()));
        }
    }
}

/// Nodes and decisions that a function's derivative runs through.
void NonlinearProgram::addCone(std::size_t function, std::vector<std::int32_t>& seenBy) {
    const auto me = static_cast<std::int32_t>(function);
    const auto visit = [&](std::int32_t node) {
        if (std::exchange(seenBy[static_cast<std::size_t>(node)], me) == me) return;
        (node < graph_.nbVariables() ? column_ : cone_).push_back(node);
    };
    visit(root_[function]);
    bool isLinear = true;
    for (std::size_t k = coneStart_.back(); k < cone_.size(); ++k) {
        const std::int32_t node = cone_[k];
        isLinear = isLinear && k == coneStart_.back() &&
                   (graph_.kindOf(node) == SmoothGraph::Kind::Sum ||
                    graph_.kindOf(node) == SmoothGraph::Kind::Constant);
        const auto x = graph_.operandsOf(node);
        for (std::size_t i = 0; i < x.size(); ++i) {
            if (!graph_.isFlat(node, i)) visit(x[i]);
        }
    }
    std::sort(cone_.begin() + static_cast<std::ptrdiff_t>(coneStart_.back()), cone_.end(),
              std::greater<>());
    std::sort(column_.begin() + static_cast<std::ptrdiff_t>(start_.back()), column_.end());
    coneStart_.push_back(cone_.size());
    start_.push_back(column_.size());
    isLinear_.push_back(isLinear ? 1 : 0);
}

std::size_t NonlinearProgram::work() const {
    return 3 * graph_.nbOperands() + 2 * cone_.size() + hessian_->work() / 2;
}

void NonlinearProgram::moveTo(std::span<const double> x) {
    graph_.evaluate(x);
    isDifferentiated_ = false;
}

double NonlinearProgram::violationOf(std::size_t row) const {
    const double v = valueOf(row);
    return std::isfinite(v) ? std::max({0.0, lower_[row] - v, v - upper_[row]}) : infinity;
}

void NonlinearProgram::differentiate() {
    if (!std::exchange(isDifferentiated_, true)) graph_.differentiate();
}

/// Hands a node's adjoint on to its operands, and forgets it.
void NonlinearProgram::accumulate(std::int32_t node) {
    const double adjoint = std::exchange(adjoint_[static_cast<std::size_t>(node)], 0.0);
    if (adjoint == 0.0) return;
    const auto x = graph_.operandsOf(node);
    const std::size_t first = graph_.firstOf(node);
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (graph_.isFlat(node, k)) continue;
        adjoint_[static_cast<std::size_t>(x[k])] += adjoint * graph_.slopeAt(first + k);
    }
}

std::span<const double> NonlinearProgram::computeJacobian() {
    differentiate();
    for (std::size_t f = 0; f < nbFunctions(); ++f) {
        if (isLinear_[f] != 0) continue;
        adjoint_[static_cast<std::size_t>(root_[f])] = 1.0;
        for (std::size_t k = coneStart_[f]; k < coneStart_[f + 1]; ++k) accumulate(cone_[k]);
        for (std::size_t k = start_[f]; k < start_[f + 1]; ++k) {
            const double slope = std::exchange(adjoint_[static_cast<std::size_t>(column_[k])], 0.0);
            jacobian_[k] = std::isfinite(slope) ? slope : 0.0;
        }
    }
    return jacobian_;
}

void NonlinearProgram::computeHessian(std::span<const double> weight, std::span<double> values) {
    differentiate();
    for (std::size_t f = 0; f < nbFunctions(); ++f) {
        adjoint_[static_cast<std::size_t>(root_[f])] += weight[f];
    }
    // The tape needs the adjoints of all nodes at once.
    for (std::int32_t node = graph_.nbNodes() - 1; node >= graph_.nbVariables(); --node) {
        const double adjoint = adjoint_[static_cast<std::size_t>(node)];
        accumulate(node);
        adjoint_[static_cast<std::size_t>(node)] = adjoint;
    }
    hessian_->compute(graph_, adjoint_, values);
    std::fill(adjoint_.begin(), adjoint_.end(), 0.0);
}

}  // namespace engine
