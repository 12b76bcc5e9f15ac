#include "link/entry_points.hpp"

#include <cstdio>
#include <memory>

#include "host/libraries.hpp"
#include "host/message_text.hpp"
#include "link/guard.hpp"
#include "link/interface_checks.hpp"
#include "link/ready_api.hpp"
#include "solve/incumbent.hpp"
#include "solve/solve_driver.hpp"
#include "translate/nlocalsolver.hpp"

namespace {

using vex::guarded;
using vex::MessageText;
using vex::NorvLocalSolver;

/// Where a create reports to when its caller has no buffer.
struct PrivateMessage {
    char text[256] = {};
};

NorvLocalSolver& linkOf(void* handle) {
    return *static_cast<NorvLocalSolver*>(handle);
}

bool isNull(void** handle) {
    return handle == nullptr || *handle == nullptr;
}

void destroyLink(void** handle) {
    const std::unique_ptr<NorvLocalSolver> link(static_cast<NorvLocalSolver*>(*handle));
    *handle = nullptr;
}

/// Writes one character: the caller's buffer may be shorter than it says, as long as all is well.
void emptyText(char* message, std::int32_t length) {
    if (message != nullptr && length > 0) *message = '\0';
}

/// For functions that have no way to tell the host about an error.
constexpr auto ignoreError = [](const char*) {};

/// For questions: what cannot be answered is refused.
constexpr auto refuse = [](const char*) -> std::int32_t { return 0; };

}  // namespace

// Lifetime.

std::int32_t vexCreate(void** handle, char* message, std::int32_t length) {
    return guarded(
        [&] {
            *handle = std::make_unique<NorvLocalSolver>().release();
            emptyText(message, length);
            return 1;
        },
        [&](const char* what) {
            MessageText(message, length) << what;
            return 1;
        });
}

std::int32_t vexcreate(void** handle, char* message, std::int32_t length) {
    PrivateMessage reason;
    *handle = nullptr;
    vexCreate(handle, reason.text, sizeof reason.text);
    if (*handle == nullptr) {
        MessageText(message, length) << "Error while creating object";
        return 0;
    }
    emptyText(message, length);
    return 1;
}

std::int32_t xcreate(void** handle) {
    PrivateMessage reason;
    return vexCreate(handle, reason.text, sizeof reason.text);
}

std::int32_t vexxcreate(void** handle) {
    return xcreate(handle);
}

void vexFree(void** handle) {
    guarded(
        [&] {
            if (!isNull(handle)) destroyLink(handle);
        },
        ignoreError);
}

std::int32_t vexfree(void** handle) {
    vexFree(handle);
    return 1;
}

void xfree(void** handle) {
    vexFree(handle);
}

void vexxfree(void** handle) {
    vexFree(handle);
}

void vexInitialize() {
    guarded([] { vex::setUpBindingLocks(); }, ignoreError);
}

void c__vexinitialize() {
    vexInitialize();
}

void vexFinalize() {
    guarded([] { vex::tearDownBindingLocks(); }, ignoreError);
}

void c__vexfinalize() {
    vexFinalize();
}

// One instance.

std::int32_t vexReadyAPI(void* handle, vex::ModelHandle model, vex::OptionHandle options) {
    const std::int32_t result =
        guarded([&] { return vex::readyAPI(linkOf(handle), model, options); },
                [](const char* what) {
                    std::fprintf(stderr, "Exception from readyAPI: %s\n", what);
                    return 1;
                });
    // Whatever stopped the preparation, and however early: an earlier instance must not be solved
    // in place of the one that was refused.
    if (result != 0) guarded([&] { linkOf(handle).solver.reset(); }, ignoreError);
    return result;
}

std::int32_t c__vexreadyapi(void* handle, vex::ModelHandle model, vex::OptionHandle options) {
    return vexReadyAPI(handle, model, options);
}

std::int32_t vexCallSolver(void* handle) {
    return guarded([&] { return vex::runSolveDriver(linkOf(handle)); },
                   [](const char* what) {
                       std::fprintf(stderr, "Exception from CallSolver: %s\n", what);
                       return 1;
                   });
}

std::int32_t c__vexcallsolver(void* handle) {
    return vexCallSolver(handle);
}

std::int32_t vexModifyProblem(void* /*handle*/) {
    return -1;
}

std::int32_t vexHaveModifyProblem(void* handle) {
    return vexModifyProblem(handle);
}

std::int32_t vexGetIncumbent(void* handle, double* levels, std::int32_t nbLevels) {
    return guarded(
        [&] {
            const std::size_t nb = nbLevels > 0 ? static_cast<std::size_t>(nbLevels) : 0;
            return vex::readIncumbent(linkOf(handle), {levels, nb}) ? 1 : 0;
        },
        refuse);
}

// Questions about the link itself.

std::int32_t c__xapiversion(std::int32_t api, char* message, std::int32_t* compatibility) {
    return guarded(
        [&] {
            const vex::Answer answer = vex::answerVersion(api, compatibility);
            vex::storeTerminated(answer.message, message);
            return answer.accepted;
        },
        refuse);
}

std::int32_t d__xapiversion(std::int32_t api, unsigned char* message, std::int32_t* compatibility) {
    return guarded(
        [&] {
            const vex::Answer answer = vex::answerVersion(api, compatibility);
            vex::storePrefixed(answer.message, message);
            return answer.accepted;
        },
        refuse);
}

std::int32_t d__vexxapiversion(std::int32_t api, unsigned char* message,
                               std::int32_t* compatibility) {
    return d__xapiversion(api, message, compatibility);
}

std::int32_t c__xcheck(const char* name, std::int32_t nbArguments, const std::int32_t* signature,
                       char* message) {
    return guarded(
        [&] {
            const vex::Answer answer = vex::answerSignature(name, nbArguments, signature);
            vex::storeTerminated(answer.message, message);
            return answer.accepted;
        },
        refuse);
}

std::int32_t d__xcheck(const unsigned char* name, std::int32_t nbArguments,
                       const std::int32_t* signature, unsigned char* message) {
    return guarded(
        [&] {
            const vex::Unprefixed plainName(name);
            const vex::Answer answer = vex::answerSignature(plainName.text, nbArguments, signature);
            vex::storePrefixed(answer.message, message);
            return answer.accepted;
        },
        refuse);
}

std::int32_t d__vexxcheck(const unsigned char* name, std::int32_t nbArguments,
                          const std::int32_t* signature, unsigned char* message) {
    return d__xcheck(name, nbArguments, signature, message);
}
