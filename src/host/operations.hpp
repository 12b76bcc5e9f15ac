#pragma once

#include <cstdint>

#include "host/codes.hpp"
#include "host/slot.hpp"

/// The only door to the host: every operation of its model object (`nmo`), environment (`nev`),
/// option object (`opt`) and audit library (`hux`) that the link uses, one slot each.
///
/// Call them like functions: `nmoGetVarLowerOne(nmo, j)`. What they take and return stands in the
/// operation tables. They may be called once the library is bound (host/libraries.hpp), and only on
/// the host's calling thread.

namespace vex {

#define HOST_OPERATION(name, form, ...) extern Slot<__VA_ARGS__> name;
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#include "hostapi/opt_operations.inc"
#undef HOST_OPERATION

}  // namespace vex
