#pragma once

#include <cstdint>
#include <type_traits>

#include "host/codes.hpp"
#include "host/exported.hpp"

/// The functions that the host calls, on its calling thread, in this order: `vexInitialize` once;
/// per instance a create, `vexReadyAPI`, `vexCallSolver`, `vexFree`; `vexFinalize` once. The
/// questions about the link may be asked at any time on any thread.
///
/// May use everything in src/. No exception leaves any of them. A link handle is the address of a
/// vex::NorvLocalSolver, which the host owns through it.
///
/// Creates return 1 whether or not they succeed, except `vexcreate`: 0 when there is no object.
/// `message` receives the reason of a failure, or the empty text.
///
/// `vexReadyAPI` binds the host's libraries, reads the options and builds the model. 0: ready, or
/// the instance was refused and its statuses say so. 1: failed, and the object holds no model, not
/// even one of an earlier call.
///
/// `vexCallSolver` solves a model that is ready and writes the outcome into the host's model. 0, or
/// the driver's failure. Without a model that is ready it does nothing and returns 0.
///
/// `vexGetIncumbent` fills `levels` [nbLevels], one for each variable of the host's model, with the
/// best point so far and returns 1; 0: there is none, or nobody may ask now. It may be called on
/// the thread inside `vexCallSolver`, from the host's operations (`nevTerminateGet` comes at every
/// event of a search). O(variables + entries of the rows that define variables).
///
/// `vexModifyProblem` returns -1: problems cannot be modified.
#define ENTRY_POINT(name, ...) extern "C" VEX_EXPORTED std::type_identity_t<__VA_ARGS__> name;
#include "link/entry_points.inc"
#undef ENTRY_POINT
