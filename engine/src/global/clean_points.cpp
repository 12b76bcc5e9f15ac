#include "global/clean_points.hpp"

#include "search/polish.hpp"

namespace engine {

bool CleanPoints::offer(const Point& point) {
    const Verdict verdict = judge(model_, point, values_);
    if (!verdict.feasible || (best_.hasPoint() && !isBetter(model_, verdict, best_.verdict()))) {
        return false;
    }
    return best_.offer(polished(model_, domain_, point, /*isProved=*/false).value_or(point),
                       finder_);
}

void CleanPoints::lookAt(const FeasibleIncumbent& others) {
    if (!others.hasPoint() || !isBetter(model_, others.verdict(), seen_)) return;
    seen_ = others.verdict();
    offer(others.point());
}

}  // namespace engine
