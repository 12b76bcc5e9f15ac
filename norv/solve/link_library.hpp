#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "hostapi/handles.hpp"
#include "norv/model.hpp"
#include "solve/shared_library.hpp"

namespace norv {

/// The link, loaded by name and asked whether it fits this host.
class LinkLibrary {
public:
    /// Loads the link, resolves the entry points that a solve needs, and asks its version
    /// (`c__xapiversion`) and the signatures (`c__xcheck`) of what will be called.
    /// Throws Failure (failed) with the loader's or the link's own words.
    explicit LinkLibrary(const std::string& name);

    /// One instance from beginning to end, in the host's order: presets the statuses of a failed
    /// setup, then vexInitialize, vexcreate, vexReadyAPI, vexCallSolver, vexfree, vexFinalize.
    /// @param options  may be null: the link then makes its own option object.
    /// Throws Failure (failed) when vexcreate, vexReadyAPI or vexCallSolver fails; the link
    /// object is freed by then.
    void solve(Model& model, hostapi::OptionHandle options);

    /// The best point so far of the solve that runs, on its thread, from the environment's hooks.
    /// @param levels  [nbVariables] of the model.
    /// @return false: there is none yet, or the link is one that does not tell.
    [[nodiscard]] bool readIncumbent(std::span<double> levels) const;

private:
    using VersionQuestion = std::int32_t(std::int32_t api, char* message,
                                         std::int32_t* compatibility);
    using SignatureQuestion = std::int32_t(const char* name, std::int32_t nbArguments,
                                           const std::int32_t* signature, char* message);

    void askVersion() const;
    void askSignature(const char* name, std::int32_t nbArguments,
                      const std::int32_t* signature) const;

    SharedLibrary library_;
    void (*initialize_)();
    void (*finalize_)();
    std::int32_t (*create_)(void** handle, char* message, std::int32_t length);
    std::int32_t (*free_)(void** handle);
    std::int32_t (*readyApi_)(void* handle, hostapi::ModelHandle model,
                              hostapi::OptionHandle options);
    std::int32_t (*callSolver_)(void* handle);
    /// Of our own link, not of every host's: null where the link has no such function.
    std::int32_t (*getIncumbent_)(void* handle, double* levels, std::int32_t nbLevels);
    void* handle_ = nullptr;  ///< the link's object, while `solve` runs
};

}  // namespace norv
