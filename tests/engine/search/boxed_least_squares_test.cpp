#include "search/boxed_least_squares.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "operators/random.hpp"

namespace engine {
namespace {

/// The minimum of a convex function over a box is where no coordinate can move downhill.
TEST(BoxedLeastSquares, StopsWhereNoCoordinateCanMoveDownhill) {
    // Few columns are solved by factors, many by conjugate gradients.
    for (const std::size_t n : {1U, 7U, 60U, 250U}) {
        Random random(n);
        const std::size_t m = n / 2 + 2;
        SparseRows a;
        std::vector<double> constant;
        std::vector<unsigned char> isEquation;
        for (std::size_t i = 0; i < m; ++i) {
            for (std::size_t k = 0; k < 4; ++k) {
                a.column.push_back(static_cast<std::int32_t>(random.below(n)));
                a.coefficient.push_back(2.0 * random.unit() - 1.0);
            }
            a.start.push_back(a.column.size());
            constant.push_back(4.0 * random.unit() - 2.0);
            isEquation.push_back(random.chance(0.5) ? 1 : 0);
        }
        const std::vector<double> lower(n, -0.5);
        const std::vector<double> upper(n, 0.5);
        const std::vector<double> scale(n, 2.0);
        constexpr double damping = 0.1;
        std::vector<double> x;
        BoxedLeastSquares().solve({a, constant, isEquation, lower, upper, scale, damping}, x);
        std::vector<double> gradient(n);
        std::vector<double> excess;
        for (std::size_t i = 0; i < m; ++i) {
            const double value = constant[i] + a.timesVector(i, x);
            excess.push_back(isEquation[i] != 0 ? value : std::fmax(0.0, value));
        }
        a.addTransposed(excess, gradient);
        for (std::size_t j = 0; j < n; ++j) {
            const double slope = gradient[j] + damping * x[j] / (scale[j] * scale[j]);
            EXPECT_TRUE(std::fabs(slope) < 1e-4 || x[j] == (slope > 0.0 ? lower[j] : upper[j]))
                << n << " columns, column " << j << ", slope " << slope;
        }
    }
}

}  // namespace
}  // namespace engine
