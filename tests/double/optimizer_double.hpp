#pragma once

#include <string>
#include <vector>

#include "localsolver.h"

/// The double of the optimizer: every `ls_*` function, made from the table of the functions.
///
/// Each call goes through the exchange (exchange.hpp). All others are forwarded to the engine,
/// which is loaded at run time: a program that links the double must not link the engine.

namespace doubles {

/// What the searches do instead of running the engine, one after the other (the last one for good),
/// word by word: a number is an event of that type; status=, iterations= and seconds= are from then
/// on the answers about the search, NAME=
/// the value of the decision of that name, "terminate" is the host's user who asks to stop, "wait"
/// takes 0.4 seconds, and "lines" tells how many the trace has by then. Texts about the optimizer
/// are the functions' names. None: the engine searches.
void setSearches(std::vector<std::vector<std::string>> scripts);

/// Solvers created and not yet deleted.
int nbSolvers();

}  // namespace doubles
