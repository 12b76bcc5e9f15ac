#pragma once

#include <optional>
#include <vector>

#include "evaluate/propagator.hpp"
#include "global/curve.hpp"
#include "linear/linear_model.hpp"

namespace engine {

constexpr ExpressionIndex noExpression = -1;
constexpr std::int32_t noColumn = -1;

/// A column that equals a nonlinear function of other columns at every point.
struct Definition {
    enum class Kind : std::uint8_t {
        Sum,      ///< result = forms[0], which is a row too
        Curve,    ///< result = curve(first)
        Product,  ///< result = first * second
        Largest,  ///< result = max of `forms`
        Choice,   ///< result = forms[0] where `first` is 1, forms[1] where it is 0
        AtMost,   ///< result = 1 where forms[0] <= 0, else 0
        IsZero,   ///< result = 1 where forms[0] == 0, else 0
    };
    Kind kind;
    std::int32_t result;
    std::int32_t first = noColumn;
    std::int32_t second = noColumn;
    Curve curve{};
    std::vector<LinearForm> forms;
    double slack = 0.0;  ///< AtMost, IsZero: how far forms[0] may be off where the relation holds
    double step = 0.0;   ///< AtMost: how far it is beyond 0 at least where it does not hold
    /// The expression that it belongs to: where this or an operand of it may be NaN, nothing is
    /// known.
    ExpressionIndex guard = noExpression;
};

/// What a column of a factorable model stands for.
struct ColumnOrigin {
    /// The column is `scale` times the expression plus `offset`; or none: a part of one.
    ExpressionIndex expression = noExpression;
    double scale = 1.0;
    double offset = 0.0;
    std::int32_t definition = -1;  ///< that it is the result of, or -1
};

/// An expression that is convex or concave, and its form over the columns.
struct CurvedForm {
    ExpressionIndex expression;
    LinearForm form;
    bool isConvex;
};

/// A row that is convex although its terms are not: sum parts^2 + constant <= head^2, where head is
/// not negative. Its norm is at most head (Lobo et al., "Applications of second-order cone
/// programming", Linear Algebra Appl. 284, 1998, sections 1 and 2.3).
struct Cone {
    std::vector<LinearForm> parts;
    double constant;  ///< not negative
    LinearForm head;
};

/// The model as linear rows over columns, some of which are nonlinear functions of others
/// (McCormick, "Computability of global solutions to factorable nonconvex programs", Math. Prog.
/// 10, 1976): one column a distinct nonlinear expression. At every feasible point that the judge
/// would accept with tolerance 0 the rows, the definitions and the cones hold.
struct FactorableModel {
    LinearModel linear;                ///< with the columns' bounds as far as propagation knew them
    std::vector<ColumnOrigin> origin;  ///< [nbColumns]
    std::vector<Definition> definition;  ///< arguments before results
    std::vector<CurvedForm> curved;      ///< whose tangent planes say more than their parts
    std::vector<Cone> cone;              ///< instead of rows
    bool isComplete = true;              ///< otherwise some constraint is known to propagation only
};

/// Builds it from the constraints and the first objective. Shared expressions are shared columns.
/// What no rule covers becomes a column with nothing but its range.
/// @param propagator  started without conflict.
/// @param values      [nbExpressions] at any point: gives the values of constant expressions.
/// @return nothing when the model is too large for this.
std::optional<FactorableModel> factorableModelOf(const ClosedModel& model,
                                                 const Propagator& propagator,
                                                 const std::vector<Value>& values);

}  // namespace engine
