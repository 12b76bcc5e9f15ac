/// norvsolve: reads a model file, has the link solve it as the host would, and checks the result.

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <new>
#include <optional>
#include <utility>

#include "norv/environment.hpp"
#include "norv/model_builder.hpp"
#include "norv/options.hpp"
#include "readers/mps_model.hpp"
#include "readers/mps_reader.hpp"
#include "readers/nl_model.hpp"
#include "readers/nl_reader.hpp"
#include "readers/read_error.hpp"
#include "solve/command_line.hpp"
#include "solve/failure.hpp"
#include "solve/link_library.hpp"
#include "solve/point_check.hpp"
#include "solve/report.hpp"
#include "solve/shared_library.hpp"

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

/// Limits, threads and the two streams, as the command line wants them.
void setUp(Environment& environment, const CommandLine& line, std::ostream& log,
           std::ostream* status) {
    environment.setLogSink([&log](std::string_view text) { log << text << std::flush; });
    if (status != nullptr) {
        environment.setStatusSink([status](std::string_view text) { *status << text; });
    }
    environment.setSystemDirectory(line.systemDirectory.empty() ? programDirectory()
                                                                : line.systemDirectory);
    environment.setTimeLimit(line.timeLimit);
    if (line.iterationLimit) environment.setIterationLimit(*line.iterationLimit);
    environment.setThreads(line.threads);
}

template <class Instance>
void build(const Instance& instance, ModelBuilder& builder, std::ostream& log) {
    for (const std::string& warning : instance.warnings) log << "Warning: " << warning << '\n';
    buildModel(instance, builder);
}

/// The format is seen from the content: no .mps file begins with a "g" or "b" and a digit.
Model readModel(const std::string& path, const Environment& environment, std::ostream& log) {
    ModelBuilder builder;
    const InputText text = InputText::fromFile(path);
    if (looksLikeNl(text.text())) {
        build(readNl(text, readNlNames(path)), builder, log);
    } else {
        build(readMps(text), builder, log);
    }
    Model model = builder.finish(environment);
    log << path << ": " << model.nbRows() << " rows, " << model.nbVariables() << " columns ("
        << model.nbDiscrete() << " discrete), " << model.nbCoefficients() << " coefficients\n";
    return model;
}

void printMessages(Options& options, std::ostream& out) {
    for (const OptionMessage& message : options.messages()) out << message.text << '\n';
    options.clearMessages();
}

/// The link goes on without an option file that it cannot open; who names one wants it read.
void requireReadable(const std::string& path) {
    if (path.empty() || std::ifstream(path)) return;
    throw Failure(ExitCode::badInput, path + ": the option file cannot be opened");
}

/// Settings of the command line come after the option file, so this program then reads both; the
/// link is handed the filled object. Without settings the link makes its own and reads the file.
std::optional<Options> makeOptions(const CommandLine& line, std::ostream& log) {
    if (line.settings.empty()) return std::nullopt;
    const std::string directory =
        line.systemDirectory.empty() ? programDirectory() : line.systemDirectory + '/';
    Options options;
    const bool defined = options.readDefinition(directory + "optlocalsolver.def");
    if (!defined) {
        printMessages(options, std::cerr);
        throw Failure(ExitCode::badInput, "the option definitions could not be read");
    }
    options.clearMessages();
    if (!line.optionFile.empty()) options.readFile(line.optionFile);
    printMessages(options, log);
    const bool allTaken = std::all_of(
        line.settings.begin(), line.settings.end(),
        [&](const std::string& setting) { return options.set(setting, "command line"); });
    if (allTaken) return options;
    printMessages(options, std::cerr);
    throw Failure(ExitCode::badCommandLine, "a setting was refused");
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

ExitCode run(const CommandLine& line) {
    std::ostream& log = line.jsonFile == "-" ? std::cerr : std::cout;
    std::ofstream status;
    if (!line.statusFile.empty()) status = openOutput(line.statusFile);
    Environment environment;
    setUp(environment, line, log, line.statusFile.empty() ? nullptr : &status);

    requireReadable(line.optionFile);
    Model model = readModel(line.model, environment, log);
    const std::optional<Options> options = makeOptions(line, log);
    if (!options && !line.optionFile.empty()) model.setOptionFile(line.optionFile);
    const LinkLibrary link(line.link);
    link.solve(model, options ? options->handle() : nullptr);

    std::optional<PointCheck> check;
    if (claimsFeasiblePoint(model.modelStatus())) check = checkPoint(model);
    printSummary(log, model, check);
    writeResults(line, model, check, log);
    if (!line.statusFile.empty()) finishOutput(status, line.statusFile);
    return check && !check->passed ? ExitCode::failedCheck : ExitCode::reported;
}

int complain(const char* text, ExitCode code) {
    std::cout.flush();
    std::cerr << "norvsolve: " << text << '\n';
    return static_cast<int>(code);
}

}  // namespace
}  // namespace norv

int main(int argc, char** argv) {
    try {
        const norv::ParsedArguments arguments = norv::parseArguments(argc, argv);
        if (!arguments.commandLine) return arguments.exitCode;
        return static_cast<int>(norv::run(*arguments.commandLine));
    } catch (const norv::ReadError& error) {
        // The line starts with file, line and column, as editors and users expect it.
        std::cout.flush();
        std::cerr << error.what() << '\n';
        return static_cast<int>(norv::ExitCode::badInput);
    } catch (const norv::Failure& failure) {
        return norv::complain(failure.what(), failure.code());
    } catch (const std::bad_alloc&) {
        return norv::complain("memory exhausted", norv::ExitCode::internalError);
    } catch (const std::exception& error) {
        return norv::complain(error.what(), norv::ExitCode::internalError);
    }
}
