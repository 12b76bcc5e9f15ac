#include "nonlinear/interior_point.hpp"

namespace engine {

NonlinearAnswer solveByInteriorPoint(LocalProblem& /*problem*/,
                                     const NonlinearSettings& /*settings*/) {
    return {};
}

}  // namespace engine
