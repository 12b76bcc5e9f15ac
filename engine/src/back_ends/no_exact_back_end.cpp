#include "back_ends/exact_back_end.hpp"

namespace engine {

std::string_view exactBackEndName() {
    return {};
}

ExactAbilities exactBackEndAbilities() {
    return {.linear = false, .integer = false};
}

ExactAnswer solveExactly(const ExactProblem& /*problem*/, const ExactSettings& /*settings*/) {
    return {};
}

}  // namespace engine
