/// Expressions, the code they become, and the quadratic polynomials they are.
#include "nonlinear/expression.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

#include "nonlinear/emitter.hpp"
#include "nonlinear/evaluator.hpp"
#include "nonlinear/quadratic_form.hpp"
#include "norv/nonlinear/assembler.hpp"

namespace norv {
namespace {

constexpr std::int32_t nbVariables = 4;

/// A store with an emitter's surroundings.
struct Workshop {
    ExpressionStore store{nbVariables};
    std::vector<double> constants;
    ConstantPool pool{[this](double value) {
        constants.push_back(value);
        return static_cast<std::int32_t>(constants.size());
    }};

    NodeIndex number(double value) { return store.constant(value); }
    NodeIndex sum(std::initializer_list<NodeIndex> terms) { return store.sum(std::vector(terms)); }
    NodeIndex product(std::initializer_list<NodeIndex> x) { return store.product(std::vector(x)); }
    std::string code(NodeIndex root) {
        return describe(Emitter(store, pool).emit(root), constants);
    }
};

TEST(Emitter, UsesTheCompactForms) {
    Workshop w;
    auto& s = w.store;
    const NodeIndex x = 0, y = 1, z = 2;
    const std::pair<NodeIndex, const char*> cases[] = {
        {x, "nlPushV 1"},
        {w.number(0), "nlPushZero"},
        {w.sum({x, y, w.number(3)}), "nlPushV 1, nlAddV 2, nlAddI #3"},
        {w.sum({w.number(3), x}), "nlPushV 1, nlAddI #3"},
        {w.sum({w.number(3), s.call(Function::exp, x), w.product({w.number(3), y})}),
         "nlPushV 1, nlCallArg1 exp, nlAddI #3, nlPushV 2, nlMulIAdd #3"},
        {w.sum({x, s.negation(y), s.negation(s.call(Function::sin, z))}),
         "nlPushV 1, nlSubV 2, nlPushV 3, nlCallArg1 sin, nlSub"},
        {s.difference(x, y), "nlPushV 1, nlSubV 2"},
        {s.difference(x, w.number(2)), "nlPushV 1, nlSubI #2"},
        {s.difference(x, w.product({y, w.number(2)})), "nlPushV 1, nlPushV 2, nlMulIAdd #-2"},
        {s.difference(w.number(2), s.call(Function::sqr, x)),
         "nlPushI #2, nlPushV 1, nlCallArg1 sqr, nlSub"},
        {w.product({w.number(5), x, y}), "nlPushV 1, nlMulI #5, nlMulV 2"},
        {w.product({x, s.call(Function::cos, y)}), "nlPushV 1, nlPushV 2, nlCallArg1 cos, nlMul"},
        {s.quotient(x, y), "nlPushV 1, nlDivV 2"},
        {s.quotient(x, w.number(2)), "nlPushV 1, nlDivI #2"},
        {s.quotient(w.number(2), w.sum({x, y})), "nlPushI #2, nlPushV 1, nlAddV 2, nlDiv"},
        {s.negation(x), "nlUMinV 1"},
        {s.negation(w.sum({x, y})), "nlPushV 1, nlAddV 2, nlUMin"},
        {s.call(Function::min, std::array{x, y, z}),
         "nlPushV 1, nlPushV 2, nlCallArg2 min, nlPushV 3, nlCallArg2 min"},
        {s.call(Function::ifthen, std::array{x, y, z}),
         "nlPushV 1, nlPushV 2, nlPushV 3, nlFuncArgN 3, nlCallArgN ifthen"},
        {s.call(Function::edist, std::array{x, y}), "nlPushV 1, nlPushV 2, nlCallArg2 edist"},
        {s.call(Function::pi, std::span<const NodeIndex>()), "nlPushI #3.14159"},
        // Constants fold unless that would hide an error.
        {w.product({w.number(2), w.number(3)}), "nlPushI #6"},
        {s.call(Function::power, w.number(2), w.number(3)), "nlPushI #8"},
        {s.quotient(w.number(1), w.number(0)), "nlPushI #1, nlPushZero, nlDiv"},
        // Not 0 * log(y), which a reader may take for 0 also where there is no logarithm.
        {w.sum({x, w.product({w.number(0), s.call(Function::log, y)})}),
         "nlPushV 1, nlPushZero, nlPushV 2, nlCallArg1 log, nlMul, nlAdd"},
        {s.call(Function::log, w.number(-1)), "nlPushI #-1, nlCallArg1 log"},
        // Operations of one kind make one chain, also where a factor 1 keeps them apart.
        {w.sum({w.sum({x, y}), w.sum({z, w.product({w.number(1), w.sum({x, z})})})}),
         "nlPushV 1, nlAddV 2, nlAddV 3, nlAddV 1, nlAddV 3"},
        {w.product({x, s.quotient(w.product({w.number(2), y}), w.number(1)), w.product({z, x})}),
         "nlPushV 1, nlMulI #2, nlMulV 2, nlMulV 3, nlMulV 1"},
        {s.call(Function::max, s.call(Function::max, x, y), s.call(Function::max, z, x)),
         "nlPushV 1, nlPushV 2, nlCallArg2 max, nlPushV 3, nlCallArg2 max, nlPushV 1, nlCallArg2 "
         "max"},
        {s.call(Function::boolor, x, s.call(Function::booland, y, z)),
         "nlPushV 1, nlPushV 2, nlPushV 3, nlCallArg2 booland, nlCallArg2 boolor"},
        {w.sum({s.difference(w.sum({x, y}), z), w.sum({x, z})}),
         "nlPushV 1, nlAddV 2, nlSubV 3, nlAddV 1, nlAddV 3"},
        // What reads as a sum or product waits below; the longest of them begins the chain.
        {w.sum({s.difference(x, w.number(2)), y,
                s.difference(s.call(Function::sin, z), w.number(3)), s.difference(x, w.number(3))}),
         "nlPushV 1, nlSubI #2, nlPushV 1, nlSubI #3, nlPushV 3, nlCallArg1 sin, nlSubI #3, "
         "nlAddV 2, nlAdd, nlAdd"},
        {w.product({s.call(Function::sqr, x), s.quotient(y, w.number(2)), s.negation(z)}),
         "nlPushV 1, nlCallArg1 sqr, nlUMinV 3, nlPushV 2, nlDivI #2, nlMul, nlMul"},
        {w.product({s.call(Function::log10, x), s.quotient(x, y), s.call(Function::log2, y)}),
         "nlPushV 1, nlCallArg1 log10, nlPushV 2, nlCallArg1 log2, nlPushV 1, nlDivV 2, nlMul, "
         "nlMul"},
    };
    for (const auto& [root, expected] : cases) EXPECT_EQ(w.code(root), expected);
    // 3 and 2 came many times, but are there once.
    EXPECT_EQ(std::count(w.constants.begin(), w.constants.end(), 3.0), 1);
    EXPECT_EQ(std::count(w.constants.begin(), w.constants.end(), 2.0), 1);
}

TEST(ConstantPool, HoldsNoValueTwiceHoweverManyThereAre) {
    Workshop w;
    for (const int round : {1, 2}) {
        for (int k = 0; k < 1000; ++k) EXPECT_EQ(w.pool.entryOf(0.1 * k), k + 1) << round;
    }
    EXPECT_EQ(w.pool.entryOf(-0.0), 1);
}

/// The value of an expression, straight from its graph.
std::vector<Quantity> valuesOf(const ExpressionStore& store, const std::vector<double>& point) {
    std::vector<Quantity> values;
    for (NodeIndex node = 0; node < store.nbNodes(); ++node) {
        std::vector<Quantity> x;
        std::int32_t nbErrors = 0;
        for (const NodeIndex each : store.operandsOf(node)) {
            x.push_back(values[static_cast<std::size_t>(each)]);
            nbErrors += x.back().nbErrors;
        }
        const auto fold = [&](auto&& operation) {
            Quantity total = x[0];
            for (std::size_t k = 1; k < x.size(); ++k) total = operation(total, x[k]);
            return total;
        };
        const auto of = [&](auto&& rule) {
            return fold([&](Quantity a, Quantity b) {
                return resultOf(rule(a.value, b.value), a.nbErrors + b.nbErrors);
            });
        };
        switch (store.kind(node)) {
            case NodeKind::variable:
                values.push_back({point[static_cast<std::size_t>(node)], 0});
                break;
            case NodeKind::constant:
                values.push_back({store.valueOf(node), 0});
                break;
            case NodeKind::sum:
                values.push_back(of([](double a, double b) { return a + b; }));
                break;
            case NodeKind::difference:
                values.push_back(of([](double a, double b) { return a - b; }));
                break;
            case NodeKind::product:
                values.push_back(of([](double a, double b) { return multiply(a, b); }));
                break;
            case NodeKind::quotient:
                values.push_back(of([](double a, double b) { return a / b; }));
                break;
            case NodeKind::negation:
                values.push_back(resultOf(-x[0].value, nbErrors));
                break;
            case NodeKind::call: {
                const Function f = store.functionOf(node);
                values.push_back(isFoldable(f) ? fold([f](Quantity a, Quantity b) {
                    return call(f, std::array{a, b});
                })
                                               : call(f, x));
                break;
            }
            case NodeKind::foreign:
                ADD_FAILURE();
                break;
        }
    }
    return values;
}

/// A graph of random operations, in which nodes are shared.
ExpressionStore randomStore(std::mt19937& random) {
    ExpressionStore store(nbVariables);
    std::uniform_real_distribution<double> level(-3.0, 3.0);
    const auto any = [&] {
        const auto nbNodes = static_cast<std::uint32_t>(store.nbNodes());
        const auto recent = std::min<std::uint32_t>(nbNodes, 8);
        return static_cast<NodeIndex>(random() % 3 == 0 ? random() % nbNodes
                                                        : nbNodes - 1 - random() % recent);
    };
    for (int k = 0; k < 25; ++k) {
        std::vector<NodeIndex> x(2 + random() % 3);
        for (NodeIndex& each : x) each = any();
        switch (random() % 8) {
            case 0:
                store.constant(random() % 2 == 0 ? std::round(level(random)) : level(random));
                break;
            case 1:
                store.sum(x);
                break;
            case 2:
                store.product(x);
                break;
            case 3:
                store.difference(x[0], x[1]);
                break;
            case 4:
                store.quotient(x[0], x[1]);
                break;
            case 5:
                store.negation(x[0]);
                break;
            default: {
                const FunctionTraits& f = usedFunctions()[random() % usedFunctions().size()];
                const bool isFree = f.nbArguments == FunctionTraits::anyCount || isFoldable(f.code);
                x.resize(isFree ? x.size() : static_cast<std::size_t>(f.nbArguments), any());
                store.call(f.code, x);
            }
        }
    }
    return store;
}

TEST(Emitter, CodeComputesWhatTheExpressionSays) {
    std::mt19937 random(20);
    std::uniform_real_distribution<double> level(-3.0, 3.0);
    std::int64_t nbCompared = 0;
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Workshop w;
        w.store = randomStore(random);
        std::vector<double> point(nbVariables);
        for (double& each : point)
            each = random() % 2 == 0 ? std::round(level(random)) : level(random);
        const auto values = valuesOf(w.store, point);
        Emitter emitter(w.store, w.pool);
        for (NodeIndex root = 0; root < w.store.nbNodes(); ++root) {
            if (emitter.sizeBound(root) > 100000) continue;
            InstructionList list = emitter.emit(root);
            EXPECT_LE(list.size(), emitter.sizeBound(root) + 2U);
            const ListCheck check =
                checkInstructions(list.opcodes, list.fields, nbVariables,
                                  static_cast<std::int32_t>(w.constants.size()));
            ASSERT_EQ(check.fault, "") << describe(list, w.constants);
            list.depth = check.depth;
            const Quantity result = Evaluator().evaluate(list, w.constants, point);
            const Quantity& expected = values[static_cast<std::size_t>(root)];
            EXPECT_EQ(result.nbErrors > 0, expected.nbErrors > 0) << describe(list, w.constants);
            if (expected.nbErrors > 0 || result.nbErrors > 0) continue;
            // Chains of one kind may be added up or multiplied in another order.
            EXPECT_NEAR(result.value, expected.value, 1e-9 * std::fabs(expected.value) + 1e-9)
                << describe(list, w.constants);
            ++nbCompared;
        }
    }
    EXPECT_GT(nbCompared, 3000);
}

TEST(Emitter, IsNotLimitedByDepth) {
    Workshop w;
    NodeIndex root = 0;
    for (int k = 0; k < 300000; ++k) {
        root = k % 2 == 0 ? w.sum({1, root}) : w.store.call(Function::abs, root);
    }
    InstructionList list = Emitter(w.store, w.pool).emit(root);
    list.depth = checkInstructions(list.opcodes, list.fields, nbVariables, 0).depth;
    EXPECT_EQ(Evaluator().evaluate(list, {}, std::vector<double>{0, 1, 0, 0}).value, 150000.0);
    EXPECT_FALSE(findQuadraticForm(w.store, root));
}

TEST(Emitter, BoundsTheSizeOfSharedNodesWithoutWritingThem) {
    Workshop w;
    NodeIndex root = w.store.call(Function::sin, 0);
    for (int k = 0; k < 200; ++k) root = w.product({root, root});
    EXPECT_EQ(Emitter(w.store, w.pool).sizeBound(root), UINT32_MAX);
}

double valueOf(const QuadraticForm& form, const std::vector<double>& point) {
    const auto at = [&](std::int32_t j) { return point[static_cast<std::size_t>(j)]; };
    double value = form.constant;
    for (const auto& each : form.linear) value += each.coefficient * at(each.variable);
    for (const auto& each : form.quadratic)
        value += each.coefficient * at(each.first) * at(each.second);
    return value;
}

TEST(QuadraticForm, IsFoundByTheLookOfAnExpression) {
    Workshop w;
    auto& s = w.store;
    const NodeIndex x = 0, y = 1, z = 2;
    const NodeIndex line = w.sum({x, w.product({w.number(2), y}), w.number(-3)});
    const std::pair<NodeIndex, bool> cases[] = {
        {w.number(4), true},
        {line, true},
        {w.product({line, line}), true},
        {s.call(Function::sqr, line), true},
        {s.negation(s.quotient(w.product({line, w.number(5), z}), w.number(4))), true},
        {s.difference(w.product({x, y}), s.call(Function::sqr, s.difference(y, line))), true},
        {w.product({w.number(2), w.sum({w.product({x, y}), z})}), true},
        {w.product({x, y, z}), false},
        {w.product({x, w.product({y, z})}), false},
        {s.call(Function::sqr, w.product({x, y})), false},
        {s.quotient(w.number(1), x), false},
        {s.quotient(x, w.number(0)), false},
        {w.sum({x, s.call(Function::exp, y)}), false},
        {w.product({w.number(1e200), w.product({w.number(1e200), x})}), false},
        {w.product({w.number(1e200), w.number(1e200)}), false},
    };
    const std::vector<double> point = {1.5, -2, 0.25, 0};
    const auto values = valuesOf(s, point);
    for (const auto& [root, isOne] : cases) {
        const auto form = findQuadraticForm(s, root);
        ASSERT_EQ(form.has_value(), isOne) << w.code(root);
        if (form.has_value()) {
            EXPECT_EQ(valueOf(*form, point), values[static_cast<std::size_t>(root)].value);
        }
    }
}

TEST(QuadraticForm, LeavesLongSquaresAsTheyAre) {
    Workshop w;
    std::vector<NodeIndex> terms;
    for (int k = 0; k < 10; ++k) terms.push_back(k % nbVariables);
    EXPECT_TRUE(findQuadraticForm(w.store, w.store.call(Function::sqr, w.store.sum(terms))));
    for (int k = 0; k < 100; ++k) terms.push_back(k % nbVariables);
    EXPECT_FALSE(findQuadraticForm(w.store, w.store.call(Function::sqr, w.store.sum(terms))));
}

}  // namespace
}  // namespace norv
