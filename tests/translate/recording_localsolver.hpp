#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A double of the optimizer: every `ls_*` function, forwarded to the real engine, which is loaded
/// at run time.
///
/// It writes a readable line per call, answers chosen functions itself, and fails the k-th call the
/// way the optimizer would: through the error hook. A program that links it must not link the
/// engine. The double is one per process, as the functions are.

namespace recording {

/// Forgets lines, answers and the planned failure, and counts calls from 1 again.
void reset();

/// From now on keeps a line per call: "name(arguments) = result", solver arguments left out.
void startRecording();
[[nodiscard]] const std::vector<std::string>& lines();

/// `function` is no longer forwarded; it returns `result`.
void answer(std::string_view function, std::int64_t result);

/// Call number `call` (1 is the first after `reset`) reports an error with `code` instead of doing
/// its work. Deleting a solver and registering the hook are neither counted nor failed: they run in
/// destructors and before there is a hook.
void failCall(std::int64_t call, int code);
/// Calls since `reset`.
[[nodiscard]] std::int64_t nbCalls();

/// Solvers created and not yet deleted.
[[nodiscard]] int nbSolvers();

}  // namespace recording
