#pragma once

#include <span>
#include <vector>

#include "evaluate/jacobian.hpp"
#include "global/relaxation.hpp"

namespace engine {

/// Tangent planes of expressions that are convex or concave as a whole: cutting planes (Kelley,
/// "The cutting-plane method for solving convex programs", J. SIAM 8, 1960) that say more than the
/// parts of the expression do.
///
/// Planes are taken only where all parts of an expression lie inside the ranges that they have in
/// the first box, since the curvature may rest on those. Later boxes may exclude the incumbent,
/// whose planes are worth most.
class ConvexTangents {
public:
    /// @param propagator  with the ranges of the first box.
    /// Model and factorable model outlive it.
    ConvexTangents(const FactorableModel& factorable, const ClosedModel& model,
                   const Propagator& propagator);

    /// Adds the planes that `levels` [nbColumns] are beyond, taken there or, where that cannot be,
    /// on the way to `inside`. @return how many.
    std::size_t separate(std::span<const double> levels, const Point& inside,
                         std::vector<Cut>& cuts);
    /// Adds all planes at a point.
    void supportAt(const Point& point, std::vector<Cut>& cuts);
    [[nodiscard]] bool isEmpty() const { return factorable_.curved.empty(); }

private:
    void evaluate(const Point& at);
    [[nodiscard]] bool isTangible(std::size_t k) const {
        const auto e = static_cast<std::size_t>(factorable_.curved[k].expression);
        return isInside_[e] != 0 && jacobian_.isComplete(k);
    }
    [[nodiscard]] Cut planeOf(std::size_t k, const Point& at) const;

    const FactorableModel& factorable_;
    const ClosedModel& model_;
    std::vector<Range> range_;            ///< [nbExpressions]
    Jacobian jacobian_;                   ///< a row for each curved expression
    std::vector<std::int32_t> columnOf_;  ///< [nbDecisions]
    std::vector<Value> values_;
    std::vector<unsigned char> isInside_;  ///< [nbExpressions] it and its operands, their ranges
    const SparseRows* rows_ = nullptr;
};

}  // namespace engine
