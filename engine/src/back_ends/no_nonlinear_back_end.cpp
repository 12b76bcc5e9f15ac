#include "back_ends/nonlinear_back_end.hpp"

namespace engine {

std::string_view nonlinearBackEndName() {
    return {};
}

NonlinearAnswer solveByBackEnd(LocalProblem& /*problem*/, const NonlinearSettings& /*settings*/) {
    return {};
}

}  // namespace engine
