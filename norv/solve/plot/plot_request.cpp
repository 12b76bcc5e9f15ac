#include "solve/plot/plot_request.hpp"

#include <filesystem>
#include <fstream>
#include <random>

#include "norv/file_path.hpp"
#include "solve/failure.hpp"
#include "solve/plot/trace_plot.hpp"
#include "solve/solve_run.hpp"

namespace norv {
namespace {

std::string temporaryFile() {
    std::random_device random;
    const std::string name =
        "norvsolve_" + std::to_string(random()) + std::to_string(random()) + ".trace";
    return fileName(std::filesystem::temp_directory_path() / name);
}

void removeFile(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove(filePath(path), ignored);
}

void writePicture(const TraceFile& trace, const std::string& path, const std::string& title) {
    std::ofstream out(filePath(path), std::ios::binary);
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
    if (!std::filesystem::exists(filePath(tracePath_)))
        throw Failure(ExitCode::outputFailed, picturePath + ": not drawn, the link wrote no trace");
    writePicture(readTrace(InputText::fromFile(tracePath_)), picturePath, title);
}

void drawTrace(const InputText& trace, const std::string& picturePath) {
    const TraceFile read = readTrace(trace);
    const std::string name = fileName(filePath(trace.path()).filename());
    writePicture(read, picturePath, read.instance.empty() ? name : read.instance);
}

}  // namespace norv
