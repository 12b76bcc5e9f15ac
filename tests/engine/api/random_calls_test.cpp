// Seeded random sequences of calls, sane and insane: nothing crashes, every refusal is reported,
// and what the interface promises between the calls holds.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "engine/api/solver_fixture.hpp"

namespace {

using namespace lstest;

class RandomCalls {
public:
    explicit RandomCalls(unsigned seed) : random_(seed), solver_(makeSolver()) {}

    void run(int nbCalls) {
        for (int k = 0; k < nbCalls; ++k) {
            switch (below(8)) {
                case 0:
                    read();
                    break;
                case 1:
                    setParameters();
                    break;
                case 2:
                    solveOrClose();
                    break;
                default:
                    build();
                    break;
            }
        }
        ls_close(s());
        solveOrClose();
        checkStatus();
    }

    [[nodiscard]] bool isClosed() const { return isClosed_; }

private:
    ls_solver* s() { return solver_.get(); }
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }
    /// Mostly an expression that exists.
    int anyExpression() { return below(ls_nb_expressions(s()) + 2) - (below(40) == 0 ? 1 : 0); }

    void build() {
        switch (below(10)) {
            case 0:
                ls_create_int_constant(s(), below(7) - 3);
                break;
            case 1:
                ls_create_double_constant(s(), below(70) / 7.0 - 5.0);
                break;
            case 2:
                decision(s(), below(2) == 0 ? LS_OP_INT : LS_OP_FLOAT, -below(4), below(6));
                break;
            case 3:
                ls_add_constraint(s(), anyExpression());
                break;
            case 4:
                ls_add_objective(s(), anyExpression(), below(3));
                break;
            case 5:
                ls_expr_set_name(s(), anyExpression(), "name");
                break;
            case 6:
            case 7:
                appendOperand();
                break;
            default:
                createOperator();
                break;
        }
    }

    /// Mostly with as many older operands as it needs; else the model may never close.
    void createOperator() {
        const bool isWild = below(40) == 0;
        const int e = ls_create_expression(s(), isWild ? below(39) - 1 : LS_OP_SUM + below(33));
        for (int k = isWild ? 1 : 3; k > 0; --k) {
            ls_expr_add_operand(s(), e, isWild ? anyExpression() : below(std::max(e, 1)));
        }
    }

    /// Mostly an older expression to a newer one; else the graph may have a cycle.
    void appendOperand() {
        const int a = anyExpression();
        const int b = anyExpression();
        const bool isWild = below(40) == 0;
        ls_expr_add_operand(s(), isWild ? a : std::max(a, b), isWild ? b : std::min(a, b));
    }

    void read() {
        const int e = anyExpression();
        ls_expr_get_operator(s(), e);
        ls_expr_get_operand(s(), e, below(3) - 1);
        ls_expr_get_int_value(s(), e);
        ls_expr_get_double_value(s(), e);
        ls_expr_is_double(s(), e);
        ls_expr_get_name(s(), e, nullptr, 0);
        ls_get_constraint(s(), below(4) - 1);
        ls_get_solution_status(s());
        text([&](char* t, int n) { return ls_solver_info(s(), t, n); });
        text([&](char* t, int n) { return ls_solver_to_string(s(), t, n); });
    }

    void setParameters() {
        ls_set_nb_threads(s(), 1 + below(2));
        ls_set_seed(s(), below(5) - 1);
        ls_set_annealing_level(s(), below(12) - 1);
        ls_set_iteration_between_ticks(s(), 1 + below(500));
        ls_set_double_objective_threshold(s(), below(2), below(9) - 4);
        ls_expr_set_int_value(s(), anyExpression(), below(100) - 50);
        ls_expr_set_double_value(s(), anyExpression(), below(100) - 50.5);
    }

    void solveOrClose() {
        if (ls_get_state(s()) == LS_STATE_MODELING && below(4) != 0) return;
        ls_close(s());
        const int phase = ls_add_phase(s());
        ls_phase_set_time_limit(s(), phase, 1);
        ls_phase_set_iteration_limit(s(), phase, below(2000));
        if (phase < 3) ls_solve(s());
    }

    void checkStatus() {
        if (ls_get_state(s()) == LS_STATE_MODELING) return;
        isClosed_ = true;
        const int status = ls_get_solution_status(s());
        int nbViolated = 0;
        for (int i = 0; i < ls_nb_constraints(s()); ++i) {
            nbViolated += ls_expr_get_double_value(s(), ls_get_constraint(s(), i)) == 0.0 ? 1 : 0;
        }
        if (ls_nb_constraints(s()) == 0) return;
        EXPECT_EQ(status <= LS_STATUS_INFEASIBLE, nbViolated > 0);
    }

    std::mt19937 random_;
    SolverHandle solver_;
    bool isClosed_ = false;
};

TEST(RandomCalls, NeverCrashAndKeepStatusAndConstraintsInStep) {
    RecordingHook hook;
    int nbClosed = 0;
    for (unsigned seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomCalls calls(seed);
        calls.run(10 + static_cast<int>(seed) / 2);
        nbClosed += calls.isClosed() ? 1 : 0;
        EXPECT_NE(hook.take().code, LS_ERROR_INTERNAL);
        if (::testing::Test::HasFailure()) break;
    }
    EXPECT_GT(nbClosed, 50) << "the sequences should reach the solve often enough";
}

}  // namespace
