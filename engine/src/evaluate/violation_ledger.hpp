#pragma once

#include <cstdint>
#include <vector>

namespace engine {

/// Violations and weights of a fixed number of entries, their totals, and the set of violated
/// entries, from which one can be drawn in O(1). Every operation is O(1) unless it says otherwise.
class ViolationLedger {
public:
    /// All violations 0, all weights 1.
    explicit ViolationLedger(std::size_t nbEntries)
        : violation_(nbEntries, 0.0), weight_(nbEntries, 1.0), position_(nbEntries, -1) {}

    /// @param violation  0 or more, finite.
    void setViolation(std::size_t i, double violation);
    void setWeight(std::size_t i, double weight);
    /// Sums the totals anew, which rounding has moved. O(entries).
    void refresh();

    [[nodiscard]] double violationOf(std::size_t i) const { return violation_[i]; }
    [[nodiscard]] double weightOf(std::size_t i) const { return weight_[i]; }
    [[nodiscard]] bool isViolated(std::size_t i) const { return position_[i] >= 0; }
    /// Entry indices in an order that depends on the history alone.
    [[nodiscard]] const std::vector<std::size_t>& violated() const { return violated_; }
    /// Sum of weight times violation; exactly 0 when nothing is violated.
    [[nodiscard]] double weighted() const { return violated_.empty() ? 0.0 : weighted_; }
    /// Sum of the violations without weights.
    [[nodiscard]] double total() const { return violated_.empty() ? 0.0 : total_; }
    [[nodiscard]] std::size_t nbEntries() const { return violation_.size(); }

private:
    std::vector<double> violation_;
    std::vector<double> weight_;
    std::vector<std::int32_t> position_;  ///< in violated_, or -1
    std::vector<std::size_t> violated_;
    double weighted_ = 0.0;
    double total_ = 0.0;
};

}  // namespace engine
