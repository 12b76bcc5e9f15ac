#include "operators/arrays.hpp"
#include "operators/connectives.hpp"
#include "operators/extremes.hpp"
#include "operators/functions.hpp"
#include "operators/operator_row.hpp"
#include "operators/products.hpp"
#include "operators/relations.hpp"
#include "operators/rounding.hpp"
#include "operators/sums.hpp"

namespace engine {
namespace {

constexpr std::array<OperatorRow, nbOperators> rows{{
    {.op = LS_OP_BOOL},
    {.op = LS_OP_FLOAT},
    {.op = LS_OP_CONST},
    sums::sum,
    sums::sub,
    products::prod,
    extremes::max,
    extremes::min,
    comparisons::row<LS_OP_EQ>,
    comparisons::row<LS_OP_NEQ>,
    comparisons::row<LS_OP_GEQ>,
    comparisons::row<LS_OP_LEQ>,
    comparisons::row<LS_OP_GT>,
    comparisons::row<LS_OP_LT>,
    connectives::choice,
    connectives::negation,
    connectives::conjunction,
    connectives::disjunction,
    connectives::parity,
    extremes::abs,
    extremes::dist,
    products::div,
    products::mod,
    arrays::array,
    arrays::at,
    arrays::scalarprod,
    rounding::ceil,
    rounding::floor,
    rounding::round,
    functions::sqrt,
    functions::log,
    functions::exp,
    functions::pow,
    functions::cos,
    functions::sin,
    functions::tan,
    {.op = LS_OP_INT},
}};

/// Under the undefined-behaviour sanitizer, whose preset also has the address sanitizer, comparing
/// functions is no constant expression.
#ifdef __SANITIZE_ADDRESS__
constexpr bool comparesFunctions = false;
#else
constexpr bool comparesFunctions = true;
#endif

constexpr bool isComplete() {
    for (int k = 0; k < nbOperators; ++k) {
        const OperatorRow& row = rows[static_cast<std::size_t>(k)];
        if (row.op != k) return false;
        if (isRelation(row.op) != (row.logic == LogicForm::Relation)) return false;
        if (!comparesFunctions) continue;
        const bool isLeaf = isDecisionOperator(k) || k == LS_OP_CONST;
        if (isLeaf != (row.value == neutral::value)) return false;
        if (isLeaf != (row.image == neutral::image)) return false;
        const bool isLogic = row.logic != LogicForm::Number;
        if (isLogic == (row.distance == neutral::distance)) return false;
        const bool hasInverse = row.inverse != neutral::inverse;
        if (hasInverse == (isLeaf || k == LS_OP_ARRAY)) return false;
    }
    return true;
}
static_assert(isComplete(),
              "a row for each operator, in the order of numbers, with what every operator needs");

}  // namespace

constexpr std::array<OperatorRow, nbOperators> operatorRows = rows;

Term termOf(const ClosedModel& model, std::span<const std::uint8_t> isAbsorbed, ExpressionIndex e,
            std::size_t k) {
    const ExpressionIndex x = model.operandsOf(e)[k];
    if (isAbsorbed[static_cast<std::size_t>(x)] == 0) return {x, Value::ofInt(1)};
    const auto factors = model.operandsOf(x);
    const bool constantFirst = model.operatorOf(factors[0]) == LS_OP_CONST;
    const ExpressionIndex constant = factors[constantFirst ? 0 : 1];
    return {factors[constantFirst ? 1 : 0],
            model.constantValue[static_cast<std::size_t>(constant)]};
}

Value InverseOperands::valueOf(ExpressionIndex e) const {
    const auto i = static_cast<std::size_t>(e);
    if (surroundings_.isAbsorbed[i] != 0) return computeValue(model(), e, surroundings_.values);
    return surroundings_.values[i];
}

Goal InverseOperands::rootGoal(double current, double m, const Goal& goal) const {
    const bool isOdd = std::fmod(m, 2.0) != 0.0;
    if (isOdd) {
        const double root = std::copysign(std::pow(std::fabs(goal.number), 1.0 / m), goal.number);
        return Goal::ofNumber(root, goal.direction);
    }
    const bool negative = current < 0.0 || (current == 0.0 && random().chance(0.5));
    const double size = std::fmax(goal.number, 0.0);
    // Squares are common, and a square root has the same digits everywhere.
    const double root = m == 2.0 ? std::sqrt(size) : std::pow(size, 1.0 / m);
    return Goal::ofNumber(negative ? -root : root, negative ? -goal.direction : goal.direction);
}

}  // namespace engine
