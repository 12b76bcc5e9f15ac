#include "solve/plot/plot_request.hpp"

#include <filesystem>
#include <fstream>
#include <random>

#include "solve/failure.hpp"
#include "solve/plot/trace_plot.hpp"
#include "solve/solve_run.hpp"

namespace norv {
namespace {

std::string temporaryFile() {
    std::random_device random;
    const std::string name =
        "norvsolve_" + std::to_string(random()) + std::to_string(random()) + ".trace";
    return (std::filesystem::temp_directory_path() / name).string();
}

void removeFile(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

void writePicture(const TraceFile& trace, const std::string& path, const std::string& title) {
    std::ofstream out(path, std::ios::binary);
    writeTracePlot(out, trace, title);
    out.close();
    if (!out) throw Failure(ExitCode::outputFailed, path + ": cannot be written");
}

}  // namespace

PlotRequest::PlotRequest(Options& options)
    : tracePath_(options.text("solvetrace")), isTemporary_(tracePath_.empty()) {
    if (isTemporary_) tracePath_ = temporaryFile();
    removeFile(tracePath_);
    if (isTemporary_ && !options.set(assignmentText("solvetrace", tracePath_), "--plot"))
        throw Failure(ExitCode::badCommandLine, options.messages().back().text);
}

PlotRequest::~PlotRequest() {
    if (isTemporary_) removeFile(tracePath_);
}

void PlotRequest::draw(const std::string& picturePath, const std::string& title) const {
    if (!std::filesystem::exists(tracePath_))
        throw Failure(ExitCode::outputFailed, picturePath + ": not drawn, the link wrote no trace");
    writePicture(readTrace(InputText::fromFile(tracePath_)), picturePath, title);
}

void drawTrace(const InputText& trace, const std::string& picturePath) {
    const TraceFile read = readTrace(trace);
    const std::string fileName = std::filesystem::path(trace.path()).filename().string();
    writePicture(read, picturePath, read.instance.empty() ? fileName : read.instance);
}

}  // namespace norv
