#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "model/closed_model.hpp"
#include "nonlinear/second_order.hpp"

namespace engine {

/// An expression as a function of a node: factor * node + constant; no node: the constant alone.
struct AffineTerm {
    std::int32_t node = -1;
    double factor = 1.0;
    double constant = 0.0;
    [[nodiscard]] bool isConstant() const { return node < 0; }
};

/// The expressions of some roots as few nodes whose derivatives are known to the second order.
///
/// Sums are flattened, constants folded, equal nodes shared, products split into pairs. Nodes are
/// numbered so that operands come before their users; the first nbVariables() are the decisions.
/// All decisions move as real numbers. Where there are kinks, values and derivatives are those of
/// the piece that the point lies on.
class SmoothGraph {
public:
    enum class Kind : std::uint8_t {
        Variable,
        Constant,
        Sum,       ///< constant + coefficient * operand, each operand once
        Function,  ///< rule of one or two different operands, or of one and a constant
        Choice,    ///< the operand that the first one (no part of the derivative) chooses
        Step       ///< the model's own operator, derivative 0
    };

    /// The model outlives it.
    explicit SmoothGraph(const ClosedModel& model);

    /// The expression as a term over the nodes; made where it is not yet there.
    AffineTerm add(ExpressionIndex root);
    /// The node sum of factor * term.
    AffineTerm addDifference(ExpressionIndex plus, ExpressionIndex minus);
    /// A node that is equal to `term`, also if that is constant.
    std::int32_t nodeOf(const AffineTerm& term);
    /// Leaves only the nodes that `roots` depend on, and renumbers these in `roots`.
    void keepOnly(std::span<std::int32_t> roots);

    [[nodiscard]] std::int32_t nbVariables() const { return model_.nbDecisions(); }
    [[nodiscard]] std::int32_t nbNodes() const { return static_cast<std::int32_t>(node_.size()); }
    [[nodiscard]] Kind kindOf(std::int32_t node) const { return at(node).kind; }
    /// Of functions.
    [[nodiscard]] LocalRule ruleOf(std::int32_t node) const { return at(node).rule; }
    /// Positions of the node's operands among all operands.
    [[nodiscard]] std::size_t firstOf(std::int32_t node) const {
        return static_cast<std::size_t>(at(node).first);
    }
    [[nodiscard]] std::span<const std::int32_t> operandsOf(std::int32_t node) const {
        return std::span(operand_).subspan(firstOf(node), static_cast<std::size_t>(at(node).count));
    }
    [[nodiscard]] std::size_t nbOperands() const { return operand_.size(); }
    [[nodiscard]] double coefficientAt(std::size_t position) const { return slope_[position]; }
    [[nodiscard]] double constantOf(std::int32_t node) const { return at(node).constant; }
    /// Whether the derivative by that operand is 0 everywhere: constants, conditions.
    [[nodiscard]] bool isFlat(std::int32_t node, std::size_t k) const {
        const Kind kind = kindOf(node);
        return kind == Kind::Step || (kind == Kind::Choice && k == 0) ||
               kindOf(operandsOf(node)[k]) == Kind::Constant;
    }

    /// Values of all nodes at `x` [nbVariables]. O(operands).
    void evaluate(std::span<const double> x);
    /// First derivatives by operands and second ones of functions at the same point; what is not
    /// finite counts as 0. O(operands).
    void differentiate();
    [[nodiscard]] double valueOf(std::int32_t node) const {
        return value_[static_cast<std::size_t>(node)];
    }
    /// Derivative of a node by the operand at that position.
    [[nodiscard]] double slopeAt(std::size_t position) const { return slope_[position]; }
    /// Second derivatives of a function: by its first operand, both, the second.
    [[nodiscard]] const LocalDerivatives& secondOf(std::int32_t node) const {
        return second_[static_cast<std::size_t>(at(node).second)];
    }

private:
    struct Node {
        Kind kind = Kind::Constant;
        std::int32_t first = 0;  ///< operands
        std::int32_t count = 0;
        std::int32_t second = -1;  ///< of functions: into second_
        LocalRule rule = nullptr;
        double constant = 0.0;            ///< of constants and sums
        ExpressionIndex expression = -1;  ///< of choices and steps
    };

    [[nodiscard]] const Node& at(std::int32_t node) const {
        return node_[static_cast<std::size_t>(node)];
    }
    [[nodiscard]] const AffineTerm& termOf(ExpressionIndex e) const {
        return term_[static_cast<std::size_t>(e)];
    }
    AffineTerm translate(ExpressionIndex e);
    AffineTerm translateSum(ExpressionIndex e);
    AffineTerm translateProduct(std::span<const ExpressionIndex> factors);
    AffineTerm translateFold(ExpressionIndex e, LocalRule rule);
    AffineTerm translateChoice(ExpressionIndex e);
    AffineTerm translateScalarProduct(ExpressionIndex e);
    AffineTerm translateStep(ExpressionIndex e);
    AffineTerm times(const AffineTerm& a, const AffineTerm& b);
    AffineTerm apply(LocalRule rule, const AffineTerm& a, const AffineTerm* b);
    AffineTerm sumOf(std::vector<std::pair<std::int32_t, double>>& terms, double constant);
    void addTo(std::vector<std::pair<std::int32_t, double>>& terms, double& constant,
               ExpressionIndex e, double factor) const;
    std::int32_t append(Node node, std::span<const std::int32_t> operands);
    std::int32_t constantNode(double value);
    void evaluateStep(const Node& node, std::int32_t index);
    [[nodiscard]] std::int32_t chosenBy(const Node& node) const;

    const ClosedModel& model_;
    std::vector<Node> node_;
    std::vector<std::int32_t> operand_;
    std::vector<double> slope_;  ///< [nbOperands]; of sums: the coefficients
    std::vector<double> value_;  ///< [nbNodes]
    std::vector<LocalDerivatives> second_;
    std::vector<AffineTerm> term_;                                            ///< [nbExpressions]
    std::vector<std::uint8_t> isTranslated_;                                  ///< [nbExpressions]
    std::unordered_map<std::uint64_t, std::vector<std::int32_t>> functions_;  ///< by hash, to share
    std::unordered_map<double, std::int32_t> constants_;
    std::vector<Value> scratch_;  ///< [nbExpressions] for steps
};

}  // namespace engine
