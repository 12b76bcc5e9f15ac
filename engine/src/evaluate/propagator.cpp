#include "evaluate/propagator.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <functional>

#include "operators/operator_row.hpp"

namespace engine {
namespace {

Range rangeOfConstant(Value v) {
    const double d = v.asDouble();
    if (v.isInt() && std::fabs(d) >= largestExactInteger) return {below(d), above(d), false};
    return {d, d, false};
}

/// Whether a narrowing is worth the visits it causes: slow convergence of continuous ranges ends.
bool isSignificant(const Range& before, const Range& after, bool isInteger) {
    if (before.mayBeNan != after.mayBeNan || isInteger) return true;
    if (std::isinf(before.lower) != std::isinf(after.lower)) return true;
    if (std::isinf(before.upper) != std::isinf(after.upper)) return true;
    const double width =
        std::isinf(before.upper - before.lower) ? 0.0 : before.upper - before.lower;
    // An infinite bound says nothing about the scale.
    double scale = 1.0;
    if (std::isfinite(after.lower) && std::isfinite(after.upper)) {
        scale = std::max(scale, std::min(std::fabs(after.lower), std::fabs(after.upper)));
    }
    const double least = std::max(1e-3 * width, 1e-9 * scale);
    return after.lower - before.lower > least || before.upper - after.upper > least ||
           after.isPoint();
}

/// All values that `e` can take when its operands stay in their ranges.
Range imageOf(const ClosedModel& model, ExpressionIndex e, const RangeStore& ranges) {
    const OperatorRow& row = rowOf(model.operatorOf(e));
    const RangeOperands x(model, e, ranges);
    if (row.needsNumbers && x.someIsEmpty()) return {infinity, -infinity, /*mayBeNan=*/true};
    return row.image(x);
}

}  // namespace

void Propagator::Queue::push(std::int32_t rank) {
    if (isWaiting_[static_cast<std::size_t>(rank)]) return;
    isWaiting_[static_cast<std::size_t>(rank)] = true;
    heap_.push_back(rank * direction_);
    std::push_heap(heap_.begin(), heap_.end(), std::greater<>());
}

std::int32_t Propagator::Queue::pop() {
    std::pop_heap(heap_.begin(), heap_.end(), std::greater<>());
    const std::int32_t rank = heap_.back() * direction_;
    heap_.pop_back();
    isWaiting_[static_cast<std::size_t>(rank)] = false;
    return rank;
}

void Propagator::Queue::clear() {
    for (const std::int32_t entry : heap_) {
        const std::int32_t rank = entry * direction_;
        isWaiting_[static_cast<std::size_t>(rank)] = false;
    }
    heap_.clear();
}

Propagator::Propagator(const ClosedModel& model)
    : model_(model),
      ranges_(model.op.size()),
      forward_(model.op.size(), 1),
      backward_(model.op.size(), -1) {}

bool Propagator::isOperator(ExpressionIndex e) const {
    return model_.operatorOf(e) != LS_OP_CONST &&
           model_.decisionOf[static_cast<std::size_t>(e)] < 0;
}

void Propagator::initialise(const std::vector<Interval>& domain) {
    for (const ExpressionIndex e : model_.order) {
        const auto i = static_cast<std::size_t>(e);
        if (model_.operatorOf(e) == LS_OP_CONST) {
            ranges_.set(e, rangeOfConstant(model_.constantValue[i]));
        } else if (const DecisionIndex d = model_.decisionOf[i]; d >= 0) {
            const Interval own = domain[static_cast<std::size_t>(d)];
            ranges_.set(e, {own.lower, own.upper, false});
        } else {
            ranges_.set(e, rounded(e, imageOf(model_, e, ranges_)));
            work_ += static_cast<std::int64_t>(model_.operandsOf(e).size()) + 1;
        }
        const Range r = ranges_.of(e);
        if (r.isEmpty() && !r.mayBeNan) conflict_ = true;
    }
}

bool Propagator::start(const std::vector<Interval>& domain, std::int64_t workLimit) {
    const std::int64_t end = work_ + workLimit;
    conflict_ = false;
    keepsTrail_ = false;
    trail_.clear();
    initialise(domain);
    for (const ExpressionIndex e : model_.constraint) {
        if (conflict_) break;
        restrictToTrue(model_, e, *this);
        if (isOperator(e)) backward_.push(model_.rank[static_cast<std::size_t>(e)]);
    }
    return settle(end);
}

bool Propagator::restrictDecision(DecisionIndex d, Interval interval, std::int64_t workLimit) {
    assert(!conflict_);
    const std::int64_t end = work_ + workLimit;
    restrict(model_.decision[static_cast<std::size_t>(d)], interval.lower, interval.upper);
    return settle(end);
}

bool Propagator::restrictAll(std::span<const ValueLimit> restrictions, std::int64_t workLimit) {
    assert(!conflict_);
    const std::int64_t end = work_ + workLimit;
    for (const ValueLimit& r : restrictions) restrict(r.expression, r.lower, r.upper);
    return settle(end);
}

bool Propagator::settle(std::int64_t workLimit) {
    while (!conflict_ && work_ < workLimit && !(forward_.isEmpty() && backward_.isEmpty())) {
        if (!forward_.isEmpty()) {
            visitForward(model_.order[static_cast<std::size_t>(forward_.pop())]);
        } else {
            visitBackward(model_.order[static_cast<std::size_t>(backward_.pop())]);
        }
    }
    forward_.clear();
    backward_.clear();
    return !conflict_;
}

void Propagator::visitForward(ExpressionIndex e) {
    work_ += static_cast<std::int64_t>(model_.operandsOf(e).size()) + 1;
    const Range image = rounded(e, imageOf(model_, e, ranges_));
    const Range own = ranges_.of(e);
    const Range both{std::max(own.lower, image.lower), std::min(own.upper, image.upper),
                     own.mayBeNan && image.mayBeNan};
    replace(e, both, /*fromAbove=*/false);
    // Where more is known than the operands say, they have something to learn.
    const bool knowsMore =
        both.lower > image.lower || both.upper < image.upper || both.mayBeNan != image.mayBeNan;
    if (knowsMore && !both.mayBeNan) backward_.push(model_.rank[static_cast<std::size_t>(e)]);
}

void Propagator::visitBackward(ExpressionIndex e) {
    const Range own = ranges_.of(e);
    if (own.mayBeNan) return;
    work_ += static_cast<std::int64_t>(model_.operandsOf(e).size()) + 1;
    // An infinite result may be an overflow: its operands need not be infinite.
    if (own.lower == infinity || own.upper == -infinity) return;
    rowOf(model_.operatorOf(e)).narrowing(NarrowingStep(model_, e, *this));
}

/// Integer expressions have whole values; the infinite ones beyond 64 bits stay.
Range Propagator::rounded(ExpressionIndex e, Range r) const {
    if (model_.isDouble[static_cast<std::size_t>(e)] != 0) return r;
    return {std::ceil(r.lower), std::floor(r.upper), r.mayBeNan};
}

void Propagator::restrict(ExpressionIndex e, double lower, double upper) {
    if (conflict_) return;
    const Range own = ranges_.of(e);
    const Range narrowed =
        rounded(e, {std::max(own.lower, lower), std::min(own.upper, upper), /*mayBeNan=*/false});
    replace(e, narrowed, /*fromAbove=*/true);
}

void Propagator::replace(ExpressionIndex e, const Range& r, bool fromAbove) {
    const auto i = static_cast<std::size_t>(e);
    const Range own = ranges_.of(e);
    if (r.lower == own.lower && r.upper == own.upper && r.mayBeNan == own.mayBeNan) return;
    const bool significant = isSignificant(own, r, model_.isDouble[i] == 0);
    if (keepsTrail_) trail_.push_back({e, own});
    ranges_.set(e, r);
    if (r.isEmpty() && !r.mayBeNan) {
        conflict_ = true;
        return;
    }
    if (!significant) return;
    if (fromAbove && isOperator(e)) backward_.push(model_.rank[i]);
    for (const ExpressionIndex user : model_.usersOf(e)) {
        if (isOperator(user)) forward_.push(model_.rank[static_cast<std::size_t>(user)]);
    }
}

std::size_t Propagator::mark() {
    keepsTrail_ = true;
    return trail_.size();
}

void Propagator::undoTo(std::size_t mark) {
    while (trail_.size() > mark) {
        ranges_.set(trail_.back().expression, trail_.back().range);
        trail_.pop_back();
    }
    conflict_ = false;
}

}  // namespace engine
