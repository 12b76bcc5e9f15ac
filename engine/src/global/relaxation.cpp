#include "global/relaxation.hpp"

#include <algorithm>
#include <cmath>

#include "global/form_arithmetic.hpp"
#include "linear/activity.hpp"

namespace engine {
namespace {

/// Rows with larger coefficients cost the simplex method more digits than they tell.
constexpr double largestCoefficient = 1e7;
/// Smaller ones cannot be told from rounding, and the simplex method would drop them in silence.
constexpr double leastCoefficient = 1e-15;
/// Levels this far beyond a line deserve a cut; relative above 1.
constexpr double leastViolation = 1e-8;
/// Less is not worth a coefficient, relative to the line.
constexpr double leastLift = 1e-6;
/// Rows and curves miss by rounding: relative.
constexpr double rounding = 1e-12;

using Kind = Definition::Kind;

double relativeTo(double miss, double size) {
    return std::fabs(miss) / std::max(1.0, std::fabs(size));
}

bool isUseful(double bound) {
    return std::fabs(bound) <= largestCoefficient;
}

/// How much a switch is on; 1 where that says nothing.
double shareOf(const Switch& own, std::span<const double> levels) {
    constexpr double least = 1e-6;
    if (own.binary == noColumn) return 1.0;
    const double share = std::fabs(levels[static_cast<std::size_t>(own.binary)] - own.off);
    return share > least && share < 1.0 ? share : 1.0;
}

}  // namespace

double valueOf(const LinearForm& form, std::span<const double> levels) {
    double value = form.constant;
    for (std::size_t k = 0; k < form.column.size(); ++k) {
        value += form.coefficient[k] * levels[static_cast<std::size_t>(form.column[k])];
    }
    return value;
}

Relaxation::Relaxation(const FactorableModel& factorable, const ClosedModel& model,
                       const Propagator& propagator)
    : factorable_(factorable),
      model_(model),
      propagator_(propagator),
      switch_(switchesOf(factorable.linear)),
      rows_(factorable.linear),
      nbModelRows_(factorable.linear.nbRows()),
      nbModelEntries_(factorable.linear.column.size()) {}

bool Relaxation::isKnown(ExpressionIndex e) const {
    return e == noExpression || !propagator_.rangeOf(e).mayBeNan;
}

/// A branch of a choice may be undefined while the other one is taken.
bool Relaxation::isActive(const Definition& definition) const {
    if (!isKnown(definition.guard)) return false;
    if (definition.guard == noExpression || definition.kind == Kind::Choice) return true;
    const auto operands = model_.operandsOf(definition.guard);
    return std::all_of(operands.begin(), operands.end(),
                       [this](ExpressionIndex x) { return isKnown(x); });
}

/// Bounds of the result from those of the arguments.
Range Relaxation::imageOf(const Definition& definition) const {
    switch (definition.kind) {
        case Kind::Sum:
            return activityOf(definition.forms[0], rows_);
        case Kind::Product:
            return widened(product(rangeOf(definition.first), rangeOf(definition.second)), 2.0);
        case Kind::Curve: {
            const Range x = rangeOf(definition.first);
            const CurveLines lines(definition.curve, {x.lower, x.upper});
            return {lines.touching(0.0, /*isBelow=*/true).offset,
                    lines.touching(0.0, /*isBelow=*/false).offset, false};
        }
        default:
            return {};
    }
}

void Relaxation::takeRanges() {
    for (std::size_t j = 0; j < rows_.nbColumns(); ++j) {
        const ColumnOrigin& origin = factorable_.origin[j];
        Range r{factorable_.linear.lower[j], factorable_.linear.upper[j], false};
        if (origin.expression != noExpression && isKnown(origin.expression)) {
            const Range own = propagator_.rangeOf(origin.expression);
            Range scaled = product(own, {origin.scale, origin.scale, false});
            if (origin.scale != 1.0) scaled = widened(scaled, 2.0);
            if (origin.offset != 0.0) {
                scaled = widened(
                    {scaled.lower + origin.offset, scaled.upper + origin.offset, false}, 2.0);
            }
            r = {std::max(r.lower, scaled.lower), std::min(r.upper, scaled.upper), false};
        }
        rows_.lower[j] = r.lower;
        rows_.upper[j] = r.upper;
    }
    for (const Definition& definition : factorable_.definition) {
        if (!isActive(definition)) continue;
        const auto j = static_cast<std::size_t>(definition.result);
        const Range image = imageOf(definition);
        rows_.lower[j] = std::max(rows_.lower[j], image.lower);
        rows_.upper[j] = std::min(rows_.upper[j], image.upper);
    }
}

bool Relaxation::refresh() {
    takeRanges();
    rows_.rowStart.resize(nbModelRows_ + 1);
    rows_.column.resize(nbModelEntries_);
    rows_.coefficient.resize(nbModelEntries_);
    rows_.rowLower.resize(nbModelRows_);
    rows_.rowUpper.resize(nbModelRows_);
    rows_.tolerance.resize(nbModelRows_);
    firstRow_.clear();
    for (const Definition& definition : factorable_.definition) {
        firstRow_.push_back(rows_.nbRows());
        addRows(definition);
    }
    firstRow_.push_back(rows_.nbRows());
    nbFixedRows_ = rows_.nbRows();
    for (std::size_t j = 0; j < rows_.nbColumns(); ++j) {
        if (rows_.lower[j] <= rows_.upper[j]) continue;
        const double gap = rows_.lower[j] - rows_.upper[j];
        if (!(relativeTo(gap, rows_.lower[j]) <= 1e-9)) return false;
        std::swap(rows_.lower[j], rows_.upper[j]);
    }
    return true;
}

/// Of any column where there is none: it keeps the place of a row.
void Relaxation::addFreeRow(std::int32_t column) {
    rows_.column.push_back(std::max(column, 0));
    rows_.coefficient.push_back(1.0);
    rows_.rowStart.push_back(static_cast<std::int32_t>(rows_.column.size()));
    rows_.rowLower.push_back(-infinity);
    rows_.rowUpper.push_back(infinity);
    rows_.tolerance.push_back(0.0);
}

void Relaxation::addRow(const LinearForm& form, std::int32_t column, double factor, double lower,
                        double upper) {
    const bool isUsable = std::isfinite(form.constant) && isUseful(factor) &&
                          (isUseful(lower) || std::isinf(lower)) &&
                          (isUseful(upper) || std::isinf(upper)) &&
                          std::all_of(form.coefficient.begin(), form.coefficient.end(), isUseful);
    if (!isUsable) return addFreeRow(column);
    double size = std::fabs(form.constant);
    double dropped = 0.0;
    const std::size_t first = rows_.column.size();
    const auto add = [&](std::int32_t j, double coefficient) {
        const Range r = rangeOf(j);
        if (std::fabs(coefficient) >= leastCoefficient) {
            rows_.column.push_back(j);
            rows_.coefficient.push_back(coefficient);
            size = std::max(size, std::fabs(coefficient));
        } else if (coefficient != 0.0) {
            dropped += std::fabs(coefficient) * std::max(std::fabs(r.lower), std::fabs(r.upper));
        }
    };
    for (std::size_t k = 0; k < form.column.size(); ++k) add(form.column[k], form.coefficient[k]);
    if (factor != 0.0) add(column, factor);
    if (std::isinf(dropped) || rows_.column.size() == first) {
        rows_.column.resize(first);
        rows_.coefficient.resize(first);
        return addFreeRow(column);
    }
    const double slack = rounding * size + dropped;
    rows_.rowStart.push_back(static_cast<std::int32_t>(rows_.column.size()));
    rows_.rowLower.push_back(lower - form.constant - slack);
    rows_.rowUpper.push_back(upper - form.constant + slack);
    rows_.tolerance.push_back(0.0);
}

void Relaxation::addCut(const Cut& cut) {
    addRow(cut, noColumn, 0.0, -infinity, 0.0);
}

void Relaxation::addRows(const Definition& definition) {
    switch (definition.kind) {
        case Kind::Sum:
            break;
        case Kind::Curve:
            addCurveRows(definition);
            break;
        case Kind::Product:
            addProductRows(definition);
            break;
        case Kind::Largest:
            addLargestRows(definition);
            break;
        case Kind::Choice:
            addChoiceRows(definition);
            break;
        case Kind::AtMost:
            addAtMostRows(definition);
            break;
        case Kind::IsZero:
            addIsZeroRows(definition);
            break;
    }
}

/// A line below f that holds while the switch is on may be lifted to f(value) where it is off
/// (Frangioni and Gentile, "Perspective cuts for a class of convex 0-1 mixed integer programs",
/// Math. Prog. 106, 2006; here for any line, below or above): line(x) + (f(value) - line(value)) *
/// off.
LinearForm Relaxation::formOf(const Definition& definition, const Line& line, bool isBelow) const {
    LinearForm form{{}, {}, line.offset};
    if (line.slope != 0.0) {
        form.column.push_back(definition.first);
        form.coefficient.push_back(line.slope);
    }
    const Switch& own = switch_[static_cast<std::size_t>(definition.first)];
    if (own.binary == noColumn) return form;
    const double value = definition.curve.value(own.value);
    const double size = std::max({1.0, std::fabs(value), std::fabs(line.offset)});
    const double lift = value - line.at(own.value) + (isBelow ? -rounding : rounding) * size;
    if (!std::isfinite(lift) || (isBelow ? lift : -lift) <= leastLift * size) return form;
    // lift * (1 - y), or lift * y where the binary is off at 1.
    form.column.push_back(own.binary);
    form.coefficient.push_back(own.off == 0.0 ? -lift : lift);
    if (own.off == 0.0) form.constant += lift;
    return form;
}

/// result - form >= 0, or <= for a line above.
void Relaxation::addLine(const Definition& definition, const Line& line, bool isBelow) {
    if (!std::isfinite(line.offset) || !std::isfinite(line.slope)) {
        return addFreeRow(definition.result);
    }
    addRow(scaled(formOf(definition, line, isBelow), -1.0), definition.result, 1.0,
           isBelow ? 0.0 : -infinity, isBelow ? infinity : 0.0);
}

/// The nearest lines at both ends and between them, from below and from above.
void Relaxation::addCurveRows(const Definition& definition) {
    constexpr int nbPoints = 3;
    const Range x = rangeOf(definition.first);
    const bool isActiveHere = isActive(definition) && !x.isEmpty();
    if (!isActiveHere) {
        for (int k = 0; k < 2 * nbPoints; ++k) addFreeRow(definition.result);
        return;
    }
    const CurveLines lines(definition.curve, {x.lower, x.upper});
    const Interval domain = lines.domain();
    const double anchor = std::clamp(0.0, domain.lower, domain.upper);
    const double near = std::max(1.0, std::fabs(anchor));
    const double first = std::isfinite(domain.lower) ? domain.lower : anchor - near;
    const double last = std::isfinite(domain.upper) ? domain.upper : anchor + near;
    for (const bool isBelow : {true, false}) {
        double previous = std::numeric_limits<double>::quiet_NaN();
        for (const double at : {first, 0.5 * (first + last), last}) {
            const Line line = lines.nearest(at, isBelow);
            if (line.slope == previous) {
                addFreeRow(definition.result);
            } else {
                addLine(definition, line, isBelow);
            }
            previous = line.slope;
        }
    }
}

/// McCormick's envelopes, in the order of the corners that they go through.
void Relaxation::addProductRows(const Definition& definition) {
    const Range x = rangeOf(definition.first);
    const Range y = rangeOf(definition.second);
    const bool isActiveHere = isActive(definition);
    const auto add = [&](double a, double b, bool isBelow) {
        if (!isActiveHere || !isUseful(a) || !isUseful(b)) return addFreeRow(definition.result);
        LinearForm form{{}, {}, a * b};
        if (b != 0.0) {
            form.column.push_back(definition.first);
            form.coefficient.push_back(-b);
        }
        if (a != 0.0) {
            form.column.push_back(definition.second);
            form.coefficient.push_back(-a);
        }
        addRow(form, definition.result, 1.0, isBelow ? 0.0 : -infinity, isBelow ? infinity : 0.0);
    };
    add(x.lower, y.lower, /*isBelow=*/true);
    add(x.upper, y.upper, /*isBelow=*/true);
    add(x.upper, y.lower, /*isBelow=*/false);
    add(x.lower, y.upper, /*isBelow=*/false);
}

/// result <= form + the most by which another one can be larger.
void Relaxation::addLargestRows(const Definition& definition) {
    const bool isActiveHere = isActive(definition);
    std::vector<Range> activity;
    std::size_t highest = 0;
    double second = -infinity;  // the highest upper bound but one
    for (std::size_t k = 0; k < definition.forms.size(); ++k) {
        activity.push_back(activityOf(definition.forms[k], rows_));
        if (k == 0) continue;
        const bool isHigher = activity[k].upper > activity[highest].upper;
        second = std::max(second, isHigher ? activity[highest].upper : activity[k].upper);
        if (isHigher) highest = k;
    }
    for (std::size_t k = 0; k < definition.forms.size(); ++k) {
        const double others = k == highest ? second : activity[highest].upper;
        const double excess = std::max(0.0, others - activity[k].lower);
        if (!isActiveHere || !isUseful(excess)) {
            addFreeRow(definition.result);
            continue;
        }
        addRow(scaled(definition.forms[k], -1.0), definition.result, 1.0, -infinity, excess);
    }
}

/// result - form <= most * t and >= least * t, where t is 1 unless the branch is taken.
void Relaxation::addChoiceRows(const Definition& definition) {
    const Range result = rangeOf(definition.result);
    for (std::size_t branch = 0; branch < 2; ++branch) {
        const Range form = activityOf(definition.forms[branch], rows_);
        // t = 1 - condition for the first branch, the condition for the second.
        const double sign = branch == 0 ? -1.0 : 1.0;
        const double constant = branch == 0 ? 1.0 : 0.0;
        for (const bool isUpper : {true, false}) {
            const double most = isUpper ? std::max(0.0, result.upper - form.lower)
                                        : std::min(0.0, result.lower - form.upper);
            if (!isActive(definition) || !isUseful(most)) {
                addFreeRow(definition.result);
                continue;
            }
            FormSum sum;
            sum.add(columnForm(definition.result), 1.0);
            sum.add(definition.forms[branch], -1.0);
            sum.add(LinearForm{{definition.first}, {sign}, constant}, -most);
            addRow(sum.take(), noColumn, 0.0, isUpper ? -infinity : 0.0, isUpper ? 0.0 : infinity);
        }
    }
}

/// form <= slack + most * (1 - t), form >= step + (least - step) * t.
void Relaxation::addAtMostRows(const Definition& definition) {
    const Range form = activityOf(definition.forms[0], rows_);
    const bool isActiveHere = isActive(definition);
    const double most = std::max(0.0, form.upper - definition.slack);
    const double least = std::min(0.0, form.lower - definition.step);
    if (isActiveHere && isUseful(most)) {
        addRow(definition.forms[0], definition.result, most, -infinity, definition.slack + most);
    } else {
        addFreeRow(definition.result);
    }
    if (isActiveHere && isUseful(least)) {
        addRow(definition.forms[0], definition.result, -least, definition.step, infinity);
    } else {
        addFreeRow(definition.result);
    }
}

/// |form| <= slack + most * (1 - t).
void Relaxation::addIsZeroRows(const Definition& definition) {
    const Range form = activityOf(definition.forms[0], rows_);
    const double most = std::max(0.0, form.upper - definition.slack);
    const double least = std::min(0.0, form.lower + definition.slack);
    const bool isActiveHere = isActive(definition);
    if (isActiveHere && isUseful(most)) {
        addRow(definition.forms[0], definition.result, most, -infinity, definition.slack + most);
    } else {
        addFreeRow(definition.result);
    }
    if (isActiveHere && isUseful(least)) {
        addRow(definition.forms[0], definition.result, least, least - definition.slack, infinity);
    } else {
        addFreeRow(definition.result);
    }
}

std::size_t Relaxation::separate(std::span<const double> levels, std::vector<Cut>& cuts) const {
    const std::size_t before = cuts.size();
    for (const Definition& definition : factorable_.definition) {
        if (definition.kind != Kind::Curve || !isActive(definition)) continue;
        const Range range = rangeOf(definition.first);
        const CurveLines lines(definition.curve, {range.lower, range.upper});
        const double level = levels[static_cast<std::size_t>(definition.first)];
        const double z = levels[static_cast<std::size_t>(definition.result)];
        const Switch& own = switch_[static_cast<std::size_t>(definition.first)];
        const double on = shareOf(own, levels);
        // Between off and on, at a fraction of the way.
        const double x = std::clamp(on < 1.0 ? own.value + (level - own.value) / on : level,
                                    lines.domain().lower, lines.domain().upper);
        double value = definition.curve.value(x);
        if (on < 1.0) value = on * value + (1.0 - on) * definition.curve.value(own.value);
        if (!std::isfinite(value) || relativeTo(z - value, value) <= leastViolation) continue;
        const bool isBelow = z < value;
        const Line line = lines.nearest(x, isBelow);
        if (!std::isfinite(line.offset) || !isUseful(line.slope)) continue;
        const double beyond = (isBelow ? 1.0 : -1.0) *
                              (engine::valueOf(formOf(definition, line, isBelow), levels) - z);
        if (!(beyond > leastViolation * std::max(1.0, std::fabs(value)))) continue;
        addCut(definition, line, isBelow, cuts);
    }
    return cuts.size() - before;
}

/// line - result <= 0, or >= 0 for a line above.
void Relaxation::addCut(const Definition& definition, const Line& line, bool isBelow,
                        std::vector<Cut>& cuts) const {
    const double sign = isBelow ? 1.0 : -1.0;
    Cut cut = scaled(formOf(definition, line, isBelow), sign);
    cut.column.push_back(definition.result);
    cut.coefficient.push_back(-sign);
    cuts.push_back(std::move(cut));
}

void Relaxation::supportAt(std::span<const double> levels, std::vector<Cut>& cuts) const {
    for (const Definition& definition : factorable_.definition) {
        if (definition.kind != Kind::Curve || !isActive(definition)) continue;
        const Range range = rangeOf(definition.first);
        const double x = levels[static_cast<std::size_t>(definition.first)];
        if (!range.contains(x)) continue;
        const CurveLines lines(definition.curve, {range.lower, range.upper});
        for (const bool isBelow : {true, false}) {
            const Line line = lines.nearest(x, isBelow);
            if (std::isfinite(line.offset) && isUseful(line.slope)) {
                addCut(definition, line, isBelow, cuts);
            }
        }
    }
}

std::vector<double> Relaxation::levelsAt(const std::vector<Value>& values) const {
    std::vector<double> levels(rows_.nbColumns(), 0.0);
    for (std::size_t j = 0; j < levels.size(); ++j) {
        const ColumnOrigin& origin = factorable_.origin[j];
        if (origin.expression == noExpression) continue;
        levels[j] = origin.scale * values[static_cast<std::size_t>(origin.expression)].asDouble() +
                    origin.offset;
    }
    for (const Definition& definition : factorable_.definition) {
        const auto j = static_cast<std::size_t>(definition.result);
        if (factorable_.origin[j].expression == noExpression) {
            levels[j] = valueAt(definition, levels);
        }
    }
    return levels;
}

double Relaxation::valueAt(const Definition& definition, std::span<const double> levels) {
    const auto level = [&levels](std::int32_t j) { return levels[static_cast<std::size_t>(j)]; };
    switch (definition.kind) {
        case Kind::Sum:
            return valueOf(definition.forms[0], levels);
        case Kind::Curve:
            return definition.curve.value(level(definition.first));
        case Kind::Product:
            return level(definition.first) * level(definition.second);
        case Kind::Largest: {
            double largest = -infinity;
            for (const LinearForm& f : definition.forms) {
                largest = std::max(largest, valueOf(f, levels));
            }
            return largest;
        }
        case Kind::Choice:
            return valueOf(definition.forms[level(definition.first) > 0.5 ? 0 : 1], levels);
        case Kind::AtMost:
            return valueOf(definition.forms[0], levels) <= definition.slack ? 1.0 : 0.0;
        case Kind::IsZero:
            return std::fabs(valueOf(definition.forms[0], levels)) <= definition.slack ? 1.0 : 0.0;
    }
    return 0.0;
}

double Relaxation::missOf(const Definition& definition, std::span<const double> levels) const {
    if (!isActive(definition)) return 0.0;
    const double value = valueAt(definition, levels);
    const double level = levels[static_cast<std::size_t>(definition.result)];
    return std::isfinite(value) ? relativeTo(level - value, value) : 0.0;
}

}  // namespace engine
