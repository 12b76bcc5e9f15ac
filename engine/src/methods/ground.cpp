#include "methods/ground.hpp"

#include <vector>

#include "evaluate/judge.hpp"
#include "linear/linear_view.hpp"

namespace engine {

const LinearModel* Ground::linearModel() {
    if (!isLinearKnown_) {
        std::vector<Value> values;
        judge(model, start, values);
        linear_ = linearViewOf(model, propagator, values);
        isLinearKnown_ = true;
    }
    return linear_ ? &*linear_ : nullptr;
}

}  // namespace engine
