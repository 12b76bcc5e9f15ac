#include "search/limited_memory.hpp"

#include <cmath>
#include <numeric>

namespace engine {
namespace {

using Free = std::vector<unsigned char>;

double product(const std::vector<double>& a, const std::vector<double>& b, const Free& isFree) {
    double sum = 0.0;
    for (std::size_t k = 0; k < a.size(); ++k) {
        if (isFree[k] != 0) sum += a[k] * b[k];
    }
    return sum;
}

void addMultiple(std::vector<double>& a, double factor, const std::vector<double>& b,
                 const Free& isFree) {
    for (std::size_t k = 0; k < a.size(); ++k) {
        if (isFree[k] != 0) a[k] += factor * b[k];
    }
}

}  // namespace

void LimitedMemory::add(const std::vector<double>& step, const std::vector<double>& change) {
    const double curvature = std::inner_product(step.begin(), step.end(), change.begin(), 0.0);
    const double size = std::inner_product(change.begin(), change.end(), change.begin(), 0.0);
    constexpr double least = 1e-12;
    if (!(curvature > least * size)) return;
    if (pairs_.size() == most) pairs_.pop_front();
    pairs_.push_back({step, change});
}

void LimitedMemory::turn(std::vector<double>& direction, const Free& isFree) const {
    struct Weights {
        double inverse;
        double alpha;
    };
    std::vector<Weights> weights(pairs_.size(), {0.0, 0.0});
    double scale = 0.0;
    for (std::size_t n = pairs_.size(); n-- > 0;) {
        const Pair& pair = pairs_[n];
        // Restricted to the free coordinates a pair may have lost its curvature: it is left out.
        const double curvature = product(pair.step, pair.change, isFree);
        const double size = product(pair.change, pair.change, isFree);
        if (!(curvature > 1e-12 * size) || size <= 0.0) continue;
        if (scale == 0.0) scale = curvature / size;
        weights[n].inverse = 1.0 / curvature;
        weights[n].alpha = weights[n].inverse * product(pair.step, direction, isFree);
        addMultiple(direction, -weights[n].alpha, pair.change, isFree);
    }
    if (scale == 0.0) return;
    for (double& d : direction) d *= scale;
    for (std::size_t n = 0; n < pairs_.size(); ++n) {
        if (weights[n].inverse == 0.0) continue;
        const double beta = weights[n].inverse * product(pairs_[n].change, direction, isFree);
        addMultiple(direction, weights[n].alpha - beta, pairs_[n].step, isFree);
    }
}

}  // namespace engine
