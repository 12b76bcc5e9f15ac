#include "global/convex_tangents.hpp"

#include <algorithm>
#include <cmath>

#include "evaluate/judge.hpp"
#include "global/form_arithmetic.hpp"

namespace engine {
namespace {

/// Levels this far beyond a plane deserve it; relative above 1.
constexpr double leastViolation = 1e-8;
/// Planes are loosened by this against the rounding of their coefficients.
constexpr double rounding = 1e-11;
/// Ways from a point where no plane can be taken to one where it can.
constexpr double partsOfWay[] = {0.0, 1e-6, 1e-3, 0.1, 0.5, 1.0};

}  // namespace

ConvexTangents::ConvexTangents(const FactorableModel& factorable, const ClosedModel& model,
                               const Propagator& propagator)
    : factorable_(factorable),
      model_(model),
      jacobian_(model),
      columnOf_(model.decision.size(), noColumn),
      isInside_(model.op.size(), 0) {
    for (std::size_t j = 0; j < factorable.linear.nbColumns(); ++j) {
        const DecisionIndex d = factorable.linear.decision[j];
        if (d >= 0) columnOf_[static_cast<std::size_t>(d)] = static_cast<std::int32_t>(j);
    }
    for (std::size_t e = 0; e < model.op.size(); ++e) {
        range_.push_back(propagator.rangeOf(static_cast<ExpressionIndex>(e)));
    }
    for (const CurvedForm& c : factorable.curved) {
        jacobian_.addRow(c.expression, noExpression, 1.0);
    }
}

/// Values, derivatives, and what lies inside its range.
void ConvexTangents::evaluate(const Point& at) {
    judge(model_, at, values_);
    rows_ = &jacobian_.compute(values_, columnOf_);
    for (const ExpressionIndex e : model_.order) {
        const auto i = static_cast<std::size_t>(e);
        const auto operands = model_.operandsOf(e);
        const bool areOperandsInside = std::all_of(
            operands.begin(), operands.end(),
            [this](ExpressionIndex x) { return isInside_[static_cast<std::size_t>(x)] != 0; });
        const double value = values_[i].asDouble();
        const bool isInside =
            areOperandsInside && std::isfinite(value) && range_[i].contains(value);
        isInside_[i] = isInside ? 1 : 0;
    }
}

/// value + derivatives * (x - at) - form <= 0 for a convex expression, >= 0 for a concave one.
Cut ConvexTangents::planeOf(std::size_t k, const Point& at) const {
    const CurvedForm& curved = factorable_.curved[k];
    const double sign = curved.isConvex ? 1.0 : -1.0;
    const double value = values_[static_cast<std::size_t>(curved.expression)].asDouble();
    LinearForm plane{{}, {}, sign * value};
    double size = std::fabs(value);
    for (std::size_t n = rows_->start[k]; n < rows_->start[k + 1]; ++n) {
        const std::int32_t j = rows_->column[n];
        const DecisionIndex d = factorable_.linear.decision[static_cast<std::size_t>(j)];
        const double x = at[static_cast<std::size_t>(d)].asDouble();
        const double derivative = sign * rows_->coefficient[n];
        plane.column.push_back(j);
        plane.coefficient.push_back(derivative);
        plane.constant -= derivative * x;
        size += std::fabs(derivative * x);
    }
    plane.constant -= rounding * size;
    return sumOf(plane, curved.form, -sign);
}

std::size_t ConvexTangents::separate(std::span<const double> levels, const Point& inside,
                                     std::vector<Cut>& cuts) {
    if (isEmpty()) return 0;
    Point from = inside;
    for (std::size_t d = 0; d < from.size(); ++d) {
        if (columnOf_[d] != noColumn) {
            from[d] = Value::ofDouble(levels[static_cast<std::size_t>(columnOf_[d])]);
        }
    }
    std::vector<std::size_t> open;
    for (std::size_t k = 0; k < factorable_.curved.size(); ++k) open.push_back(k);
    const std::size_t before = cuts.size();
    for (const double part : partsOfWay) {
        Point at = from;
        for (std::size_t d = 0; d < at.size() && part > 0.0; ++d) {
            const double x = at[d].asDouble();
            at[d] = Value::ofDouble(x + part * (inside[d].asDouble() - x));
        }
        evaluate(at);
        std::erase_if(open, [&](std::size_t k) {
            if (!isTangible(k)) return false;
            Cut cut = planeOf(k, at);
            const double value =
                values_[static_cast<std::size_t>(factorable_.curved[k].expression)].asDouble();
            const bool isBeyond =
                valueOf(cut, levels) > leastViolation * std::max(1.0, std::fabs(value));
            if (isBeyond) cuts.push_back(std::move(cut));
            // A plane taken elsewhere that `levels` keep to does not tell whether they miss.
            return isBeyond || part <= 0.0;
        });
        if (open.empty()) break;
    }
    return cuts.size() - before;
}

void ConvexTangents::supportAt(const Point& point, std::vector<Cut>& cuts) {
    if (isEmpty()) return;
    evaluate(point);
    for (std::size_t k = 0; k < factorable_.curved.size(); ++k) {
        if (isTangible(k)) cuts.push_back(planeOf(k, point));
    }
}

}  // namespace engine
