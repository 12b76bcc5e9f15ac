#include "global/local_improvement.hpp"

#include <algorithm>
#include <cmath>

#include "back_ends/solve_locally.hpp"
#include "model/domain.hpp"

namespace engine {

LocalImprovement::LocalImprovement(const ClosedModel& model, CleanPoints& points)
    : model_(model), points_(points) {}

bool LocalImprovement::run(const Point& start, const std::vector<Interval>& box, Pace& pace) {
    // Beyond this, making the program alone takes longer than all else is given.
    constexpr std::size_t largestModel = 300'000;
    if (model_.operand.size() > largestModel || pace.mustEnd()) return false;
    if (!program_) program_.emplace(model_);
    NonlinearProblem problem{*program_, {}, {}, {}};
    if (model_.objective.empty()) problem.objective = -1;
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        const auto i = static_cast<std::size_t>(d);
        double level = std::clamp(start[i].asDouble(), box[i].lower, box[i].upper);
        if (model_.isDiscrete(d)) level = std::round(level);
        const bool isFixed = model_.isDiscrete(d);
        problem.start.push_back(level);
        problem.lower.push_back(isFixed ? level : box[i].lower);
        problem.upper.push_back(isFixed ? level : box[i].upper);
    }
    const NonlinearAnswer answer = solveLocally(problem, {.pace = pace, .mostIterations = 200});
    if (answer.levels.empty()) return false;
    Point point = start;
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        const auto i = static_cast<std::size_t>(d);
        point[i] = valueFor(model_, d, std::clamp(answer.levels[i], box[i].lower, box[i].upper));
    }
    return points_.offer(point);
}

}  // namespace engine
