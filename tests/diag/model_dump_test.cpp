#include "diag/model_dump.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <streambuf>

#include "double/exchange.hpp"

namespace {

using localsolver::LocalSolver;
using localsolver::LSExpression;
using localsolver::LSModel;

LSExpression node(const LSModel& model, ls_operator op,
                  std::initializer_list<LSExpression> operands, const char* name = nullptr) {
    const LSExpression e = model.createExpression(op);
    for (const LSExpression operand : operands) e.addOperand(operand);
    if (name != nullptr) e.setName(name);
    return e;
}

std::string textOf(const LSModel& model) {
    std::ostringstream stream;
    vex::dumpModel(stream, model);
    return stream.str();
}

TEST(ModelDump, WritesObjectivesThenConstraints) {
    const LocalSolver solver;
    const LSModel model = solver.getModel();
    EXPECT_EQ(textOf(model), "");
    const LSExpression zero = model.createConstant(0.0);
    const LSExpression x1 = node(model, LS_OP_FLOAT, {zero, zero}, "x1");
    const LSExpression x2 = node(model, LS_OP_INT, {zero, zero}, "x2");
    const LSExpression b = node(model, LS_OP_BOOL, {});
    const LSExpression shared = node(model, LS_OP_PROD, {x1, model.createConstant(3.0)}, "named");
    const LSExpression power = node(model, LS_OP_POW, {x2, model.createConstant(std::int64_t{2})});
    model.addObjective(node(model, LS_OP_SUM, {shared, power}), LS_MINIMIZE);
    model.addObjective(node(model, LS_OP_SUM, {}, "second"), LS_MAXIMIZE);
    const LSExpression ten = model.createConstant(std::int64_t{10});
    model.addConstraint(node(model, LS_OP_LEQ, {node(model, LS_OP_SUM, {x1, x2}), ten}, "c1"));
    const LSExpression constants =
        node(model, LS_OP_MAX,
             {model.createConstant(std::int64_t{-3}), model.createConstant(1e-7),
              model.createConstant(2.5), model.createConstant(0.43429448190325176)});
    model.addConstraint(node(model, LS_OP_GEQ, {shared, constants}));
    model.addConstraint(node(model, LS_OP_NOT, {b}));
    EXPECT_EQ(textOf(model),
              "obj0: sum(prod(x1, 3), pow(x2, 2))\n"
              "second: sum()\n"
              "c1: leq(sum(x1, x2), 10)\n"
              "con1: geq(prod(x1, 3), max(-3, 1e-07, 2.5, 0.434294))\n"
              "con2: not(x)\n");
}

TEST(ModelDump, NamesEveryOperator) {
    std::ostringstream stream;
    for (const int op : {0, 3, 25, 36, 37, -1}) vex::writeOperatorName(stream, op) << ' ';
    EXPECT_EQ(stream.str(), "b sum scalarprod i lsop37 lsop-1 ");
}

TEST(ModelDump, WritesConstantsThatAreNotToBeReadAsOperators) {
    const LocalSolver solver;
    const LSExpression half = solver.getModel().createConstant(0.5);
    doubles::exchange().reset();
    doubles::exchange().answer("ls_expr_get_double_value", "throw 7");
    std::ostringstream stream;
    vex::writeExpression(stream, half);
    EXPECT_EQ(stream.str(), "c()");
    doubles::exchange().reset();
}

TEST(ModelDump, FollowsDeepExpressions) {
    const LocalSolver solver;
    LSExpression e = node(solver.getModel(), LS_OP_BOOL, {});
    constexpr std::size_t depth = 200000;
    for (std::size_t k = 0; k < depth; ++k) e = node(solver.getModel(), LS_OP_NOT, {e});
    std::ostringstream stream;
    vex::writeExpression(stream, e);
    EXPECT_EQ(stream.str().size(), depth * std::string("not()").size() + 1);
}

/// Takes `room` characters and no more.
class NarrowBuffer : public std::streambuf {
public:
    explicit NarrowBuffer(int room) : room_(room) {}

protected:
    int_type overflow(int_type c) override { return room_-- > 0 ? c : traits_type::eof(); }

private:
    int room_;
};

TEST(ModelDump, StopsWhenTheStreamFails) {
    const LocalSolver solver;
    const LSModel model = solver.getModel();
    const LSExpression sum = model.createExpression(LS_OP_SUM);
    for (int k = 0; k < 1000; ++k) sum.addOperand(model.createConstant(std::int64_t{k}));
    for (int k = 0; k < 100; ++k) model.addConstraint(sum);
    NarrowBuffer buffer(50);
    std::ostream stream(&buffer);
    doubles::exchange().reset();
    vex::dumpModel(stream, model);
    EXPECT_FALSE(stream);
    EXPECT_LT(doubles::exchange().nbCalls(), 200);
}

}  // namespace
