#include "model/close_model.hpp"

#include <algorithm>
#include <utility>

#include "model/domain.hpp"
#include "model/operator_table.hpp"
#include "model/refusal.hpp"

namespace engine {

namespace {

void checkOperandCount(const ExpressionStore& store, ExpressionIndex e) {
    const OperatorInfo& info = operatorInfo(store.operatorOf(e));
    if (store.nbOperandsOf(e) < info.minOperands) {
        throw Refusal(LS_ERROR_ARGUMENT,
                      formatText("expression %d (%s) has %d operands and needs at least %d", e,
                                 info.name.data(), store.nbOperandsOf(e), info.minOperands));
    }
}

void checkArrayLengths(const ExpressionStore& store, ExpressionIndex e) {
    if (store.operatorOf(e) != LS_OP_SCALARPROD) return;
    const std::int32_t first = store.nbOperandsOf(store.operandOf(e, 0));
    const std::int32_t second = store.nbOperandsOf(store.operandOf(e, 1));
    if (first != second) {
        throw Refusal(
            LS_ERROR_ARGUMENT,
            formatText("expression %d (scalarprod) multiplies arrays of %d and %d operands,"
                       " they must be of one length",
                       e, first, second));
    }
}

void copyOperands(const ExpressionStore& store, ClosedModel& model) {
    const auto n = static_cast<std::size_t>(store.nbExpressions());
    model.op.reserve(n);
    model.constantValue.resize(n);
    model.firstOperand.reserve(n + 1);
    model.operand.reserve(static_cast<std::size_t>(store.nbOperands()));
    for (ExpressionIndex e = 0; e < store.nbExpressions(); ++e) {
        checkOperandCount(store, e);
        checkArrayLengths(store, e);
        model.op.push_back(static_cast<std::uint8_t>(store.operatorOf(e)));
        model.firstOperand.push_back(static_cast<std::int32_t>(model.operand.size()));
        store.forEachOperand(e, [&](ExpressionIndex o) { model.operand.push_back(o); });
        if (store.operatorOf(e) == LS_OP_CONST) {
            model.constantValue[static_cast<std::size_t>(e)] = store.constantOf(e);
        }
    }
    model.firstOperand.push_back(static_cast<std::int32_t>(model.operand.size()));
}

/// Transposes the operand lists by counting; users come out in ascending order.
void computeUsers(ClosedModel& model) {
    const auto n = static_cast<std::size_t>(model.nbExpressions());
    // Counted one place ahead, so that while filling place e ends as the start of e + 1.
    model.firstUser.assign(n + 2, 0);
    for (const ExpressionIndex o : model.operand)
        ++model.firstUser[static_cast<std::size_t>(o) + 2];
    for (std::size_t k = 2; k < n + 2; ++k) model.firstUser[k] += model.firstUser[k - 1];
    model.user.resize(model.operand.size());
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
        for (const ExpressionIndex o : model.operandsOf(e)) {
            const std::int32_t place = model.firstUser[static_cast<std::size_t>(o) + 1]++;
            model.user[static_cast<std::size_t>(place)] = e;
        }
    }
    model.firstUser.pop_back();
}

/// An expression that depends on itself, given that some expression was never ready.
ExpressionIndex findCycle(const ClosedModel& model, const std::vector<std::int32_t>& nbWaiting) {
    const auto waits = [&](ExpressionIndex e) {
        return nbWaiting[static_cast<std::size_t>(e)] > 0;
    };
    ExpressionIndex e = 0;
    while (!waits(e)) ++e;
    // Every waiting expression has a waiting operand: after n steps the walk is inside a cycle.
    for (std::int32_t step = 0; step < model.nbExpressions(); ++step) {
        const auto operands = model.operandsOf(e);
        e = *std::find_if(operands.begin(), operands.end(), waits);
    }
    return e;
}

/// Kahn's algorithm: an expression is placed when its last operand is; `order` is its own queue.
void computeOrder(ClosedModel& model) {
    const auto n = static_cast<std::size_t>(model.nbExpressions());
    std::vector<std::int32_t> nbWaiting(n);
    model.order.reserve(n);
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
        const auto nbOperands = static_cast<std::int32_t>(model.operandsOf(e).size());
        nbWaiting[static_cast<std::size_t>(e)] = nbOperands;
        if (nbOperands == 0) model.order.push_back(e);
    }
    for (std::size_t k = 0; k < model.order.size(); ++k) {
        for (const ExpressionIndex user : model.usersOf(model.order[k])) {
            if (--nbWaiting[static_cast<std::size_t>(user)] == 0) model.order.push_back(user);
        }
    }
    if (model.order.size() < n) {
        const ExpressionIndex e = findCycle(model, nbWaiting);
        throw Refusal(LS_ERROR_ARGUMENT,
                      formatText("expression %d (%s) is an operand of itself, directly or through "
                                 "others",
                                 e, operatorInfo(model.operatorOf(e)).name.data()));
    }
    model.rank = std::move(nbWaiting);  // in whose place it comes
    for (std::size_t k = 0; k < n; ++k) {
        model.rank[static_cast<std::size_t>(model.order[k])] = static_cast<std::int32_t>(k);
    }
}

bool isDoubleResult(const ClosedModel& model, ExpressionIndex e) {
    const auto operands = model.operandsOf(e);
    const auto isDouble = [&](ExpressionIndex o) {
        return model.isDouble[static_cast<std::size_t>(o)] != 0;
    };
    switch (operatorInfo(model.operatorOf(e)).result) {
        case ResultType::Integer:
            return false;
        case ResultType::Double:
            return true;
        case ResultType::OfConstant:
            return !model.constantValue[static_cast<std::size_t>(e)].isInt();
        case ResultType::OfOperands:
            return std::any_of(operands.begin(), operands.end(), isDouble);
        case ResultType::OfBranches:
            return std::any_of(operands.begin() + 1, operands.end(), isDouble);
        case ResultType::OfFirstOperand:
            return isDouble(operands.front());
    }
    return false;
}

void computeTypes(ClosedModel& model) {
    const auto n = static_cast<std::size_t>(model.nbExpressions());
    model.isDouble.resize(n);
    for (const ExpressionIndex e : model.order) {
        const auto k = static_cast<std::size_t>(e);
        model.isDouble[k] = isDoubleResult(model, e) ? 1 : 0;
    }
}

Interval domainOf(const ClosedModel& model, ExpressionIndex e) {
    if (model.operatorOf(e) == LS_OP_BOOL) return {0.0, 1.0};
    const auto bounds = model.operandsOf(e);
    return domainFromBounds(model.constantValue[static_cast<std::size_t>(bounds[0])],
                            model.constantValue[static_cast<std::size_t>(bounds[1])],
                            model.operatorOf(e) == LS_OP_INT);
}

void collectDecisions(ClosedModel& model) {
    model.decisionOf.assign(static_cast<std::size_t>(model.nbExpressions()), -1);
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
        if (!isDecisionOperator(model.operatorOf(e))) continue;
        model.decisionOf[static_cast<std::size_t>(e)] = model.nbDecisions();
        model.decision.push_back(e);
        model.domain.push_back(domainOf(model, e));
    }
}

}  // namespace

ClosedModel copyGraph(const ExpressionStore& store) {
    ClosedModel model;
    copyOperands(store, model);
    return model;
}

void completeModel(ClosedModel& model, const std::vector<ExpressionIndex>& constraints,
                   const std::vector<Objective>& objectives) {
    computeUsers(model);
    computeOrder(model);
    computeTypes(model);
    collectDecisions(model);
    model.constraint = constraints;
    model.objective = objectives;
}

void refill(ExpressionStore& store, ClosedModel graph) {
    for (auto* derived : {&graph.firstUser, &graph.user, &graph.rank, &graph.order}) {
        *derived = std::vector<std::int32_t>();
    }
    for (ExpressionIndex e = 0; e < graph.nbExpressions(); ++e) {
        const ls_operator op = graph.operatorOf(e);
        if (op == LS_OP_CONST) {
            store.createConstant(graph.constantValue[static_cast<std::size_t>(e)]);
        } else {
            store.createExpression(op);
        }
    }
    for (ExpressionIndex e = 0; e < graph.nbExpressions(); ++e) {
        for (const ExpressionIndex o : graph.operandsOf(e)) store.addOperand(e, o);
    }
}

}  // namespace engine
