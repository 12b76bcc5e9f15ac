#include "norv/piecewise_linear.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "hostapi/codes.hpp"
#include "model/implied_bounds.hpp"
#include "model/model_record.hpp"

namespace norv {

namespace {

namespace equation_type = hostapi::equation_type;
namespace variable_type = hostapi::variable_type;

/// The ends of the pieces within lower <= x <= upper, ascending.
std::vector<double> endsWithin(const PiecewiseLinear& function, double lower, double upper) {
    std::vector<double> ends = {lower};
    for (const double each : function.breakpoints) {
        if (each > ends.back() && each < upper) ends.push_back(each);
    }
    ends.push_back(std::max(lower, upper));
    return ends;
}

/// Adds one equation value = f(argument).
class PieceMaker {
public:
    PieceMaker(ModelBuilder& target, const PiecewiseLinear& term, std::vector<double> pieceEnds,
               double argumentLevel)
        : builder_(target), function_(term), ends_(std::move(pieceEnds)), level_(argumentLevel) {}

    void run() {
        boundValue();
        choice_ = builder_.addRow(equation_type::equality, 1.0);
        argument_ = builder_.addRow(equation_type::equality, 0.0);
        value_ = builder_.addRow(equation_type::equality, 0.0);
        builder_.addCoefficient(argument_, function_.argument, -1.0);
        builder_.addCoefficient(value_, function_.value, -1.0);
        for (std::size_t k = 0; k + 1 < ends_.size(); ++k) addPiece(ends_[k], ends_[k + 1]);
    }

private:
    void boundValue() {
        const auto [least, most] = std::ranges::minmax(
            ends_, {}, [this](double each) { return valueOf(function_, each); });
        builder_.setBounds(function_.value, valueOf(function_, least), valueOf(function_, most));
        builder_.setLevel(function_.value, valueOf(function_, level_));
    }

    void addPiece(double from, double to) {
        const bool isStart = !hasStart_ && level_ <= to;
        hasStart_ = hasStart_ || isStart;
        const std::int32_t choice =
            builder_.addVariable(variable_type::binary, 0.0, 1.0, isStart ? 1.0 : 0.0);
        const std::int32_t part =
            builder_.addVariable(variable_type::continuous, std::min(from, 0.0), std::max(to, 0.0),
                                 isStart ? level_ : 0.0);
        const auto link = [&](std::int32_t type, double end) {
            const std::int32_t row = builder_.addRow(type, 0.0);
            builder_.addCoefficient(row, part, 1.0);
            builder_.addCoefficient(row, choice, -end);
        };
        link(equation_type::greater, from);
        link(equation_type::less, to);
        builder_.addCoefficient(choice_, choice, 1.0);
        builder_.addCoefficient(argument_, part, 1.0);
        // On the piece the function is slope * x + constant.
        const double slope = slopeAt(from);
        builder_.addCoefficient(value_, part, slope);
        builder_.addCoefficient(value_, choice, valueOf(function_, from) - slope * from);
    }

    /// The slope to the right of x.
    [[nodiscard]] double slopeAt(double x) const {
        const auto& breakpoints = function_.breakpoints;
        const auto after = std::upper_bound(breakpoints.begin(), breakpoints.end(), x);
        return function_.slopes[static_cast<std::size_t>(after - breakpoints.begin())];
    }

    ModelBuilder& builder_;
    const PiecewiseLinear& function_;
    std::vector<double> ends_;  ///< two or more
    double level_;
    std::int32_t choice_ = 0;    ///< rows: one piece is chosen,
    std::int32_t argument_ = 0;  ///< the parts make the argument,
    std::int32_t value_ = 0;     ///< and the value
    bool hasStart_ = false;
};

}  // namespace

double valueOf(const PiecewiseLinear& function, double x) {
    double value = function.slopes.front() * x;
    for (std::size_t k = 0; k < function.breakpoints.size(); ++k) {
        const double change = function.slopes[k + 1] - function.slopes[k];
        const double breakpoint = function.breakpoints[k];
        value += change * (std::fmax(x - breakpoint, 0.0) - std::fmax(-breakpoint, 0.0));
    }
    return value;
}

bool addPieces(const Model& model, ModelBuilder& builder,
               std::span<const PiecewiseLinear> functions) {
    const ImpliedBounds bounds = impliedBounds(model.handle()->instance);
    for (const PiecewiseLinear& each : functions) {
        const double lower = bounds.lower[each.argument];
        const double upper = bounds.upper[each.argument];
        if (!std::isfinite(lower) || !std::isfinite(upper)) return false;
        // So that the link need not impose its own.
        builder.setBounds(each.argument, std::max(model.lower(each.argument), lower),
                          std::min(model.upper(each.argument), upper));
        const double level = model.levels()[static_cast<std::size_t>(each.argument)];
        PieceMaker(builder, each, endsWithin(each, lower, upper),
                   std::clamp(level, std::min(lower, upper), std::max(lower, upper)))
            .run();
    }
    return true;
}

}  // namespace norv
