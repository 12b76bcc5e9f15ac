#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "engine/model_text.hpp"
#include "evaluate/judge.hpp"

namespace engine::testing {

/// Random model texts for tests that enumerate or sample the whole space.
class RandomModels {
public:
    explicit RandomModels(std::uint32_t seed) : random_(seed) {}

    int below(int bound) { return static_cast<int>(random_() % static_cast<std::uint32_t>(bound)); }
    double uniform(double lower, double upper) {
        return lower + (upper - lower) * static_cast<double>(random_()) / 4294967296.0;
    }

    /// Three or four decisions, small integer domains; real ones too if `withReals`.
    std::string decisions(bool withReals) {
        names_.clear();
        std::string text;
        const int nb = 3 + below(2);
        for (int j = 0; j < nb; ++j) {
            const std::string name = "d" + std::to_string(j);
            const int lower = below(7) - 3;
            const std::string bounds =
                std::to_string(lower) + " " + std::to_string(lower + below(5)) + ";";
            const int kind = below(withReals ? 4 : 3);
            text.append(name).append(kind == 0 ? ": bool;" : kind == 3 ? ": real " : ": int ");
            if (kind != 0) text.append(bounds);
            names_.push_back(name);
        }
        return text;
    }
    /// A real decision r that a boolean one switches off, and often a cone whose head it is.
    std::string switchedDecision() {
        std::string text = "s: bool; r: real 0 3; leq(r, prod(3, s));";
        if (below(2) == 0) {
            text += "leq(sum(prod(0.5, pow(" + name() + ",2)), pow(" + name() + ",2)," +
                    std::to_string(below(2)) + ")," +
                    (below(2) == 0 ? "pow(r,2));" : "prod(r,s));");
        }
        names_.insert(names_.end(), {"s", "r", "r"});
        return text;
    }
    /// A name for an expression, which later ones may use.
    std::string definition(int depth) {
        const std::string name = "t" + std::to_string(names_.size());
        const std::string text = name + " = " + expression(depth) + ";";
        names_.push_back(name);
        return text;
    }
    /// Any operator over the decisions and constants, nested at most `depth` deep.
    std::string expression(int depth) {
        if (depth == 0 || below(5) == 0) return below(4) == 0 ? constant() : name();
        static const char* const shapes[] = {"sum(#,#,#)",
                                             "sub(#,#)",
                                             "prod(#,#)",
                                             "prod(#,#,#)",
                                             "max(#,#)",
                                             "min(#,#,#)",
                                             "eq(#,#)",
                                             "neq(#,#)",
                                             "geq(#,#)",
                                             "leq(#,#)",
                                             "gt(#,#)",
                                             "lt(#,#)",
                                             "if(#,#,#)",
                                             "not(#)",
                                             "and(#,#)",
                                             "or(#,#)",
                                             "xor(#,#)",
                                             "abs(#)",
                                             "dist(#,#)",
                                             "div(#,#)",
                                             "mod(#,#)",
                                             "ceil(#)",
                                             "floor(#)",
                                             "round(#)",
                                             "sqrt(#)",
                                             "log(#)",
                                             "exp(#)",
                                             "pow(#,2)",
                                             "pow(#,3)",
                                             "pow(#,0.5)",
                                             "at(array(#,#),#)",
                                             "cos(#)",
                                             "sin(#)",
                                             "pow(#,-1)",
                                             "sum(prod(#,2.5),#)",
                                             "tan(#)",
                                             "scalarprod(array(#,2),array(#,#))"};
        std::string text = shapes[below(static_cast<int>(std::size(shapes)))];
        for (std::size_t at = text.find('#'); at != std::string::npos; at = text.find('#', at)) {
            const std::string operand =
                text[at - 1] == '(' && text.rfind("pow", 0) == 0 && below(2) == 0
                    ? name()
                    : expression(depth - 1);
            text.replace(at, 1, operand);
            at += operand.size();
        }
        return text;
    }
    /// sum(prod(d, c), ...) over some decisions.
    std::string linear(bool whole) {
        std::string text = "sum(";
        for (const std::string& n : names_) {
            if (below(4) == 0) continue;
            const std::string c = std::to_string(below(9) - 4) + (whole ? "" : ".5");
            text.append("prod(").append(n).append(",").append(c).append("),");
        }
        return text + (whole ? std::to_string(below(5)) : constant()) + ")";
    }
    std::string constant() {
        static const char* const constants[] = {"0", "1", "2", "-1", "3", "0.5", "1.0", "-2.25"};
        return constants[below(static_cast<int>(std::size(constants)))];
    }
    std::string name() {
        return names_[static_cast<std::size_t>(below(static_cast<int>(names_.size())))];
    }

private:
    std::mt19937 random_;
    std::vector<std::string> names_;
};

/// Calls `visit(point)` for every point of a model whose decisions are discrete, or with some
/// values of real ones: bounds, whole numbers and a random value.
template <typename Visit>
void forEachPoint(const ClosedModel& model, RandomModels& random, Visit visit) {
    std::vector<std::vector<Value>> choices;
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const Interval& i = model.domain[static_cast<std::size_t>(d)];
        std::vector<Value> values;
        for (double v = i.lower; v <= i.upper; v += 1.0) {
            values.push_back(model.isDiscrete(d) ? Value::ofInt(static_cast<std::int64_t>(v))
                                                 : Value::ofDouble(v));
        }
        if (!model.isDiscrete(d))
            values.push_back(Value::ofDouble(random.uniform(i.lower, i.upper)));
        choices.push_back(values);
    }
    std::vector<std::size_t> at(choices.size(), 0);
    Point point(choices.size());
    for (bool more = true; more;) {
        for (std::size_t d = 0; d < at.size(); ++d) point[d] = choices[d][at[d]];
        visit(point);
        more = false;
        for (std::size_t d = 0; d < at.size() && !more; ++d) {
            more = ++at[d] < choices[d].size();
            if (!more) at[d] = 0;
        }
    }
}

/// The point nearest to 0.
inline Point startOf(const ClosedModel& model) {
    Point point;
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const Interval& i = model.domain[static_cast<std::size_t>(d)];
        const double v = std::clamp(0.0, i.lower, std::max(i.lower, i.upper));
        point.push_back(model.isDiscrete(d) ? Value::ofInt(static_cast<std::int64_t>(v))
                                            : Value::ofDouble(v));
    }
    return point;
}

/// The best point of a discrete model, found by looking at all of them.
inline Verdict bestByEnumeration(const ClosedModel& model, RandomModels& random) {
    Verdict best;
    std::vector<Value> values;
    forEachPoint(model, random, [&](const Point& point) {
        const Verdict verdict = judge(model, point, values);
        if (isBetter(model, verdict, best)) best = verdict;
    });
    return best;
}

}  // namespace engine::testing
