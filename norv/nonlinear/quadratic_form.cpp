#include "nonlinear/quadratic_form.hpp"

#include <utility>

namespace norv {

namespace {

/// Multiplying out may make this many terms of the terms of the factors.
constexpr std::size_t growth = 10;
constexpr std::size_t growthOfSmall = 100;

/// Walks down from a root and carries the constant by which each node is multiplied.
class Collector {
public:
    explicit Collector(const ExpressionStore& expressions) : store_(expressions) {}

    /// Adds the root to `form`. @return false when it is not of the degree.
    bool collect(NodeIndex root, int degree, QuadraticForm& form);

private:
    struct Part {
        NodeIndex node;
        double factor;
    };

    bool take(const Part& part, int degree, QuadraticForm& form, std::vector<Part>& parts);
    bool takeProduct(const Part& part, int degree, QuadraticForm& form, std::vector<Part>& parts);
    bool multiplyOut(NodeIndex a, NodeIndex b, double factor, QuadraticForm& form);

    const ExpressionStore& store_;
};

bool Collector::collect(NodeIndex root, int degree, QuadraticForm& form) {
    std::vector<Part> parts = {{root, 1.0}};
    while (!parts.empty()) {
        const Part part = parts.back();
        parts.pop_back();
        if (!std::isfinite(part.factor) || !take(part, degree, form, parts)) return false;
    }
    return true;
}

bool Collector::take(const Part& part, int degree, QuadraticForm& form, std::vector<Part>& parts) {
    const auto operands = store_.operandsOf(part.node);
    switch (store_.kind(part.node)) {
        case NodeKind::constant:
            form.constant += part.factor * store_.valueOf(part.node);
            return std::isfinite(form.constant);
        case NodeKind::variable:
            form.linear.push_back({part.node, part.factor});
            return true;
        case NodeKind::sum:
            for (std::size_t k = operands.size(); k-- > 0;)
                parts.push_back({operands[k], part.factor});
            return true;
        case NodeKind::difference:
            parts.push_back({operands[1], -part.factor});
            parts.push_back({operands[0], part.factor});
            return true;
        case NodeKind::negation:
            parts.push_back({operands[0], -part.factor});
            return true;
        case NodeKind::quotient:
            if (!store_.isConstant(operands[1])) return false;
            parts.push_back({operands[0], part.factor / store_.valueOf(operands[1])});
            return true;
        case NodeKind::product:
            return takeProduct(part, degree, form, parts);
        case NodeKind::call:
            return store_.functionOf(part.node) == Function::sqr && degree == 2 &&
                   multiplyOut(operands[0], operands[0], part.factor, form);
        case NodeKind::foreign:
            break;
    }
    return false;
}

bool Collector::takeProduct(const Part& part, int degree, QuadraticForm& form,
                            std::vector<Part>& parts) {
    double factor = part.factor;
    NodeIndex others[2] = {noNode, noNode};
    std::size_t nbOthers = 0;
    for (const NodeIndex each : store_.operandsOf(part.node)) {
        if (store_.isConstant(each)) {
            factor *= store_.valueOf(each);
        } else if (nbOthers == 2) {
            return false;
        } else {
            others[nbOthers++] = each;
        }
    }
    if (nbOthers == 0) return false;  // constants whose product is no finite number
    if (nbOthers == 2) return degree == 2 && multiplyOut(others[0], others[1], factor, form);
    parts.push_back({others[0], factor});
    return true;
}

bool Collector::multiplyOut(NodeIndex a, NodeIndex b, double factor, QuadraticForm& form) {
    QuadraticForm left;
    QuadraticForm right;
    if (!std::isfinite(factor) || !collect(a, 1, left)) return false;
    if (a != b && !collect(b, 1, right)) return false;
    if (a == b) right = left;
    const std::size_t nbLeft = left.linear.size() + 1;
    const std::size_t nbRight = right.linear.size() + 1;
    if (nbLeft * nbRight > growthOfSmall + growth * (nbLeft + nbRight)) return false;
    form.constant += factor * left.constant * right.constant;
    for (const auto& [j, c] : left.linear) {
        if (right.constant != 0.0) form.linear.push_back({j, factor * c * right.constant});
        for (const auto& [k, d] : right.linear) form.quadratic.push_back({j, k, factor * c * d});
    }
    if (left.constant == 0.0) return true;
    for (const auto& [k, d] : right.linear) form.linear.push_back({k, factor * left.constant * d});
    return true;
}

}  // namespace

std::optional<QuadraticForm> findQuadraticForm(const ExpressionStore& store, NodeIndex root) {
    QuadraticForm form;
    if (!Collector(store).collect(root, 2, form)) return {};
    bool isFinite = std::isfinite(form.constant);
    for (const LinearTerm& each : form.linear) isFinite &= std::isfinite(each.coefficient);
    // Twice, because that is how diagonal entries are handed on.
    for (const QuadraticTerm& each : form.quadratic)
        isFinite &= std::isfinite(2.0 * each.coefficient);
    if (!isFinite) return {};
    return form;
}

}  // namespace norv
