#include "back_ends/gmp_elimination.hpp"

#include <algorithm>
#include <cmath>

namespace engine {
namespace {

/// Products of machine words: about a second.
constexpr std::int64_t workLimit = 30'000'000;
/// Terms that shrank to this share of what their equation started with are rounding errors.
constexpr double cancelled = 1e-10;
/// A pivot is at least this share of its equation's largest term.
constexpr double threshold = 0.1;
constexpr std::int32_t none = -1;

std::int64_t wordsOf(const mpq_class& q) {
    return static_cast<std::int64_t>(mpz_size(q.get_num_mpz_t()) + mpz_size(q.get_den_mpz_t()));
}

}  // namespace

RationalElimination::RationalElimination(std::vector<double> values)
    : values_(std::move(values)), uses_(values_.size()) {}

void RationalElimination::addEquation(const std::vector<std::pair<std::int32_t, double>>& terms) {
    const std::size_t e = equations_.size();
    Equation equation;
    for (const auto& [unknown, coefficient] : terms) {
        if (coefficient == 0.0) continue;
        const mpq_class exact(coefficient);
        equation.size = std::fmax(equation.size, weightOf(unknown, exact));
        equation.term.emplace(unknown, exact);
        uses_[static_cast<std::size_t>(unknown)].insert(e);
    }
    waiting_.emplace(equation.term.size(), e);
    equations_.push_back(std::move(equation));
}

double RationalElimination::weightOf(std::int32_t unknown, const mpq_class& coefficient) const {
    return std::fabs(coefficient.get_d() * values_[static_cast<std::size_t>(unknown)]);
}

void RationalElimination::count(const mpq_class& a, const mpq_class& b) {
    constexpr std::int64_t operation = 8;
    work_ += operation + wordsOf(a) * wordsOf(b);
}

/// The unknown in the fewest equations among the large terms; none when the equation says nothing,
/// or that its last unknown is 0.
std::int32_t RationalElimination::findPivot(const Equation& equation) const {
    double largest = 0.0;
    for (const auto& [unknown, coefficient] : equation.term) {
        largest = std::fmax(largest, weightOf(unknown, coefficient));
    }
    if (equation.term.size() < 2 || largest <= cancelled * equation.size) return none;
    std::int32_t best = none;
    std::size_t fewest = equations_.size() + 1;
    for (const auto& [unknown, coefficient] : equation.term) {
        const std::size_t nbUses = uses_[static_cast<std::size_t>(unknown)].size();
        if (nbUses < fewest && weightOf(unknown, coefficient) >= threshold * largest) {
            best = unknown;
            fewest = nbUses;
        }
    }
    return best;
}

/// The equation waits no longer.
void RationalElimination::leave(std::size_t equation) {
    waiting_.erase({equations_[equation].term.size(), equation});
    for (const auto& [unknown, coefficient] : equations_[equation].term) {
        uses_[static_cast<std::size_t>(unknown)].erase(equation);
    }
}

void RationalElimination::subtract(std::size_t target, const Equation& source,
                                   const mpq_class& factor) {
    Equation& equation = equations_[target];
    waiting_.erase({equation.term.size(), target});
    for (const auto& [unknown, coefficient] : source.term) {
        count(factor, coefficient);
        auto& uses = uses_[static_cast<std::size_t>(unknown)];
        const auto at = equation.term.try_emplace(unknown).first;
        at->second -= factor * coefficient;
        if (sgn(at->second) == 0) {
            equation.term.erase(at);
            uses.erase(target);
        } else {
            uses.insert(target);
        }
    }
    waiting_.emplace(equation.term.size(), target);
}

void RationalElimination::eliminate(const Pivot& pivot) {
    const Equation& source = equations_[pivot.equation];
    const mpq_class& coefficient = source.term.at(pivot.unknown);
    const auto targets = uses_[static_cast<std::size_t>(pivot.unknown)];
    for (const std::size_t target : targets) {
        const mpq_class& other = equations_[target].term.at(pivot.unknown);
        count(other, coefficient);
        subtract(target, source, mpq_class(other / coefficient));
    }
}

std::vector<mpq_class> RationalElimination::solve() {
    while (!waiting_.empty() && pivots_.size() + 1 < values_.size()) {
        const std::size_t e = waiting_.begin()->second;
        const std::int32_t unknown = findPivot(equations_[e]);
        leave(e);
        if (unknown == none) continue;
        pivots_.push_back({e, unknown});
        eliminate(pivots_.back());
        if (work_ > workLimit) return {};
    }
    std::vector<mpq_class> solution(values_.begin(), values_.end());
    for (auto pivot = pivots_.rbegin(); pivot != pivots_.rend(); ++pivot) {
        const Equation& equation = equations_[pivot->equation];
        mpq_class rest = 0;
        for (const auto& [unknown, coefficient] : equation.term) {
            if (unknown == pivot->unknown) continue;
            const mpq_class& value = solution[static_cast<std::size_t>(unknown)];
            count(coefficient, value);
            rest -= coefficient * value;
        }
        solution[static_cast<std::size_t>(pivot->unknown)] =
            rest / equation.term.at(pivot->unknown);
        if (work_ > workLimit) return {};
    }
    return solution;
}

}  // namespace engine
