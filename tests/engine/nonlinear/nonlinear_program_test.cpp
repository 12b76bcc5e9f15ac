#include "nonlinear/nonlinear_program.hpp"

#include <gtest/gtest.h>

#include <string>

#include "engine/model_text.hpp"
#include "evaluate/judge.hpp"

namespace engine {
namespace {

using testing::ModelText;
using Matrix = std::vector<std::vector<double>>;

Matrix zeros(std::size_t rows, std::size_t columns) {
    return {rows, std::vector<double>(columns, 0.0)};
}

/// Values of the objectives by the judge.
std::vector<double> judged(const ClosedModel& model, const std::vector<double>& x) {
    Point point;
    for (const double v : x) point.push_back(Value::ofDouble(v));
    std::vector<Value> values;
    std::vector<double> result;
    for (const Value v : judge(model, point, values).objectives) result.push_back(v.asDouble());
    return result;
}

Matrix jacobianAt(NonlinearProgram& program, const std::vector<double>& x) {
    Matrix result = zeros(program.nbFunctions(), x.size());
    program.moveTo(x);
    const auto entries = program.computeJacobian();
    for (std::size_t f = 0; f < program.nbFunctions(); ++f) {
        for (std::size_t k = program.start()[f]; k < program.start()[f + 1]; ++k) {
            result[f][static_cast<std::size_t>(program.column()[k])] += entries[k];
        }
    }
    return result;
}

TEST(NonlinearProgram, HasTheDerivativesOfEveryOperator) {
    const std::string decisions =
        "x: real -9 9; y: real -9 9; z: real -9 9; p = prod(x, y, x, 0.5);"
        "s = sum(p, prod(z, 3.0), 1.5); a = array(x, 2.0, p);";
    const char* const functions[] = {"sum(x, s, y, x)",
                                     "sub(s, prod(s, y))",
                                     "sub(x, sum(s, s))",
                                     "prod(s, s)",
                                     "prod(p, s, z)",
                                     "prod(sum(x, 1.0), sum(x, 1.0), sum(x, 1.0))",
                                     "max(p, s, y)",
                                     "min(p, prod(y, y), s)",
                                     "if(geq(x, y), y, prod(p, z))",
                                     "if(leq(x, y), sin(p), x)",
                                     "if(1, prod(y, y), x)",
                                     "abs(sub(p, 8.0))",
                                     "abs(prod(p, p))",
                                     "dist(p, prod(z, z))",
                                     "dist(y, p)",
                                     "div(x, p)",
                                     "div(s, 4.0)",
                                     "div(2.0, s)",
                                     "mod(p, sum(1.5, prod(0.1, y)))",
                                     "at(a, 2)",
                                     "at(a, sub(2.5, x))",
                                     "scalarprod(a, a)",
                                     "sqrt(p)",
                                     "log(p)",
                                     "exp(p)",
                                     "pow(x, y)",
                                     "pow(p, 2)",
                                     "pow(p, 3)",
                                     "pow(p, 0.5)",
                                     "pow(1.5, p)",
                                     "pow(x, x)",
                                     "pow(s, 1)",
                                     "cos(p)",
                                     "sin(s)",
                                     "tan(x)",
                                     "round(p)",
                                     "prod(sum(x, y, z), sum(x, y, z))",
                                     "exp(sum(pow(s, 2), prod(-1.0, x, s)))",
                                     "sqrt(sum(prod(x, x), prod(y, y), prod(z, z)))",
                                     "prod(not(gt(x, y)), s, s)"};
    const std::vector<double> at{1.3, 2.2, -0.7};
    constexpr double h = 1e-5;
    for (const char* text : functions) {
        SCOPED_TRACE(text);
        const ModelText built(decisions + "minimise " + text + ";");
        NonlinearProgram program(built.model);
        ASSERT_TRUE(program.hasHessian());
        const Matrix slopes = jacobianAt(program, at);
        EXPECT_NEAR(program.valueOf(0), judged(built.model, at)[0], 1e-12);
        Matrix curves = zeros(at.size(), at.size());
        std::vector<double> entries(program.hessianRow().size());
        const double weight[] = {2.0};
        program.computeHessian(weight, entries);
        for (std::size_t k = 0; k < entries.size(); ++k) {
            const auto i = static_cast<std::size_t>(program.hessianRow()[k]);
            const auto j = static_cast<std::size_t>(program.hessianColumn()[k]);
            ASSERT_GE(i, j);
            curves[i][j] += entries[k];
        }
        for (std::size_t j = 0; j < at.size(); ++j) {
            std::vector<double> higher = at;
            std::vector<double> lower = at;
            higher[j] += h;
            lower[j] -= h;
            const double slope =
                (judged(built.model, higher)[0] - judged(built.model, lower)[0]) / (2.0 * h);
            EXPECT_NEAR(slopes[0][j], slope, 1e-5 * std::max(1.0, std::abs(slope))) << j;
            const Matrix above = jacobianAt(program, higher);
            const Matrix below = jacobianAt(program, lower);
            for (std::size_t i = j; i < at.size(); ++i) {
                const double curve = (above[0][i] - below[0][i]) / h;
                EXPECT_NEAR(curves[i][j], curve, 1e-4 * std::max(1.0, std::abs(curve)))
                    << i << ' ' << j;
            }
        }
    }
}

TEST(NonlinearProgram, ReadsRowsFromRelationsConjunctionsAndNegations) {
    struct Case {
        const char* constraints;
        std::vector<std::pair<double, double>> ranges;  ///< of x - 2 y, as far as there are rows
        bool isWhole;
    };
    const double inf = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {"eq(x, t)", {{0, 0}}, true},
        {"leq(x, t); geq(x, t)", {{-inf, 0}, {0, inf}}, true},
        {"and(leq(x, t), not(lt(x, t)))", {{-inf, 0}, {0, inf}}, true},
        {"not(or(geq(x, t), neq(x, t)))", {{-inf, -2e-6}, {0, 0}}, true},
        {"gt(x, t)", {{2e-6, inf}}, true},
        {"neq(x, t); geq(x, t)", {{0, inf}}, false},
        {"or(leq(x, t), geq(x, t))", {}, false},
        {"lt(n, m)", {{-inf, -1}}, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.constraints);
        const ModelText built(std::string("x: real 0 9; y: real 0 9; n: int 0 9; m: int 0 9;"
                                          "t = prod(2, y);") +
                              c.constraints);
        NonlinearProgram program(built.model);
        EXPECT_EQ(program.isWhole(), c.isWhole);
        ASSERT_EQ(program.nbRows(), c.ranges.size());
        const std::vector<double> at{3.0, 5.0, 4.0, 11.0};
        program.moveTo(at);
        for (std::size_t i = 0; i < c.ranges.size(); ++i) {
            EXPECT_DOUBLE_EQ(program.rowLower(i), c.ranges[i].first);
            EXPECT_DOUBLE_EQ(program.rowUpper(i), c.ranges[i].second);
            EXPECT_DOUBLE_EQ(program.valueOf(i), -7.0);
            EXPECT_DOUBLE_EQ(program.violationOf(i),
                             std::max({0.0, c.ranges[i].first + 7.0, -7.0 - c.ranges[i].second}));
        }
    }
}

}  // namespace
}  // namespace engine
