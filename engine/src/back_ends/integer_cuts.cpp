#include "back_ends/integer_cuts.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include <CglClique.hpp>
#include <CglFlowCover.hpp>
#include <CglGomory.hpp>
#include <CglKnapsackCover.hpp>
#include <CglMixedIntegerRounding2.hpp>
#include <CglTwomir.hpp>
#include <CglZeroHalf.hpp>
#include <ClpSimplex.hpp>
#include <CoinError.hpp>
#include <OsiClpSolverInterface.hpp>

namespace engine {
namespace {

/// Cuts whose coefficients spread more cost digits.
constexpr double mostSpread = 1e6;
/// Distance of the optimum from a cut that is worth a row.
constexpr double leastDepth = 1e-3;
/// By which a cut is loosened, relative to its terms.
constexpr double looseness = 1e-8;

struct DeepCut {
    double depth;
    LinearForm form;
};

/// The cut sign * row <= sign * side.
void addSide(const OsiRowCut& cut, double sign, double side, const double* levels,
             std::vector<DeepCut>& deep) {
    if (std::fabs(side) >= 1e20) return;
    const CoinPackedVector& row = cut.row();
    LinearForm form{{}, {}, -sign * side};
    double value = form.constant;
    double square = 0.0;
    double least = HUGE_VAL;
    double most = 0.0;
    double size = std::fabs(side);
    for (int k = 0; k < row.getNumElements(); ++k) {
        const double coefficient = sign * row.getElements()[k];
        if (coefficient == 0.0) continue;
        const int j = row.getIndices()[k];
        form.column.push_back(j);
        form.coefficient.push_back(coefficient);
        value += coefficient * levels[j];
        square += coefficient * coefficient;
        least = std::min(least, std::fabs(coefficient));
        most = std::max(most, std::fabs(coefficient));
        size = std::max(size, std::fabs(coefficient * levels[j]));
    }
    form.constant -= looseness * size;
    const double depth = value / std::sqrt(square);
    if (!(depth > leastDepth) || most > mostSpread * least) return;
    deep.push_back({depth, std::move(form)});
}

void generate(const OsiSolverInterface& solver, OsiCuts& cuts) {
    CglGomory gomory;
    gomory.setLimit(100);
    CglTwomir twomir;
    CglMixedIntegerRounding2 rounding;
    CglKnapsackCover covers;
    CglFlowCover flows;
    CglClique cliques;
    cliques.setStarCliqueReport(false);
    cliques.setRowCliqueReport(false);
    CglZeroHalf halves;
    for (CglCutGenerator* each : std::initializer_list<CglCutGenerator*>{
             &gomory, &twomir, &rounding, &covers, &flows, &cliques, &halves}) {
        each->refreshSolver(const_cast<OsiSolverInterface*>(&solver));
        each->generateCuts(solver, cuts);
    }
}

}  // namespace

std::vector<LinearForm> integerCutsOf(ClpSimplex& solver,
                                      const std::vector<std::uint8_t>& isInteger,
                                      std::size_t most) {
    std::vector<DeepCut> deep;
    try {
        ClpSimplex copy(solver);
        OsiClpSolverInterface problem(&copy, /*reallyOwn=*/false);
        problem.messageHandler()->setLogLevel(0);
        for (std::size_t j = 0; j < isInteger.size(); ++j) {
            if (isInteger[j] != 0) problem.setInteger(static_cast<int>(j));
        }
        problem.resolve();
        if (!problem.isProvenOptimal()) return {};
        OsiCuts cuts;
        generate(problem, cuts);
        for (int k = 0; k < cuts.sizeRowCuts(); ++k) {
            const OsiRowCut& cut = cuts.rowCut(k);
            addSide(cut, 1.0, cut.ub(), problem.getColSolution(), deep);
            addSide(cut, -1.0, cut.lb(), problem.getColSolution(), deep);
        }
    } catch (const CoinError&) {
        return {};
    }
    std::stable_sort(deep.begin(), deep.end(),
                     [](const DeepCut& a, const DeepCut& b) { return a.depth > b.depth; });
    std::vector<LinearForm> forms;
    for (DeepCut& cut : deep) {
        if (forms.size() < most) forms.push_back(std::move(cut.form));
    }
    return forms;
}

}  // namespace engine
