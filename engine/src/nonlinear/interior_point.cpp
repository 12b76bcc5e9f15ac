#include <algorithm>
#include <cmath>
#include <utility>

#include "nonlinear/interior_point_method.hpp"

namespace engine {
namespace {

/// Rows and cost are scaled down to slopes of this size at the start.
constexpr double largestSlope = 100.0;
/// Of the dual block: keeps systems with dependent rows solvable.
constexpr double dualShift = 1e-9;
/// Ends a run of steps that are near the optimum and gain nothing.
constexpr double acceptableError = 1e-6;
constexpr int mostAcceptable = 15;

}  // namespace

KktSystem::Pattern InteriorPoint::patternOf(const LocalProblem& problem) {
    KktSystem::Pattern pattern;
    pattern.nbDual = problem.nbRows();
    pattern.nbPrimal = problem.nbColumns();
    pattern.hessianRow.assign(problem.hessianRow().begin(), problem.hessianRow().end());
    pattern.hessianColumn.assign(problem.hessianColumn().begin(), problem.hessianColumn().end());
    pattern.jacobianRow.assign(problem.jacobianRow().begin(), problem.jacobianRow().end());
    pattern.jacobianColumn.assign(problem.jacobianColumn().begin(), problem.jacobianColumn().end());
    for (std::size_t i = 0; i < problem.nbRows(); ++i) {
        if (problem.rowLower()[i] == problem.rowUpper()[i]) continue;
        pattern.jacobianRow.push_back(static_cast<std::int32_t>(i));
        pattern.jacobianColumn.push_back(static_cast<std::int32_t>(pattern.nbPrimal++));
    }
    return pattern;
}

InteriorPoint::InteriorPoint(LocalProblem& problem, const NonlinearSettings& settings)
    : problem_(problem),
      settings_(settings),
      nbColumns_(problem.nbColumns()),
      nbRows_(problem.nbRows()),
      nbPrimal_(problem.nbColumns() + problem.nbRows() - problem.nbEquations()),
      slackOf_(problem.nbRows(), none),
      system_(patternOf(problem)),
      rowScale_(problem.nbRows(), 1.0),
      gradient_(nbPrimal_, 0.0),
      jacobian_(problem.jacobianRow().size() + nbPrimal_ - nbColumns_, -1.0),
      hessian_(problem.hessianRow().size(), 0.0),
      y_(problem.nbRows(), 0.0) {
    std::size_t next = nbColumns_;
    for (std::size_t i = 0; i < nbRows_; ++i) {
        if (problem.rowLower()[i] != problem.rowUpper()[i]) slackOf_[i] = next++;
    }
    z_ = problem.start();
    setScales();
    setBounds();
    moveInside();
    startMultipliers();
}

void InteriorPoint::setScales() {
    problem_.moveTo(z_);
    Vector slopes(problem_.jacobianRow().size());
    problem_.jacobian(slopes);
    Vector most(nbRows_, 0.0);
    for (std::size_t k = 0; k < slopes.size(); ++k) {
        double& m = most[static_cast<std::size_t>(problem_.jacobianRow()[k])];
        m = std::max(m, std::fabs(slopes[k]));
    }
    for (std::size_t i = 0; i < nbRows_; ++i) {
        if (most[i] > largestSlope) rowScale_[i] = std::max(1e-8, largestSlope / most[i]);
    }
    Vector cost(nbColumns_);
    problem_.gradient(cost);
    const double steepest = largest(cost);
    if (steepest > largestSlope) costScale_ = std::max(1e-8, largestSlope / steepest);
}

void InteriorPoint::setBounds() {
    lower_.assign(problem_.lower().begin(), problem_.lower().end());
    upper_.assign(problem_.upper().begin(), problem_.upper().end());
    for (std::size_t i = 0; i < nbRows_; ++i) {
        if (slackOf_[i] == none) continue;
        lower_.push_back(rowScale_[i] * problem_.rowLower()[i]);
        upper_.push_back(rowScale_[i] * problem_.rowUpper()[i]);
    }
}

/// Every primal well between its bounds; slacks first where their rows are.
void InteriorPoint::moveInside() {
    problem_.moveTo(z_);
    Vector rows(nbRows_);
    problem_.rows(rows);
    z_.resize(nbPrimal_, 0.0);
    for (std::size_t i = 0; i < nbRows_; ++i) {
        if (slackOf_[i] == none) continue;
        z_[slackOf_[i]] = std::isfinite(rows[i]) ? rowScale_[i] * rows[i] : 0.0;
    }
    const double push = settings_.isStartGood ? 1e-6 : 1e-2;
    if (settings_.isStartGood) barrier_ = 1e-4;
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        const double width = upper_[j] - lower_[j];
        const double low = std::min(push * std::max(1.0, std::fabs(lower_[j])), push * width);
        const double high = std::min(push * std::max(1.0, std::fabs(upper_[j])), push * width);
        if (std::isfinite(lower_[j])) z_[j] = std::max(z_[j], lower_[j] + low);
        if (std::isfinite(upper_[j])) z_[j] = std::min(z_[j], upper_[j] - high);
    }
}

/// Bounds' multipliers of 1, and of the rows those of least squares unless they are huge.
void InteriorPoint::startMultipliers() {
    lowerDual_.assign(nbPrimal_, 0.0);
    upperDual_.assign(nbPrimal_, 0.0);
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        if (std::isfinite(lower_[j])) lowerDual_[j] = 1.0;
        if (std::isfinite(upper_[j])) upperDual_[j] = 1.0;
    }
    at_ = evaluate(z_);
    if (!at_.isFinite) return;
    differentiate();
    const Vector ones(nbPrimal_, 1.0);
    const Vector flat(hessian_.size(), 0.0);
    if (!system_.factorise({flat, ones, jacobian_, dualShift})) return;
    Vector side = dualResidual();
    for (double& v : side) v = -v;
    side.resize(nbPrimal_ + nbRows_, 0.0);
    system_.solve(side);
    constexpr double hugeMultiplier = 1e3;
    Vector y(side.begin() + static_cast<std::ptrdiff_t>(nbPrimal_), side.end());
    if (largest(y) <= hugeMultiplier) y_ = std::move(y);
}

InteriorPoint::Values InteriorPoint::evaluate(const Vector& z) {
    problem_.moveTo(std::span(z).first(nbColumns_));
    Values at;
    at.cost = costScale_ * problem_.cost();
    at.rows.resize(nbRows_);
    at.isFinite = problem_.rows(at.rows) && std::isfinite(at.cost);
    for (std::size_t i = 0; i < nbRows_; ++i) {
        const double right =
            slackOf_[i] == none ? rowScale_[i] * problem_.rowLower()[i] : z[slackOf_[i]];
        at.rows[i] = rowScale_[i] * at.rows[i] - right;
    }
    return at;
}

/// First derivatives where z_ is.
void InteriorPoint::differentiate() {
    problem_.moveTo(std::span(z_).first(nbColumns_));
    problem_.gradient(std::span(gradient_).first(nbColumns_));
    for (std::size_t j = 0; j < nbColumns_; ++j) gradient_[j] *= costScale_;
    const auto row = problem_.jacobianRow();
    problem_.jacobian(std::span(jacobian_).first(row.size()));
    for (std::size_t k = 0; k < row.size(); ++k) {
        jacobian_[k] *= rowScale_[static_cast<std::size_t>(row[k])];
    }
}

double InteriorPoint::barrierCost(const Vector& z, const Values& at) const {
    double logs = 0.0;
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        if (std::isfinite(lower_[j])) logs += std::log(z[j] - lower_[j]);
        if (std::isfinite(upper_[j])) logs += std::log(upper_[j] - z[j]);
    }
    return at.cost - barrier_ * logs;
}

/// Gradient of the Lagrangian.
Vector InteriorPoint::dualResidual() const {
    Vector r = gradient_;
    const auto row = problem_.jacobianRow();
    const auto column = problem_.jacobianColumn();
    for (std::size_t k = 0; k < row.size(); ++k) {
        r[static_cast<std::size_t>(column[k])] +=
            jacobian_[k] * y_[static_cast<std::size_t>(row[k])];
    }
    for (std::size_t i = 0; i < nbRows_; ++i) {
        if (slackOf_[i] != none) r[slackOf_[i]] -= y_[i];
    }
    for (std::size_t j = 0; j < nbPrimal_; ++j) r[j] += upperDual_[j] - lowerDual_[j];
    return r;
}

/// Of the optimality conditions for that barrier parameter (equation 5).
double InteriorPoint::error(double barrier) const {
    constexpr double most = 100.0;
    const double sizeOfBounds = total(lowerDual_) + total(upperDual_);
    const double sizeOfDuals =
        (sizeOfBounds + total(y_)) / std::max(1.0, static_cast<double>(nbRows_ + 2 * nbPrimal_));
    const double dualScale = std::max(most, sizeOfDuals) / most;
    const double boundScale =
        std::max(most, sizeOfBounds / std::max(1.0, 2.0 * static_cast<double>(nbPrimal_))) / most;
    double complementarity = 0.0;
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        const auto gap = [&](double distance, double dual) {
            return std::isfinite(distance) ? std::fabs(distance * dual - barrier) : 0.0;
        };
        complementarity = std::max({complementarity, gap(z_[j] - lower_[j], lowerDual_[j]),
                                    gap(upper_[j] - z_[j], upperDual_[j])});
    }
    return std::max(
        {largest(dualResidual()) / dualScale, largest(at_.rows), complementarity / boundScale});
}

void InteriorPoint::lowerBarrier() {
    const double least = settings_.tolerance / 11.0;
    constexpr double factor = 0.2;
    constexpr double power = 1.5;
    while (barrier_ > least && error(barrier_) <= 10.0 * barrier_) {
        barrier_ = std::max(least, std::min(factor * barrier_, std::pow(barrier_, power)));
        filter_.clear();
    }
}

Vector InteriorPoint::barrierGradient() const {
    Vector g = gradient_;
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        if (std::isfinite(lower_[j])) g[j] -= barrier_ / (z_[j] - lower_[j]);
        if (std::isfinite(upper_[j])) g[j] += barrier_ / (upper_[j] - z_[j]);
    }
    return g;
}

/// The system at z_, its Hessian shifted until it is positive where it must be (algorithm IC).
bool InteriorPoint::factorise() {
    if (problem_.hasHessian()) {
        Vector weights(nbRows_);
        for (std::size_t i = 0; i < nbRows_; ++i) weights[i] = rowScale_[i] * y_[i];
        problem_.hessian(costScale_, weights, hessian_);
    }
    Vector diagonal(nbPrimal_, 0.0);
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        if (std::isfinite(lower_[j])) diagonal[j] += lowerDual_[j] / (z_[j] - lower_[j]);
        if (std::isfinite(upper_[j])) diagonal[j] += upperDual_[j] / (upper_[j] - z_[j]);
    }
    constexpr double first = 1e-4;
    constexpr double most = 1e20;
    shift_ = problem_.hasHessian() ? 0.0 : 1.0;
    while (shift_ < most) {
        Vector shifted = diagonal;
        for (double& d : shifted) d += shift_;
        const bool isGood = system_.factorise({hessian_, shifted, jacobian_, dualShift});
        if (!spend()) return false;
        if (isGood) {
            if (shift_ > 0.0) lastShift_ = shift_;
            return true;
        }
        if (shift_ == 0.0) {
            shift_ = lastShift_ == 0.0 ? first : std::max(1e-20, lastShift_ / 3.0);
        } else {
            shift_ *= lastShift_ == 0.0 ? 100.0 : 8.0;
        }
    }
    return false;
}

bool InteriorPoint::computeStep() {
    if (!factorise()) return false;
    const Vector g = barrierGradient();
    step_.assign(nbPrimal_ + nbRows_, 0.0);
    Vector rest = dualResidual();
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        // The bounds' multipliers are eliminated: their place is taken by the barrier's slope.
        rest[j] += g[j] - gradient_[j] - upperDual_[j] + lowerDual_[j];
        step_[j] = -rest[j];
    }
    for (std::size_t i = 0; i < nbRows_; ++i) step_[nbPrimal_ + i] = -at_.rows[i];
    const double residual = system_.solve(step_);
    if (!(residual < 1.0) || !std::isfinite(largest(step_))) return false;
    lowerDualStep_.assign(nbPrimal_, 0.0);
    upperDualStep_.assign(nbPrimal_, 0.0);
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        if (std::isfinite(lower_[j])) {
            const double distance = z_[j] - lower_[j];
            lowerDualStep_[j] = (barrier_ - lowerDual_[j] * step_[j]) / distance - lowerDual_[j];
        }
        if (std::isfinite(upper_[j])) {
            const double distance = upper_[j] - z_[j];
            upperDualStep_[j] = (barrier_ + upperDual_[j] * step_[j]) / distance - upperDual_[j];
        }
    }
    return true;
}

/// Part of the way along `direction` on which every distance keeps more than 1 - `keep` of itself.
double InteriorPoint::longestStep(const Vector& z, const Vector& direction, double keep) const {
    double length = 1.0;
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        if (direction[j] < 0.0 && std::isfinite(lower_[j])) {
            length = std::min(length, keep * (z[j] - lower_[j]) / -direction[j]);
        }
        if (direction[j] > 0.0 && std::isfinite(upper_[j])) {
            length = std::min(length, keep * (upper_[j] - z[j]) / direction[j]);
        }
    }
    return length;
}

double InteriorPoint::longestDualStep(double keep) const {
    double length = 1.0;
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        if (lowerDualStep_[j] < 0.0) {
            length = std::min(length, keep * lowerDual_[j] / -lowerDualStep_[j]);
        }
        if (upperDualStep_[j] < 0.0) {
            length = std::min(length, keep * upperDual_[j] / -upperDualStep_[j]);
        }
    }
    return length;
}

/// Reduces the violation until the filter takes the point. @return false: it does not get there.
bool InteriorPoint::restore() {
    const double thetaAtStart = at_.theta();
    if (thetaAtStart <= settings_.tolerance) return false;
    filter_.push_back({(1.0 - leastThetaGain) * thetaAtStart, barrierCost(z_, at_)});
    const Vector flat(hessian_.size(), 0.0);
    double damping = 1e-4;
    constexpr int mostSteps = 100;
    for (int step = 0; step < mostSteps && damping < 1e12; ++step) {
        differentiate();
        Vector diagonal(nbPrimal_);
        for (std::size_t j = 0; j < nbPrimal_; ++j) {
            // Near a bound, moves are dear.
            const double room = std::min({1.0, z_[j] - lower_[j], upper_[j] - z_[j]});
            diagonal[j] = damping * (1.0 + 1e-2 / (room * room));
        }
        if (!system_.factorise({flat, diagonal, jacobian_, 1.0}) || !spend()) return false;
        Vector move(nbPrimal_ + nbRows_, 0.0);
        for (std::size_t i = 0; i < nbRows_; ++i) move[nbPrimal_ + i] = -at_.rows[i];
        system_.solve(move);
        const double length = longestStep(z_, move, 0.99);
        Vector trial = z_;
        for (std::size_t j = 0; j < nbPrimal_; ++j) trial[j] += length * move[j];
        Values at = evaluate(trial);
        const auto squares = [](const Vector& v) {
            double sum = 0.0;
            for (const double x : v) sum += x * x;
            return sum;
        };
        if (!at.isFinite || !(squares(at.rows) < (1.0 - 1e-4 * length) * squares(at_.rows))) {
            damping *= 10.0;
            continue;
        }
        damping = std::max(1e-12, damping / 5.0);
        take(trial, std::move(at));
        if (at_.theta() <= 0.9 * thetaAtStart && isAcceptable(at_.theta(), barrierCost(z_, at_))) {
            differentiate();
            startMultipliers();
            return true;
        }
    }
    return false;
}

/// Tells the pace what an iteration or a factorisation costs.
bool InteriorPoint::spend() {
    const std::int64_t work = problem_.workPerIteration() + system_.work();
    return settings_.pace.spend(work) && !settings_.pace.mustEnd();
}

NonlinearAnswer InteriorPoint::answer(Status status, int iterations) {
    NonlinearAnswer result;
    result.iterations = iterations;
    const auto x = std::span(z_).first(nbColumns_);
    if (!std::all_of(x.begin(), x.end(), [](double v) { return std::isfinite(v); })) return result;
    problem_.moveTo(x);
    result.levels = problem_.levels(x);
    Vector y = y_;
    for (std::size_t i = 0; i < nbRows_; ++i) y[i] *= rowScale_[i] / costScale_;
    result.multipliers = problem_.multipliers(y);
    result.violation = problem_.violation();
    const bool isNear = result.violation <= 10.0 * settings_.tolerance;
    result.status = status == Status::Optimal || !isNear ? status : Status::Feasible;
    return result;
}

NonlinearAnswer InteriorPoint::run() {
    if (!at_.isFinite) return answer(Status::Open, 0);
    largestTheta_ = 1e4 * std::max(1.0, at_.theta());
    smallTheta_ = 1e-4 * std::max(1.0, at_.theta());
    int nbAcceptable = 0;
    for (int iteration = 0; iteration < settings_.mostIterations; ++iteration) {
        differentiate();
        const double rest = error(0.0);
        const double violation = problem_.violation();
        if (rest <= settings_.tolerance && violation <= settings_.tolerance) {
            return answer(Status::Optimal, iteration);
        }
        const bool isNear = rest <= acceptableError && violation <= 10.0 * settings_.tolerance;
        nbAcceptable = isNear ? nbAcceptable + 1 : 0;
        if (nbAcceptable >= mostAcceptable) return answer(Status::Optimal, iteration);
        lowerBarrier();
        if (settings_.pace.mustEnd()) return answer(Status::Open, iteration);
        if (computeStep() && search()) {
            takeDuals();
            continue;
        }
        if (settings_.pace.mustEnd()) return answer(Status::Open, iteration);
        if (restore()) continue;
        const bool isStuck = at_.theta() > settings_.tolerance;
        return answer(isStuck  ? Status::Infeasible
                      : isNear ? Status::Optimal
                               : Status::Open,
                      iteration);
    }
    return answer(Status::Open, settings_.mostIterations);
}

NonlinearAnswer solveByInteriorPoint(LocalProblem& problem, const NonlinearSettings& settings) {
    return InteriorPoint(problem, settings).run();
}

}  // namespace engine
