#pragma once

#include "host/library_loading.hpp"

/// The double of the host: every operation of the four interfaces, made from the operation tables.
///
/// Each call goes through the exchange (exchange.hpp), which records it and may answer it. All
/// others are forwarded to the built-in host. The loading records what is asked of it as calls
/// too: `open(file)`, `find(symbol)` or `miss(symbol)`, and the libraries' own entries, whose
/// check is written `CnmoXCheck("name arguments: codes")`.

namespace doubles {

/// Libraries that hold the double. Every file can be opened; symbols are spelt as the host's are,
/// or as the answer to `spelling` says, "lower" or "upper".
const vex::LibraryLoading& hostLoading();

/// Binds the process's four bindings to the double; for good, as bindings are.
void bindHost();

}  // namespace doubles
