#include "back_ends/simplex.hpp"

namespace engine {

std::unique_ptr<SimplexSolver> makeSimplexSolver() {
    return nullptr;
}

}  // namespace engine
