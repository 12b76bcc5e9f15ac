#include "methods/method.hpp"

#include <algorithm>
#include "operators/range.hpp"

namespace engine {

Findings::Findings(const ClosedModel& model) : incumbent(model) {
    for (const Objective& o : model.objective) bound.push_back(o.maximise ? infinity : -infinity);
}

void Findings::tighten(const ClosedModel& model, std::size_t objective, double proved) {
    double& known = bound[objective];
    known = model.objective[objective].maximise ? std::min(known, proved) : std::max(known, proved);
}

}  // namespace engine
