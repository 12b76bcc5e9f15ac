#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "evaluate/judge.hpp"
#include "model/closed_model.hpp"

namespace engine {

/// A point and what is claimed of it, on its way from who found it to who compares it with others.
struct Incumbent {
    Point point;
    Verdict verdict;
    /// Weighted violation by the finder's own measure; orders infeasible points, 0 if feasible.
    double violation = 0.0;
    /// Which method found it, for the log: a text that lives as long as the program.
    std::string_view finder = {};
};

/// What is claimed of the whole model.
enum class Outcome { Open, Inconsistent, Optimal };

/// An outcome and what proves it: one line, empty when open.
struct Conclusion {
    Outcome outcome = Outcome::Open;
    std::string proof = {};
};

/// The best feasible point that a method knows, as judged.
class FeasibleIncumbent {
public:
    explicit FeasibleIncumbent(const ClosedModel& model) : model_(model) {}

    /// Judges `point` and keeps it if it is feasible and better than what there is. O(operands).
    bool offer(const Point& point, std::string_view finder) {
        return take({point, judge(model_, point, values_), 0.0, finder});
    }
    /// The same for a point that is judged already.
    bool take(Incumbent judged) {
        if (!judged.verdict.feasible) return false;
        if (hasPoint_ && !isBetter(model_, judged.verdict, best_.verdict)) return false;
        best_ = std::move(judged);
        hasPoint_ = true;
        return true;
    }
    /// The best point of another, if it is better; copied only then.
    bool takeFrom(const FeasibleIncumbent& other) {
        if (!other.hasPoint_) return false;
        if (hasPoint_ && !isBetter(model_, other.verdict(), verdict())) return false;
        return take(other.best_);
    }
    /// Takes a feasible point's place by another one, which may be worse.
    void replace(Incumbent feasible) {
        best_ = std::move(feasible);
        hasPoint_ = true;
    }
    [[nodiscard]] bool hasPoint() const { return hasPoint_; }
    // Only when hasPoint():
    [[nodiscard]] const Incumbent& best() const { return best_; }
    [[nodiscard]] const Point& point() const { return best_.point; }
    [[nodiscard]] const Verdict& verdict() const { return best_.verdict; }

private:
    const ClosedModel& model_;
    Incumbent best_;
    std::vector<Value> values_;
    bool hasPoint_ = false;
};

}  // namespace engine
