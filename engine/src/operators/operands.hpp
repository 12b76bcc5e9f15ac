#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "model/closed_model.hpp"
#include "operators/range_store.hpp"

namespace engine {

/// The operands of one expression, by position from 0. The views below add what is known of them.
class Operands {
public:
    Operands(const ClosedModel& model, ExpressionIndex e)
        : model_(model), expression_(e), indices_(model.operandsOf(e)) {}

    [[nodiscard]] std::size_t size() const { return indices_.size(); }
    [[nodiscard]] ExpressionIndex indexOf(std::size_t k) const { return indices_[k]; }
    [[nodiscard]] std::span<const ExpressionIndex> indices() const { return indices_; }
    /// The expression that they are the operands of, and its static type.
    [[nodiscard]] ExpressionIndex expression() const { return expression_; }
    [[nodiscard]] bool isInteger() const {
        return model_.isDouble[static_cast<std::size_t>(expression_)] == 0;
    }
    [[nodiscard]] const ClosedModel& model() const { return model_; }

private:
    const ClosedModel& model_;
    ExpressionIndex expression_;
    std::span<const ExpressionIndex> indices_;
};

/// The operands' values. @param values  [nbExpressions]; an array has no value of its own.
class ValueOperands : public Operands {
public:
    ValueOperands(const ClosedModel& model, ExpressionIndex e, std::span<const Value> values)
        : Operands(model, e), values_(values) {}

    [[nodiscard]] Value operator[](std::size_t k) const {
        return values_[static_cast<std::size_t>(indexOf(k))];
    }
    [[nodiscard]] double number(std::size_t k) const { return (*this)[k].asDouble(); }
    /// The value of the expression itself, where it has been computed.
    [[nodiscard]] Value own() const { return values_[static_cast<std::size_t>(expression())]; }
    /// The elements of operand `k`, an array.
    [[nodiscard]] ValueOperands elementsOf(std::size_t k) const {
        return {model(), indexOf(k), values_};
    }

private:
    std::span<const Value> values_;
};

/// The operands' ranges.
class RangeOperands : public Operands {
public:
    RangeOperands(const ClosedModel& model, ExpressionIndex e, const RangeStore& ranges)
        : Operands(model, e), ranges_(ranges) {}

    [[nodiscard]] Range operator[](std::size_t k) const { return ranges_.of(indexOf(k)); }
    [[nodiscard]] RangeOperands elementsOf(std::size_t k) const {
        return {model(), indexOf(k), ranges_};
    }
    [[nodiscard]] bool someIsEmpty() const {
        return std::any_of(indices().begin(), indices().end(),
                           [this](ExpressionIndex e) { return ranges_.of(e).isEmpty(); });
    }
    /// All are integers so small that doubles hold them: relations between them are exact.
    [[nodiscard]] bool areExactIntegers() const {
        return std::all_of(indices().begin(), indices().end(), [this](ExpressionIndex e) {
            const Range r = ranges_.of(e);
            return model().isDouble[static_cast<std::size_t>(e)] == 0 &&
                   r.lower > -largestExactInteger && r.upper < largestExactInteger;
        });
    }

private:
    const RangeStore& ranges_;
};

}  // namespace engine
