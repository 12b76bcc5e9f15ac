#include "global/integral_objective.hpp"

#include <cmath>

namespace engine {
namespace {

/// Coefficients that are whole multiples of this, by a whole number, have a step.
constexpr double finestStep = 1e-4;
constexpr double largestMultiple = 1e12;

bool isWhole(double v) {
    return v == std::rint(v) && std::fabs(v) < largestMultiple;
}

/// Integral wherever the integer decisions are: decisions, and products and whole powers of such.
bool isIntegral(const FactorableModel& factorable, std::int32_t column) {
    std::vector<std::int32_t> open{column};
    for (int steps = 0; !open.empty(); ++steps) {
        constexpr int mostSteps = 100;
        const auto j = static_cast<std::size_t>(open.back());
        open.pop_back();
        if (factorable.linear.isInteger[j] != 0) continue;
        const std::int32_t k = factorable.origin[j].definition;
        if (k < 0 || steps > mostSteps) return false;
        const Definition& definition = factorable.definition[static_cast<std::size_t>(k)];
        const bool isPower = definition.kind == Definition::Kind::Curve &&
                             definition.curve.kind == Curve::Kind::Power &&
                             isWhole(definition.curve.exponent) && definition.curve.exponent > 0.0;
        const bool isAbs =
            definition.kind == Definition::Kind::Curve && definition.curve.kind == Curve::Kind::Abs;
        if (definition.kind != Definition::Kind::Product && !isPower && !isAbs) return false;
        open.push_back(definition.first);
        if (definition.second != noColumn) open.push_back(definition.second);
    }
    return true;
}

}  // namespace

double stepOf(const FactorableModel& factorable, const LinearForm& form) {
    double step = 0.0;
    for (std::size_t k = 0; k < form.column.size(); ++k) {
        const double multiple = std::fabs(form.coefficient[k]) / finestStep;
        if (std::fabs(multiple - std::rint(multiple)) > 1e-9 * multiple ||
            multiple > largestMultiple || !isIntegral(factorable, form.column[k])) {
            return 0.0;
        }
        double a = std::rint(multiple);
        while (step > 0.0 && a > 0.0) {
            const double rest = std::fmod(step, a);
            step = a;
            a = rest;
        }
        if (step <= 0.0) step = a;
    }
    return step * finestStep;
}

}  // namespace engine
