// The expression store against its limits, made small here: beyond them it refuses and is unhurt.

#include "model/expression_store.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "model/model.hpp"
#include "model/refusal.hpp"

namespace {

using engine::ExpressionStore;
using engine::Refusal;
using engine::Value;

template <class Call>
std::string refusalOf(Call call) {
    try {
        call();
    } catch (const Refusal& refusal) {
        EXPECT_EQ(refusal.code(), LS_ERROR_LIMIT);
        return refusal.what();
    }
    return "";
}

TEST(Store, CountsBeyondItsLimitsAreRefusedWithThatReason) {
    ExpressionStore store({3, 2});
    const int sum = store.createExpression(LS_OP_SUM);
    const int one = store.createConstant(Value::ofInt(1));
    store.createConstant(Value::ofDouble(0.5));
    EXPECT_EQ(refusalOf([&] { store.createExpression(LS_OP_BOOL); }),
              "the model has 3 expressions, the most it holds");
    EXPECT_EQ(refusalOf([&] { store.createConstant(Value::ofInt(2)); }),
              "the model has 3 expressions, the most it holds");
    store.addOperand(sum, one);
    store.addOperand(sum, one);
    EXPECT_EQ(refusalOf([&] { store.addOperand(sum, one); }),
              "the model has 2 operands, the most it holds");
    EXPECT_EQ(store.nbExpressions(), 3);
    EXPECT_EQ(store.nbOperandsOf(sum), 2);
    EXPECT_EQ(store.nbOperandsOf(one), 0);
}

TEST(Store, ElementsKeepTheirPlaceAcrossManyChunks) {
    ExpressionStore store;
    const int sum = store.createExpression(LS_OP_SUM);
    constexpr int n = 20'000;
    for (int k = 0; k < n; ++k) store.addOperand(sum, store.createConstant(Value::ofInt(k * 7LL)));
    std::int64_t expected = 0;
    store.forEachOperand(sum, [&](int o) {
        EXPECT_EQ(store.constantOf(o).asInt(), expected);
        expected += 7;
    });
    EXPECT_EQ(expected, n * 7LL);
}

/// Checks the frozen arrays of a graph in which every expression but the first two uses two others,
/// some created later.
TEST(Store, ClosingPutsOperandsBeforeUsersAndTransposesThem) {
    engine::Model model;
    constexpr int n = 300;
    for (int k = 0; k < n; ++k) model.createExpression(k < 2 ? LS_OP_BOOL : LS_OP_SUM);
    // A permutation decides who may use whom, so that index order is not the order.
    const auto place = [](int k) { return k < 2 ? k : 2 + (k * 89) % (n - 2); };
    for (int k = 2; k < n; ++k) {
        for (const int d : {1, 2}) {
            for (int e = 0; e < n; ++e) {
                if (place(e) == place(k) - d) model.addOperand(k, e);
            }
        }
    }
    model.close();
    const engine::ClosedModel& m = model.closed();
    std::size_t nbUses = 0;
    for (int e = 0; e < n; ++e) {
        EXPECT_EQ(m.order[static_cast<std::size_t>(m.rank[static_cast<std::size_t>(e)])], e);
        for (const int o : m.operandsOf(e)) {
            EXPECT_LT(m.rank[static_cast<std::size_t>(o)], m.rank[static_cast<std::size_t>(e)]);
            const auto users = m.usersOf(o);
            EXPECT_TRUE(std::is_sorted(users.begin(), users.end()));
            EXPECT_EQ(std::count(users.begin(), users.end(), e), 1);
            ++nbUses;
        }
    }
    EXPECT_EQ(nbUses, m.user.size());
    EXPECT_EQ(m.nbDecisions(), 2);
}

}  // namespace
