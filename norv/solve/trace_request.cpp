#include "solve/trace_request.hpp"

#include <filesystem>

#include "norv/file_path.hpp"
#include "solve/failure.hpp"
#include "solve/settings/settings.hpp"
#include "solve/solve_run.hpp"

namespace norv {
namespace {

std::string temporaryFolder() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (!error) return fileName(folder / "");
    throw Failure(ExitCode::outputFailed,
                  "the folder for temporary files (TMPDIR): " + error.message());
}

void set(Options& options, const char* name, const std::string& value) {
    if (!options.set(assignmentText(name, value), "the trace of the search"))
        throw Failure(ExitCode::badInput, options.messages().back().text);
}

}  // namespace

TraceRequest::TraceRequest(Options& options) : path_(options.text("solvetrace")) {
    if (!path_.empty()) return;
    path_ = uniquePath(temporaryFolder() + "norvsolve_");
    temporary_.emplace(path_);
    set(options, "solvetrace", path_);
    set(options, "solvetracetime", "0.001");
}

TraceFile TraceRequest::read() const {
    if (!std::filesystem::exists(filePath(path_))) return {};
    return readTrace(InputText::fromFile(path_));
}

}  // namespace norv
