#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "evaluate/incumbent.hpp"
#include "evaluate/pace.hpp"
#include "methods/ground.hpp"
#include "model/closed_model.hpp"

namespace engine {

/// What one method has found out and what others have told it. The method writes it while it runs;
/// the schedule reads it, and adds points of others, while the method rests.
struct Findings {
    explicit Findings(const ClosedModel& model);

    /// The best point known: the method's own and those that others found.
    FeasibleIncumbent incumbent;
    /// [nbObjectives] No feasible point is better in the objective: a proved bound in the
    /// objective's own direction and units, -infinity or infinity while there is none. For later
    /// objectives it is one over all feasible points, whatever the earlier ones are.
    std::vector<double> bound;
    /// [nbDecisions] Every feasible point lies inside; empty when the method knows no better, and
    /// again when the schedule has taken it.
    std::vector<Interval> domain;
    /// Optimal: the incumbent is. Ends the whole solve.
    Conclusion conclusion;
    std::int64_t nbNodes = 0;  ///< of a tree so far, for the log

    /// Replaces the bound of an objective if `proved` is tighter.
    void tighten(const ClosedModel& model, std::size_t objective, double proved);
};

/// One way to solve a model, or to prove something about it: made for one solve, lives until its
/// end, and keeps what it has.
///
/// The schedule asks reasonAgainst() once, then runs it on a thread of its own that it lets run and
/// holds again at the places where the method spends work: so that methods which cannot return in
/// the middle take turns, nothing is done twice, and the same seed and iteration limit give the
/// same result. What it does may depend on the model, the ground, its findings and the pace, never
/// on the clock.
class Method {
public:
    /// @param ground  outlives this.
    explicit Method(Ground& ground) : ground_(ground), findings_(ground.model) {}
    Method(const Method&) = delete;
    Method& operator=(const Method&) = delete;
    virtual ~Method() = default;

    /// For the log, as in "found by NAME"; lives as long as the program.
    [[nodiscard]] virtual std::string_view name() const = 0;
    /// Why it does not apply, as the end of a sentence ("the model is linear"); empty when it does.
    /// Asked once, when the stages before have ended. O(operands) at most.
    [[nodiscard]] virtual std::string reasonAgainst() = 0;
    /// How much work it gets for each part that the local search gets; infinity: the search gets
    /// none while it runs.
    [[nodiscard]] virtual double weight() const { return 1.0; }

    /// Works to the end: until it has a conclusion, can do no more, or the pace tells it to end.
    /// Once, on the method's thread. What it throws ends the solve.
    virtual void run(Pace& pace) = 0;

    [[nodiscard]] Findings& findings() { return findings_; }
    [[nodiscard]] const Findings& findings() const { return findings_; }

protected:
    /// Judges `point` and keeps it if it is better.
    bool offer(const Point& point) { return findings_.incumbent.offer(point, name()); }
    void conclude(Outcome outcome, std::string proof) {
        findings_.conclusion = {outcome, std::move(proof)};
    }
    [[nodiscard]] Ground& ground() const { return ground_; }
    [[nodiscard]] const ClosedModel& model() const { return ground_.model; }

private:
    Ground& ground_;
    Findings findings_;
};

}  // namespace engine
