#pragma once

#include "linear/linear_model.hpp"

namespace engine {

/// a + factor * b.
LinearForm sumOf(const LinearForm& a, const LinearForm& b, double factor);
LinearForm scaled(LinearForm form, double factor);
inline LinearForm constantForm(double value) {
    return {{}, {}, value};
}
inline LinearForm columnForm(std::int32_t column) {
    return {{column}, {1.0}, 0.0};
}

/// 1 - truth.
LinearForm notOf(LinearForm truth);

/// Adds many forms up in the time of their terms.
class FormSum {
public:
    void add(const LinearForm& form, double factor);
    /// The total so far; starts anew.
    LinearForm take();

private:
    std::vector<double> total_;            ///< [largest column + 1]
    std::vector<std::uint8_t> isTouched_;  ///< [largest column + 1]
    std::vector<std::int32_t> touched_;    ///< in the order of their coming
    double constant_ = 0.0;
};

}  // namespace engine
