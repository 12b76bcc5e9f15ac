#pragma once

#include <span>
#include <utility>
#include <vector>

#include "evaluate/gradient.hpp"
#include "evaluate/partial_evaluation.hpp"
#include "search/restrictions.hpp"

namespace engine {

/// Makes equations hold to the last bit, each by one float of its own: Newton steps, then single
/// steps through the doubles.
class ExactEquality {
public:
    /// The model and the domain [nbDecisions] outlive this. @param floats  that may move.
    ExactEquality(const ClosedModel& model, const std::vector<Interval>& domain,
                  std::vector<DecisionIndex> floats)
        : model_(model),
          domain_(domain),
          floats_(std::move(floats)),
          gradient_(model),
          evaluation_(model) {}

    /// Closes the gap between the equation's sides if some float can; else nothing moves.
    /// @param values  of all expressions; after a move those that the equation does not depend on
    ///                may be out of date.
    /// O(expressions); after a hundred equations it does nothing.
    void close(const Restriction& equation, Point& point, std::vector<Value>& values);

private:
    void chooseFloat(const Restriction& equation, std::span<const Value> values);

    const ClosedModel& model_;
    const std::vector<Interval>& domain_;
    std::vector<DecisionIndex> floats_;  ///< those that no equation has taken
    Gradient gradient_;
    PartialEvaluation evaluation_;
    std::size_t chosen_ = 0;  ///< position in floats_, or its size
    double slope_ = 0.0;      ///< of the gap by the chosen float
    int nbTried_ = 0;
};

}  // namespace engine
