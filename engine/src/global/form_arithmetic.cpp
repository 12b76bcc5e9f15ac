#include "global/form_arithmetic.hpp"

#include <utility>

namespace engine {

void FormSum::add(const LinearForm& form, double factor) {
    constant_ += factor * form.constant;
    for (std::size_t k = 0; k < form.column.size(); ++k) {
        const auto j = static_cast<std::size_t>(form.column[k]);
        if (j >= total_.size()) {
            total_.resize(j + 1, 0.0);
            isTouched_.resize(j + 1, 0);
        }
        if (isTouched_[j] == 0) touched_.push_back(form.column[k]);
        isTouched_[j] = 1;
        total_[j] += factor * form.coefficient[k];
    }
}

LinearForm FormSum::take() {
    LinearForm form;
    form.constant = std::exchange(constant_, 0.0);
    for (const std::int32_t column : touched_) {
        const auto j = static_cast<std::size_t>(column);
        isTouched_[j] = 0;
        const double coefficient = std::exchange(total_[j], 0.0);
        if (coefficient == 0.0) continue;
        form.column.push_back(column);
        form.coefficient.push_back(coefficient);
    }
    touched_.clear();
    return form;
}

LinearForm sumOf(const LinearForm& a, const LinearForm& b, double factor) {
    FormSum sum;
    sum.add(a, 1.0);
    sum.add(b, factor);
    return sum.take();
}

LinearForm scaled(LinearForm form, double factor) {
    if (factor == 0.0) return constantForm(0.0);
    form.constant *= factor;
    for (double& c : form.coefficient) c *= factor;
    return form;
}

LinearForm notOf(LinearForm truth) {
    truth = scaled(std::move(truth), -1.0);
    truth.constant += 1.0;
    return truth;
}

}  // namespace engine
