#include "evaluate/violation_ledger.hpp"

#include <cassert>
#include <cmath>

namespace engine {

void ViolationLedger::setViolation(std::size_t i, double violation) {
    assert(violation >= 0.0 && std::isfinite(violation));
    weighted_ += weight_[i] * (violation - violation_[i]);
    total_ += violation - violation_[i];
    violation_[i] = violation;
    const bool isMember = position_[i] >= 0;
    if (violation > 0.0 && !isMember) {
        position_[i] = static_cast<std::int32_t>(violated_.size());
        violated_.push_back(i);
    } else if (violation <= 0.0 && isMember) {
        const std::size_t last = violated_.back();
        violated_[static_cast<std::size_t>(position_[i])] = last;
        position_[last] = position_[i];
        position_[i] = -1;
        violated_.pop_back();
        if (violated_.empty()) weighted_ = total_ = 0.0;
    }
}

void ViolationLedger::setWeight(std::size_t i, double weight) {
    weighted_ += violation_[i] * (weight - weight_[i]);
    weight_[i] = weight;
}

void ViolationLedger::refresh() {
    weighted_ = total_ = 0.0;
    for (const std::size_t i : violated_) {
        weighted_ += weight_[i] * violation_[i];
        total_ += violation_[i];
    }
}

}  // namespace engine
