#include "linear/activity.hpp"

namespace engine {

Range activityOf(const LinearForm& form, const LinearModel& model) {
    RangeSum total;
    total.add({form.constant, form.constant, false});
    for (std::size_t k = 0; k < form.column.size(); ++k) {
        const auto j = static_cast<std::size_t>(form.column[k]);
        const double c = form.coefficient[k];
        const Range column{model.lower[j], model.upper[j], false};
        total.add(widened(product({c, c, false}, column), 1.0));
    }
    return total.total();
}

}  // namespace engine
