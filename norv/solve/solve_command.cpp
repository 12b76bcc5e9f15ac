#include "solve/solve_command.hpp"

#include <fstream>
#include <iostream>

#include "norv/file_path.hpp"
#include "solve/failure.hpp"
#include "solve/log_writer.hpp"
#include "solve/model_file.hpp"
#include "solve/plot/plot_request.hpp"
#include "solve/plot/trace_file.hpp"
#include "solve/report.hpp"
#include "solve/terminal.hpp"

namespace norv {
namespace {

std::ofstream openOutput(const std::string& path) {
    std::ofstream out(filePath(path), std::ios::binary);
    if (!out) throw Failure(ExitCode::outputFailed, path + ": cannot be written");
    return out;
}

void finishOutput(std::ostream& out, const std::string& path) {
    out.flush();
    if (!out) throw Failure(ExitCode::outputFailed, path + ": writing it failed");
}

void writeResults(const CommandLine& line, const Model& model, const SolveResult& result,
                  std::ostream& log) {
    const std::optional<PointCheck>& check = result.check;
    if (line.printsSolution && check) writeSolution(log, model);
    if (!line.solutionFile.empty()) {
        std::ofstream out = openOutput(line.solutionFile);
        if (check) writeSolution(out, model);
        finishOutput(out, line.solutionFile);
    }
    if (line.jsonFile == "-") {
        writeJson(std::cout, line.model, model, result);
        finishOutput(std::cout, "standard output");
    } else if (!line.jsonFile.empty()) {
        std::ofstream out = openOutput(line.jsonFile);
        writeJson(out, line.model, model, result);
        finishOutput(out, line.jsonFile);
    }
}

ExitCode drawOnly(const CommandLine& line, const InputText& trace) {
    if (line.plotFile.empty())
        throw Failure(ExitCode::badInput, line.model + ": a solve trace, which --plot draws");
    drawTrace(trace, line.plotFile);
    return ExitCode::reported;
}

ExitCode solveModel(const CommandLine& line, const InputText& file) {
    const bool logsToOutput = line.jsonFile != "-";
    std::ostream& log = logsToOutput ? std::cout : std::cerr;
    const auto stream = logsToOutput ? StandardStream::output : StandardStream::error;
    LogWriter writer(log, [stream] { return terminalColumns(stream); });
    std::ofstream status;
    if (!line.statusFile.empty()) status = openOutput(line.statusFile);

    Environment environment;
    configure(environment, line.solve, log);
    environment.setLogSink([&writer](std::string_view text) { writer.write(text); });
    environment.setStatusSink([&status](std::string_view text) { status << text; });
    LoadedModel loaded = readModel(file, environment, line.solve.reading, log);
    const Model& model = loaded.model;
    const bool isPlotted = !line.plotFile.empty();
    std::optional<Options> options = makeOptions(line.solve, /*always=*/isPlotted, log);
    std::optional<PlotRequest> plot;
    if (isPlotted) plot.emplace(*options);
    const SolveResult result = solve(loaded, environment, line.solve, options);
    writer.finishLine();
    printSummary(log, model, result);
    if (plot) plot->draw(line.plotFile, fileName(filePath(line.model).filename()));
    writeResults(line, model, result, log);
    if (!line.statusFile.empty()) finishOutput(status, line.statusFile);
    return result.check && !result.check->passed ? ExitCode::failedCheck : ExitCode::reported;
}

}  // namespace

ExitCode runSolveCommand(const CommandLine& line) {
    const InputText file = InputText::fromFile(line.model);
    return looksLikeTrace(file.text()) ? drawOnly(line, file) : solveModel(line, file);
}

}  // namespace norv
