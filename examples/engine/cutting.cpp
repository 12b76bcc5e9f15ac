// Boards of 6 metres are cut into shelves of 1.7 and 2.4 metres: how many of each board by board, so
// that 7 of the first and 4 of the second come out of few boards and little is left.
#include <iostream>
#include <localsolver_expressions.hpp>
#include <vector>

using namespace localsolver;
using namespace localsolver::expressions;

int main() {
    LocalSolver solver;
    const LSModel model = solver.getModel();
    const int nbBoards = 6;
    std::vector<LSExpression> isCut, shorts, longs;
    for (int board = 0; board < nbBoards; ++board) {
        isCut.push_back(boolean(model));
        shorts.push_back(integer(model, 0, 3));
        longs.push_back(integer(model, 0, 2));
        model.addConstraint(sum(1.7 * shorts.back(), 2.4 * longs.back()) <= 6.0 * isCut.back());
    }
    model.addConstraint(sum(shorts) >= 7);
    model.addConstraint(sum(longs) >= 4);
    minimize(model, sum(isCut));
    model.close();
    ls_phase_set_time_limit(solver.getHandle(), solver.addPhase(), 5);
    solver.solve();

    const LSSolution best = solver.getSolution();
    std::cout << best.getIntValue(model.getObjective(0)) << " boards"
              << (best.getStatus() == LS_STATUS_OPTIMAL ? ", proved optimal\n" : "\n");
    for (int board = 0; board < nbBoards; ++board) {
        if (isCut[board].getIntValue() != 0)
            std::cout << "  " << shorts[board].getIntValue() << " short, "
                      << longs[board].getIntValue() << " long\n";
    }
}
