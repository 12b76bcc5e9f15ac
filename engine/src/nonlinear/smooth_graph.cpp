#include "nonlinear/smooth_graph.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "operators/operator_row.hpp"

namespace engine {
namespace {

double finiteOr0(double v) {
    return std::isfinite(v) ? v : 0.0;
}

std::uint64_t mixed(std::uint64_t h, std::uint64_t v) {
    return (h ^ v) * 0x9E3779B97F4A7C15ULL + (h >> 29);
}

}  // namespace

SmoothGraph::SmoothGraph(const ClosedModel& model)
    : model_(model),
      term_(model.op.size()),
      isTranslated_(model.op.size(), 0),
      scratch_(model.op.size()) {
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        Node node;
        node.kind = Kind::Variable;
        const std::int32_t index = append(node, {});
        const auto e = static_cast<std::size_t>(model.decision[static_cast<std::size_t>(d)]);
        term_[e] = {index, 1.0, 0.0};
        isTranslated_[e] = 1;
    }
}

std::int32_t SmoothGraph::append(Node node, std::span<const std::int32_t> operands) {
    node.first = static_cast<std::int32_t>(operand_.size());
    node.count = static_cast<std::int32_t>(operands.size());
    operand_.insert(operand_.end(), operands.begin(), operands.end());
    slope_.resize(operand_.size(), 0.0);
    if (node.kind == Kind::Function) {
        node.second = static_cast<std::int32_t>(second_.size());
        second_.emplace_back();
    }
    node_.push_back(node);
    value_.push_back(node.constant);
    return nbNodes() - 1;
}

std::int32_t SmoothGraph::constantNode(double value) {
    const auto [place, isNew] = constants_.try_emplace(value, nbNodes());
    if (isNew || std::isnan(value)) {
        Node node;
        node.constant = value;
        place->second = append(node, {});
    }
    return place->second;
}

std::int32_t SmoothGraph::nodeOf(const AffineTerm& term) {
    if (term.isConstant()) return constantNode(term.constant);
    if (term.factor == 1.0 && term.constant == 0.0) return term.node;
    Node node;
    node.kind = Kind::Sum;
    node.constant = term.constant;
    const std::int32_t operand[] = {term.node};
    const std::int32_t index = append(node, operand);
    slope_.back() = term.factor;
    return index;
}

/// Translates what `root` depends on, operands first, without recursion.
AffineTerm SmoothGraph::add(ExpressionIndex root) {
    std::vector<ExpressionIndex> open{root};
    while (!open.empty()) {
        const ExpressionIndex e = open.back();
        if (isTranslated_[static_cast<std::size_t>(e)] == 1) {
            open.pop_back();
            continue;
        }
        const std::size_t before = open.size();
        for (const ExpressionIndex x : model_.operandsOf(e)) {
            if (isTranslated_[static_cast<std::size_t>(x)] == 0) open.push_back(x);
        }
        if (open.size() > before) continue;
        term_[static_cast<std::size_t>(e)] = translate(e);
        isTranslated_[static_cast<std::size_t>(e)] = 1;
        open.pop_back();
    }
    return termOf(root);
}

AffineTerm SmoothGraph::translate(ExpressionIndex e) {
    const auto x = model_.operandsOf(e);
    const SmoothRow& row = smoothTable[static_cast<std::size_t>(model_.operatorOf(e))];
    switch (row.shape) {
        case SmoothShape::Sum:
            return translateSum(e);
        case SmoothShape::Product:
            return translateProduct(x);
        case SmoothShape::Function:
            return apply(row.rule, termOf(x[0]), nullptr);
        case SmoothShape::Pair:
            if (row.op == LS_OP_DIV && termOf(x[1]).isConstant() && termOf(x[1]).constant != 0.0) {
                return times(termOf(x[0]), {-1, 1.0, 1.0 / termOf(x[1]).constant});
            }
            return apply(row.rule, termOf(x[0]), &termOf(x[1]));
        case SmoothShape::Fold:
            return translateFold(e, row.rule);
        case SmoothShape::Choice:
            return translateChoice(e);
        case SmoothShape::ScalarProduct:
            return translateScalarProduct(e);
        case SmoothShape::Step:
            return translateStep(e);
        case SmoothShape::Leaf:
            return {-1, 1.0, model_.constantValue[static_cast<std::size_t>(e)].asDouble()};
        case SmoothShape::Array:
            break;
    }
    return {};
}

void SmoothGraph::addTo(std::vector<std::pair<std::int32_t, double>>& terms, double& constant,
                        ExpressionIndex e, double factor) const {
    const AffineTerm& t = termOf(e);
    constant += factor * t.constant;
    if (t.isConstant()) return;
    const Node& node = at(t.node);
    // A sum that is needed here alone is flattened; a shared one stays a node, so that what stands
    // for it is not written out again and again.
    const bool isOwn = node.kind == Kind::Sum && (model_.usersOf(e).size() <= 1 || node.count <= 2);
    if (!isOwn) {
        terms.emplace_back(t.node, factor * t.factor);
        return;
    }
    constant += factor * t.factor * node.constant;
    for (std::size_t k = 0; k < static_cast<std::size_t>(node.count); ++k) {
        const std::size_t position = static_cast<std::size_t>(node.first) + k;
        terms.emplace_back(operand_[position], factor * t.factor * slope_[position]);
    }
}

AffineTerm SmoothGraph::sumOf(std::vector<std::pair<std::int32_t, double>>& terms,
                              double constant) {
    std::sort(terms.begin(), terms.end());
    std::vector<std::int32_t> operands;
    std::vector<double> coefficients;
    for (std::size_t k = 0; k < terms.size();) {
        const std::int32_t node = terms[k].first;
        double coefficient = 0.0;
        for (; k < terms.size() && terms[k].first == node; ++k) coefficient += terms[k].second;
        if (coefficient == 0.0) continue;
        operands.push_back(node);
        coefficients.push_back(coefficient);
    }
    if (operands.empty()) return {-1, 1.0, constant};
    if (operands.size() == 1) return {operands[0], coefficients[0], constant};
    Node node;
    node.kind = Kind::Sum;
    node.constant = constant;
    const std::int32_t index = append(node, operands);
    std::copy(coefficients.begin(), coefficients.end(),
              slope_.end() - static_cast<std::ptrdiff_t>(coefficients.size()));
    return {index, 1.0, 0.0};
}

AffineTerm SmoothGraph::translateSum(ExpressionIndex e) {
    std::vector<std::pair<std::int32_t, double>> terms;
    double constant = 0.0;
    double factor = 1.0;
    for (const ExpressionIndex x : model_.operandsOf(e)) {
        addTo(terms, constant, x, factor);
        if (model_.operatorOf(e) == LS_OP_SUB) factor = -1.0;
    }
    return sumOf(terms, constant);
}

AffineTerm SmoothGraph::addDifference(ExpressionIndex plus, ExpressionIndex minus) {
    add(plus);
    add(minus);
    std::vector<std::pair<std::int32_t, double>> terms;
    double constant = 0.0;
    addTo(terms, constant, plus, 1.0);
    addTo(terms, constant, minus, -1.0);
    return sumOf(terms, constant);
}

AffineTerm SmoothGraph::times(const AffineTerm& a, const AffineTerm& b) {
    if (a.isConstant() && b.isConstant()) return {-1, 1.0, a.constant * b.constant};
    if (a.isConstant()) return times(b, a);
    if (b.isConstant()) {
        if (b.constant == 0.0) return {-1, 1.0, 0.0};
        return {a.node, a.factor * b.constant, a.constant * b.constant};
    }
    const bool isPure = a.constant == 0.0 && b.constant == 0.0;
    if (!isPure) return apply(productRule, a, &b);
    const AffineTerm first{a.node, 1.0, 0.0};
    const AffineTerm second{b.node, 1.0, 0.0};
    AffineTerm result = apply(productRule, first, &second);
    result.factor = a.factor * b.factor;
    return result;
}

AffineTerm SmoothGraph::translateProduct(std::span<const ExpressionIndex> factors) {
    AffineTerm result{-1, 1.0, 1.0};
    for (const ExpressionIndex x : factors) result = times(result, termOf(x));
    return result;
}

AffineTerm SmoothGraph::translateFold(ExpressionIndex e, LocalRule rule) {
    const auto x = model_.operandsOf(e);
    AffineTerm result = termOf(x[0]);
    for (const ExpressionIndex next : x.subspan(1)) result = apply(rule, result, &termOf(next));
    return result;
}

AffineTerm SmoothGraph::translateScalarProduct(ExpressionIndex e) {
    const auto x = model_.operandsOf(e);
    const auto a = model_.operandsOf(x[0]);
    const auto b = model_.operandsOf(x[1]);
    if (a.size() != b.size()) return {-1, 1.0, std::numeric_limits<double>::quiet_NaN()};
    std::vector<std::pair<std::int32_t, double>> terms;
    double constant = 0.0;
    for (std::size_t k = 0; k < a.size(); ++k) {
        const AffineTerm product = times(termOf(a[k]), termOf(b[k]));
        constant += product.constant;
        if (!product.isConstant()) terms.emplace_back(product.node, product.factor);
    }
    return sumOf(terms, constant);
}

/// `if` chooses among its second and third operand, `at` among the elements of its array.
AffineTerm SmoothGraph::translateChoice(ExpressionIndex e) {
    const auto x = model_.operandsOf(e);
    const bool isIf = model_.operatorOf(e) == LS_OP_IF;
    const AffineTerm chooser = termOf(isIf ? x[0] : x[1]);
    const auto options = isIf ? x.subspan(1) : model_.operandsOf(x[0]);
    if (chooser.isConstant()) {
        const double c = chooser.constant;
        if (isIf) return std::isnan(c) ? chooser : termOf(options[c != 0.0 ? 0 : 1]);
        if (c >= 0.0 && c < static_cast<double>(options.size())) {
            return termOf(options[static_cast<std::size_t>(c)]);
        }
        return {-1, 1.0, std::numeric_limits<double>::quiet_NaN()};
    }
    std::vector<std::int32_t> operands{nodeOf(chooser)};
    for (const ExpressionIndex option : options) operands.push_back(nodeOf(termOf(option)));
    Node node;
    node.kind = Kind::Choice;
    node.expression = e;
    return {append(node, operands), 1.0, 0.0};
}

AffineTerm SmoothGraph::translateStep(ExpressionIndex e) {
    std::vector<std::int32_t> operands;
    bool isConstant = true;
    for (const ExpressionIndex x : model_.operandsOf(e)) {
        isConstant = isConstant && termOf(x).isConstant();
        operands.push_back(nodeOf(termOf(x)));
    }
    Node node;
    node.kind = Kind::Step;
    node.expression = e;
    if (isConstant) {
        for (std::size_t k = 0; k < operands.size(); ++k) {
            const auto x = static_cast<std::size_t>(model_.operandsOf(e)[k]);
            scratch_[x] = Value::ofDouble(termOf(static_cast<ExpressionIndex>(x)).constant);
        }
        return {-1, 1.0, computeValue(model_, e, scratch_).asDouble()};
    }
    return {append(node, operands), 1.0, 0.0};
}

AffineTerm SmoothGraph::apply(LocalRule rule, const AffineTerm& a, const AffineTerm* b) {
    if (a.isConstant() && (b == nullptr || b->isConstant())) {
        return {-1, 1.0, rule(a.constant, b == nullptr ? 0.0 : b->constant).value};
    }
    const bool isSquare =
        b != nullptr && rule == powerRule && b->isConstant() && b->constant == 2.0;
    if (isSquare) return apply(squareRule, a, nullptr);
    if (b != nullptr && rule == powerRule && b->isConstant() && b->constant == 1.0) return a;
    std::vector<std::int32_t> operands{nodeOf(a)};
    if (b != nullptr) {
        if (rule == productRule && b->node == a.node && b->factor == a.factor &&
            b->constant == a.constant) {
            return apply(squareRule, a, nullptr);
        }
        std::int32_t second = nodeOf(*b);
        // Operands of a node are different nodes: an equal one is hidden behind a sum of its own.
        if (second == operands[0]) {
            Node copy;
            copy.kind = Kind::Sum;
            const std::int32_t original[] = {second};
            second = append(copy, original);
            slope_.back() = 1.0;
        }
        operands.push_back(second);
        if (rule == productRule) std::sort(operands.begin(), operands.end());
    }
    std::uint64_t hash = std::bit_cast<std::uint64_t>(rule);
    for (const std::int32_t x : operands) hash = mixed(hash, static_cast<std::uint64_t>(x));
    std::vector<std::int32_t>& alike = functions_[hash];
    for (const std::int32_t k : alike) {
        const auto x = operandsOf(k);
        if (at(k).rule == rule && std::equal(x.begin(), x.end(), operands.begin(), operands.end()))
            return {k, 1.0, 0.0};
    }
    Node node;
    node.kind = Kind::Function;
    node.rule = rule;
    alike.push_back(append(node, operands));
    return {alike.back(), 1.0, 0.0};
}

void SmoothGraph::keepOnly(std::span<std::int32_t> roots) {
    std::vector<std::uint8_t> isKept(node_.size(), 0);
    std::fill_n(isKept.begin(), nbVariables(), 1);
    for (const std::int32_t root : roots) isKept[static_cast<std::size_t>(root)] = 1;
    for (std::int32_t k = nbNodes(); k-- > 0;) {
        if (isKept[static_cast<std::size_t>(k)] == 0) continue;
        for (const std::int32_t x : operandsOf(k)) isKept[static_cast<std::size_t>(x)] = 1;
    }
    const std::vector<Node> nodes = std::move(node_);
    const std::vector<std::int32_t> operands = std::move(operand_);
    const std::vector<double> slopes = std::move(slope_);
    node_.clear();
    operand_.clear();
    slope_.clear();
    value_.clear();
    second_.clear();
    std::vector<std::int32_t> numberOf(nodes.size(), -1);
    for (std::size_t k = 0; k < nodes.size(); ++k) {
        if (isKept[k] == 0) continue;
        const auto first = static_cast<std::size_t>(nodes[k].first);
        const auto count = static_cast<std::size_t>(nodes[k].count);
        std::vector<std::int32_t> mine(count);
        for (std::size_t i = 0; i < count; ++i) {
            mine[i] = numberOf[static_cast<std::size_t>(operands[first + i])];
        }
        numberOf[k] = append(nodes[k], mine);
        std::copy_n(slopes.begin() + static_cast<std::ptrdiff_t>(first), count,
                    slope_.end() - static_cast<std::ptrdiff_t>(count));
    }
    for (std::int32_t& root : roots) root = numberOf[static_cast<std::size_t>(root)];
    // What led here is no longer true, and no longer needed.
    functions_.clear();
    constants_.clear();
    term_.clear();
    isTranslated_.clear();
}

void SmoothGraph::evaluateStep(const Node& node, std::int32_t index) {
    const auto x = model_.operandsOf(node.expression);
    for (std::size_t k = 0; k < x.size(); ++k) {
        scratch_[static_cast<std::size_t>(x[k])] =
            Value::ofDouble(valueOf(operand_[static_cast<std::size_t>(node.first) + k]));
    }
    value_[static_cast<std::size_t>(index)] =
        computeValue(model_, node.expression, scratch_).asDouble();
}

/// Position of the chosen operand within the node, or 0 when there is none.
std::int32_t SmoothGraph::chosenBy(const Node& node) const {
    const double c = valueOf(operand_[static_cast<std::size_t>(node.first)]);
    if (std::isnan(c)) return 0;
    if (model_.operatorOf(node.expression) == LS_OP_IF) return c != 0.0 ? 1 : 2;
    return c >= 0.0 && c < node.count - 1 ? static_cast<std::int32_t>(c) + 1 : 0;
}

void SmoothGraph::evaluate(std::span<const double> x) {
    std::copy(x.begin(), x.end(), value_.begin());
    for (std::int32_t k = nbVariables(); k < nbNodes(); ++k) {
        const Node& node = at(k);
        const auto first = static_cast<std::size_t>(node.first);
        double& value = value_[static_cast<std::size_t>(k)];
        switch (node.kind) {
            case Kind::Sum: {
                double sum = node.constant;
                for (std::size_t i = first; i < first + static_cast<std::size_t>(node.count); ++i) {
                    sum += slope_[i] * valueOf(operand_[i]);
                }
                value = sum;
                break;
            }
            case Kind::Function: {
                LocalDerivatives& local = second_[static_cast<std::size_t>(node.second)];
                local = node.rule(valueOf(operand_[first]),
                                  node.count > 1 ? valueOf(operand_[first + 1]) : 0.0);
                value = local.value;
                break;
            }
            case Kind::Choice: {
                const std::int32_t chosen = chosenBy(node);
                value = chosen == 0 ? std::numeric_limits<double>::quiet_NaN()
                                    : valueOf(operand_[first + static_cast<std::size_t>(chosen)]);
                break;
            }
            case Kind::Step:
                evaluateStep(node, k);
                break;
            case Kind::Constant:
            case Kind::Variable:
                break;
        }
    }
}

void SmoothGraph::differentiate() {
    for (std::int32_t k = nbVariables(); k < nbNodes(); ++k) {
        const Node& node = at(k);
        const auto first = static_cast<std::size_t>(node.first);
        if (node.kind == Kind::Function) {
            LocalDerivatives& local = second_[static_cast<std::size_t>(node.second)];
            local.byAA = finiteOr0(local.byAA);
            local.byAB = finiteOr0(local.byAB);
            local.byBB = finiteOr0(local.byBB);
            slope_[first] = finiteOr0(local.byA);
            if (node.count > 1) slope_[first + 1] = finiteOr0(local.byB);
        } else if (node.kind == Kind::Choice) {
            const auto chosen = static_cast<std::size_t>(chosenBy(node));
            for (std::size_t i = 1; i < static_cast<std::size_t>(node.count); ++i) {
                slope_[first + i] = i == chosen ? 1.0 : 0.0;
            }
        }
    }
}

}  // namespace engine
