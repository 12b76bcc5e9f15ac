#include "evaluate/evaluator.hpp"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <functional>

#include "operators/operator_row.hpp"

namespace engine {
namespace {

std::size_t index(std::int32_t i) {
    return static_cast<std::size_t>(i);
}

/// Bit for bit, so that NaN equals itself and an integer differs from the double of its size.
bool isSame(Value a, Value b) {
    if (a.isInt() != b.isInt()) return false;
    if (a.isInt()) return a.asInt() == b.asInt();
    return std::bit_cast<std::uint64_t>(a.asDouble()) == std::bit_cast<std::uint64_t>(b.asDouble());
}

bool isSame(const Distance& a, const Distance& b) {
    return a.toTrue == b.toTrue && a.toFalse == b.toFalse;
}

}  // namespace

Evaluator::Evaluator(const ClosedModel& model)
    : plan_(model),
      value_(model.constantValue),
      sum_(index(plan_.nbSums())),
      distance_(plan_.logic().size()),
      ledger_(plan_.constraints().size()),
      firstOfLevel_(index(plan_.nbLevels()), none),
      nextTouched_(value_.size(), none),
      isTouched_(value_.size(), 0),
      valueSegment_(value_.size(), 0),
      sumSegment_(sum_.size(), 0),
      distanceSegment_(distance_.size(), 0) {}

void Evaluator::reset(const Point& point) {
    const ClosedModel& model = plan_.model();
    judge(model, point, value_);
    for (const ExpressionIndex e : model.order) {
        if (plan_.sumOf(e) >= 0) sum_[index(plan_.sumOf(e))] = computeSum(e);
    }
    // Operands first: connectives read their operands' distances.
    for (const ExpressionIndex e : model.order) {
        if (plan_.logicOf(e) >= 0) storeDistance(plan_.logicOf(e), computeDistance(e));
    }
    ledger_.refresh();
    commit();
}

void Evaluator::set(DecisionIndex d, Value v) {
    const ExpressionIndex e = plan_.model().decision[index(d)];
    const Value before = value_[index(e)];
    if (isSame(before, v)) return;
    writeValue(e, v);
    if (plan_.logicOf(e) >= 0) updateDistance(e);
    tellUsers(e, /*valueChanged=*/true, before);
}

void Evaluator::propagate() {
    while (!openLevels_.empty()) {
        const std::int32_t level = openLevels_.front();
        const ExpressionIndex e = firstOfLevel_[index(level)];
        firstOfLevel_[index(level)] = nextTouched_[index(e)];
        if (firstOfLevel_[index(level)] == none) {
            std::pop_heap(openLevels_.begin(), openLevels_.end(), std::greater<>());
            openLevels_.pop_back();
        }
        isTouched_[index(e)] = 0;
        recompute(e);
    }
}

void Evaluator::touch(ExpressionIndex e) {
    if (isTouched_[index(e)] != 0) return;
    isTouched_[index(e)] = 1;
    const std::int32_t level = plan_.levelOf(e);
    if (firstOfLevel_[index(level)] == none) {
        openLevels_.push_back(level);
        std::push_heap(openLevels_.begin(), openLevels_.end(), std::greater<>());
    }
    nextTouched_[index(e)] = firstOfLevel_[index(level)];
    firstOfLevel_[index(level)] = e;
}

void Evaluator::recompute(ExpressionIndex e) {
    const ClosedModel& model = plan_.model();
    const Value before = value_[index(e)];
    Value after;
    if (plan_.sumOf(e) >= 0) {
        ExactSum& sum = sum_[index(plan_.sumOf(e))];
        if (sum.isOverflown()) sum = computeSum(e);
        after = sum.total();
    } else {
        after = computeValue(model, e, value_);
    }
    // An array has no value; a change of an element is a change of the array.
    const bool valueChanged = model.operatorOf(e) == LS_OP_ARRAY || !isSame(before, after);
    if (valueChanged) writeValue(e, after);
    const bool distanceChanged = plan_.logicOf(e) >= 0 && updateDistance(e);
    if (valueChanged || distanceChanged) tellUsers(e, valueChanged, before);
}

void Evaluator::tellUsers(ExpressionIndex e, bool valueChanged, Value before) {
    const Value after = value_[index(e)];
    for (const Plan::Link& link : plan_.linksOf(e)) {
        if (valueChanged && link.isTerm) exchangeTerm(link, before, after);
        if (valueChanged || plan_.logicOf(link.target) >= 0) touch(link.target);
    }
}

void Evaluator::exchangeTerm(const Plan::Link& link, Value before, Value after) {
    const std::int32_t s = plan_.sumOf(link.target);
    if (sumSegment_[index(s)] != segment_) {
        sumSegment_[index(s)] = segment_;
        sumLog_.emplace_back(s, sum_[index(s)]);
    }
    sum_[index(s)].remove(multiply(before, link.factor));
    sum_[index(s)].add(multiply(after, link.factor));
}

void Evaluator::writeValue(ExpressionIndex e, Value v) {
    if (valueSegment_[index(e)] != segment_) {
        valueSegment_[index(e)] = segment_;
        valueLog_.push_back({e, value_[index(e)]});
    }
    value_[index(e)] = v;
}

bool Evaluator::updateDistance(ExpressionIndex e) {
    const std::int32_t logicIndex = plan_.logicOf(e);
    const Distance before = distance_[index(logicIndex)];
    const Distance after = computeDistance(e);
    if (isSame(before, after)) return false;
    if (distanceSegment_[index(logicIndex)] != segment_) {
        distanceSegment_[index(logicIndex)] = segment_;
        distanceLog_.push_back({logicIndex, before});
    }
    storeDistance(logicIndex, after);
    return true;
}

void Evaluator::storeDistance(std::int32_t logicIndex, const Distance& distance) {
    distance_[index(logicIndex)] = distance;
    const std::int32_t entry = plan_.entryOf(plan_.logic()[index(logicIndex)]);
    if (entry >= 0) ledger_.setViolation(index(entry), distance.toTrue);
}

Distance Evaluator::computeDistance(ExpressionIndex e) const {
    const ClosedModel& model = plan_.model();
    const double scale = plan_.scaleOf(plan_.logicOf(e));
    return rowOf(model.operatorOf(e))
        .distance({model, e, value_, distance_, plan_.logicPositions(), scale});
}

Value Evaluator::computeAbsorbed(ExpressionIndex e) const {
    return computeValue(plan_.model(), e, value_);
}

ExactSum Evaluator::computeSum(ExpressionIndex e) const {
    ExactSum sum;
    for (std::size_t k = 0; k < plan_.model().operandsOf(e).size(); ++k) {
        const Term term = plan_.termOf(e, k);
        sum.add(multiply(value_[index(term.expression)], term.factor));
    }
    return sum;
}

Evaluator::Mark Evaluator::mark() {
    assert(openLevels_.empty());
    ++segment_;
    return {valueLog_.size(), sumLog_.size(), distanceLog_.size()};
}

void Evaluator::undoTo(const Mark& mark) {
    assert(openLevels_.empty());
    for (std::size_t k = valueLog_.size(); k-- > mark.nbValues;) {
        value_[index(valueLog_[k].expression)] = valueLog_[k].before;
    }
    for (std::size_t k = sumLog_.size(); k-- > mark.nbSums;) {
        sum_[index(sumLog_[k].first)] = sumLog_[k].second;
    }
    for (std::size_t k = distanceLog_.size(); k-- > mark.nbDistances;) {
        storeDistance(distanceLog_[k].logicIndex, distanceLog_[k].before);
    }
    valueLog_.resize(mark.nbValues);
    sumLog_.resize(mark.nbSums);
    distanceLog_.resize(mark.nbDistances);
    // What the undone segment saved is gone from the log: the stamps must not claim otherwise.
    ++segment_;
}

void Evaluator::commit() {
    valueLog_.clear();
    sumLog_.clear();
    distanceLog_.clear();
    ++segment_;
}

std::size_t Evaluator::nbUndefinedObjectives() const {
    std::size_t nbUndefined = 0;
    for (const Objective& o : plan_.model().objective) {
        if (std::isnan(valueOf(o.expression).asDouble())) ++nbUndefined;
    }
    return nbUndefined;
}

}  // namespace engine
