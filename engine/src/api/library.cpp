#include <memory>
#include <string>

#include "api/contract.hpp"
#include "methods/method_list.hpp"

using namespace engine;
using namespace engine::contract;

namespace {

std::string libraryInfo() {
    const std::string backEnds = backEndNames();
    return "LocalSolver interface, built-in engine " ENGINE_VERSION " (exact back ends: " +
           (backEnds.empty() ? "none" : backEnds) + ")";
}

}  // namespace

int ls_info(char* text, int length) {
    return guarded(__func__, 0, [&] { return copyText(libraryInfo(), text, length); });
}

void ls_set_exception_callback(ls_exception_callback hook, void* user_data) {
    guarded(__func__, [&] { setErrorHook(hook, user_data); });
}

ls_solver* ls_create_solver(void) {
    return guarded(__func__, static_cast<ls_solver*>(nullptr),
                   [] { return std::make_unique<ls_solver>().release(); });
}

void ls_delete_solver(ls_solver* solver) {
    guarded(__func__, [&] {
        if (solver == nullptr) return;
        requireState(solver, notDuringSolve);
        const std::unique_ptr<ls_solver> owned(solver);
    });
}

int ls_get_state(ls_solver* solver) {
    return guarded(__func__, 0, [&]() -> int { return requireState(solver, anyState).state(); });
}
