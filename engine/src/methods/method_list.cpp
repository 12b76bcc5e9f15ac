#include "methods/method_list.hpp"

#include <utility>

#include "back_ends/exact_back_end.hpp"
#include "back_ends/nonlinear_back_end.hpp"
#include "methods/enumeration.hpp"
#include "methods/linear.hpp"
#include "methods/local_solves.hpp"
#include "methods/propagation.hpp"
#include "methods/spatial.hpp"
#include "methods/trivial_closing.hpp"

namespace engine {
namespace {

template <typename... Methods>
Stage stageOf(Methods... methods) {
    Stage stage;
    (stage.push_back(std::move(methods)), ...);
    return stage;
}

}  // namespace

std::vector<Stage> makeStages(Ground& ground, bool withExactBackEnds) {
    std::vector<Stage> stages;
    stages.push_back(stageOf(makePropagation(ground)));
    stages.push_back(stageOf(makeTrivialClosing(ground)));
    stages.push_back(stageOf(makeEnumeration(ground, smallSpace)));
    stages.push_back(stageOf(makeFirstLocalSolves(ground)));
    if (withExactBackEnds) {
        stages.push_back(stageOf(makeSimplex(ground), makeBranchAndCut(ground)));
    }
    stages.push_back(stageOf(makeEnumeration(ground, largestSpace)));
    if (withExactBackEnds) {
        stages.push_back(stageOf(makeLocalSolves(ground), makeSpatial(ground)));
    } else {
        stages.push_back(stageOf(makeLocalSolves(ground)));
    }
    return stages;
}

std::string backEndNames() {
    std::string names(exactBackEndName());
    const std::string_view nonlinear = nonlinearBackEndName();
    if (!names.empty() && !nonlinear.empty()) names += ", ";
    return names.append(nonlinear);
}

}  // namespace engine
