#include "solve/solve_command.hpp"

#include <fstream>
#include <iostream>

#include "solve/failure.hpp"
#include "solve/log_writer.hpp"
#include "solve/model_file.hpp"
#include "solve/report.hpp"
#include "solve/terminal.hpp"

namespace norv {
namespace {

std::ofstream openOutput(const std::string& path) {
    std::ofstream out(path, std::ios::binary);
    if (!out) throw Failure(ExitCode::outputFailed, path + ": cannot be written");
    return out;
}

void finishOutput(std::ostream& out, const std::string& path) {
    out.flush();
    if (!out) throw Failure(ExitCode::outputFailed, path + ": writing it failed");
}

void writeResults(const CommandLine& line, const Model& model,
                  const std::optional<PointCheck>& check, std::ostream& log) {
    if (line.printsSolution && check) writeSolution(log, model);
    if (!line.solutionFile.empty()) {
        std::ofstream out = openOutput(line.solutionFile);
        if (check) writeSolution(out, model);
        finishOutput(out, line.solutionFile);
    }
    if (line.jsonFile == "-") {
        writeJson(std::cout, line.model, model, check);
        finishOutput(std::cout, "standard output");
    } else if (!line.jsonFile.empty()) {
        std::ofstream out = openOutput(line.jsonFile);
        writeJson(out, line.model, model, check);
        finishOutput(out, line.jsonFile);
    }
}

}  // namespace

ExitCode runSolveCommand(const CommandLine& line) {
    const bool logsToOutput = line.jsonFile != "-";
    std::ostream& log = logsToOutput ? std::cout : std::cerr;
    const auto stream = logsToOutput ? StandardStream::output : StandardStream::error;
    LogWriter writer(log, [stream] { return terminalColumns(stream); });
    std::ofstream status;
    if (!line.statusFile.empty()) status = openOutput(line.statusFile);

    Environment environment;
    configure(environment, line.solve);
    environment.setLogSink([&writer](std::string_view text) { writer.write(text); });
    environment.setStatusSink([&status](std::string_view text) { status << text; });
    const InputText file = InputText::fromFile(line.model);
    Model model = readModel(file, environment, line.isSquareSystem, log);
    const std::optional<Options> options = makeOptions(line.solve, log);
    const std::optional<PointCheck> check = solve(model, environment, line.solve, options);
    writer.finishLine();
    printSummary(log, model, check);
    writeResults(line, model, check, log);
    if (!line.statusFile.empty()) finishOutput(status, line.statusFile);
    return check && !check->passed ? ExitCode::failedCheck : ExitCode::reported;
}

}  // namespace norv
