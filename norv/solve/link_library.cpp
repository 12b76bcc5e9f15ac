#include "solve/link_library.hpp"

#include <stdexcept>

#include "hostapi/codes.hpp"
#include "hostapi/type_codes.hpp"
#include "solve/failure.hpp"

namespace norv {
namespace {

constexpr std::int32_t linkApiVersion = 1;
constexpr std::int32_t messageLength = hostapi::longestText + 1;

// The host's view of the two entry points; the link object itself is not counted.
using ReadyApi = hostapi::Signature<std::int32_t(hostapi::AuditHandle, hostapi::ModelHandle,
                                                 hostapi::OptionHandle)>;
using CallSolver = hostapi::Signature<std::int32_t(hostapi::AuditHandle)>;

SharedLibrary load(const std::string& name) {
    try {
        return SharedLibrary(name);
    } catch (const std::runtime_error& error) {
        throw Failure(ExitCode::failed, std::string("cannot load the link: ") + error.what());
    }
}

template <class Function>
Function* resolve(const SharedLibrary& library, const char* symbol) {
    try {
        return library.function<Function>(symbol);
    } catch (const std::runtime_error& error) {
        throw Failure(ExitCode::failed, std::string("cannot use the link: ") + error.what());
    }
}

/// Runs the function it is given at the end of a scope, on every way out.
template <class Function>
class AtExit {
public:
    explicit AtExit(Function function) : function_(function) {}
    ~AtExit() { function_(); }
    AtExit(const AtExit&) = delete;
    AtExit& operator=(const AtExit&) = delete;

private:
    Function function_;
};

}  // namespace

LinkLibrary::LinkLibrary(const std::string& name)
    : library_(load(name)),
      initialize_(resolve<void()>(library_, "vexInitialize")),
      finalize_(resolve<void()>(library_, "vexFinalize")),
      create_(resolve<std::int32_t(void**, char*, std::int32_t)>(library_, "vexcreate")),
      free_(resolve<std::int32_t(void**)>(library_, "vexfree")),
      readyApi_(resolve<std::int32_t(void*, hostapi::ModelHandle, hostapi::OptionHandle)>(
          library_, "vexReadyAPI")),
      callSolver_(resolve<std::int32_t(void*)>(library_, "vexCallSolver")),
      getIncumbent_(
          library_.findFunction<std::int32_t(void*, double*, std::int32_t)>("vexGetIncumbent")) {
    askVersion();
    askSignature("vexReadyAPI", ReadyApi::nbArguments, ReadyApi::codes.data());
    askSignature("vexCallSolver", CallSolver::nbArguments, CallSolver::codes.data());
}

void LinkLibrary::askVersion() const {
    char message[messageLength] = "";
    std::int32_t compatibility = 0;
    auto* const ask = resolve<VersionQuestion>(library_, "c__xapiversion");
    if (ask(linkApiVersion, message, &compatibility) != 0) return;
    throw Failure(ExitCode::failed, std::string("the link refuses this host: ") + message);
}

void LinkLibrary::askSignature(const char* name, std::int32_t nbArguments,
                               const std::int32_t* signature) const {
    char message[messageLength] = "";
    auto* const ask = resolve<SignatureQuestion>(library_, "c__xcheck");
    if (ask(name, nbArguments, signature, message) != 0) return;
    throw Failure(ExitCode::failed, std::string("the link does not fit this host: ") + message);
}

void LinkLibrary::solve(Model& model, hostapi::OptionHandle options) {
    model.setModelStatus(hostapi::model_status::errorNoSolution);
    model.setSolveStatus(hostapi::solve_status::setupFailure);
    initialize_();
    const AtExit finalizeAtExit([this] { finalize_(); });
    char message[messageLength] = "";
    if (create_(&handle_, message, messageLength) == 0 || handle_ == nullptr) {
        throw Failure(ExitCode::failed, std::string("vexcreate failed: ") + message);
    }
    const AtExit freeAtExit([this] { free_(&handle_); });
    if (readyApi_(handle_, model.handle(), options) != 0) {
        throw Failure(ExitCode::failed,
                      "vexReadyAPI failed: the link could not prepare the "
                      "model; the log tells why");
    }
    if (callSolver_(handle_) != 0) {
        throw Failure(
            ExitCode::failed,
            "vexCallSolver failed: the link could not solve the model; the log tells why");
    }
}

bool LinkLibrary::readIncumbent(std::span<double> levels) const {
    if (getIncumbent_ == nullptr || handle_ == nullptr) return false;
    return getIncumbent_(handle_, levels.data(), static_cast<std::int32_t>(levels.size())) != 0;
}

}  // namespace norv
