#pragma once

#include "localsolver.h"
#include "tape.hpp"

namespace bench {

/// Makes the calls of `tape` on a fresh `solver`, all but the closing: what building that model
/// costs whoever asks.
void replayBuilding(const Tape& tape, ls_solver* solver);

}  // namespace bench
