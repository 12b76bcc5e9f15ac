#include "solve/ampl/command.hpp"

#include <fstream>
#include <iostream>
#include <sstream>
#include <string_view>

#include "hostapi/codes.hpp"
#include "norv/file_path.hpp"
#include "readers/nl_header.hpp"
#include "readers/nl_input.hpp"
#include "solve/ampl/keywords.hpp"
#include "solve/ampl/outcome.hpp"
#include "solve/ampl/solution_file.hpp"
#include "solve/failure.hpp"
#include "solve/log_writer.hpp"
#include "solve/model_file.hpp"
#include "solve/report.hpp"
#include "solve/system_text.hpp"
#include "solve/terminal.hpp"

namespace norv {
namespace {

constexpr const char* version = "norvsolve " NORV_VERSION;

/// How it went, as far as it went.
struct AmplRun {
    AmplSettings settings;
    std::optional<Model> model;
    AmplOutcome outcome;
    ExitCode exitCode = ExitCode::reported;
};

NlHeader headerOf(const InputText& file) {
    NlInput input(file);
    return readNlHeader(input);
}

AmplSettings settingsFor(const AmplCommand& command) {
    AmplSettings settings;
    constexpr const char* variable = "norvsolve_options";
    takeKeywords(settings, environmentVariable(variable), variable);
    takeKeywords(settings, joinedKeywords(command.keywords), "command line");
    return settings;
}

void solveModel(AmplRun& run, Environment& environment, const InputText& file, std::ostream& log) {
    LogWriter writer(
        log, [&log] { return &log == &std::cout ? terminalColumns(StandardStream::output) : 0; });
    configure(environment, run.settings.solve, log);
    environment.setLogSink([&writer](std::string_view text) { writer.write(text); });
    LoadedModel loaded = readModel(file, environment, run.settings.solve.reading, log);
    const std::optional<Options> options = makeOptions(run.settings.solve, /*always=*/false, log);
    const SolveResult result = solve(loaded, environment, run.settings.solve, options);
    run.model = std::move(loaded.model);
    writer.finishLine();
    printSummary(log, *run.model, result);
    run.outcome = outcomeOf(*run.model, result);
    if (result.check && !result.check->passed) run.exitCode = ExitCode::failedCheck;
}

/// Everything that can go wrong becomes an outcome, so that the client hears of it.
AmplRun runFor(const AmplCommand& command, Environment& environment, const InputText& file) {
    AmplRun run;
    std::ostringstream hidden;
    std::string complaintLine;
    try {
        run.settings = settingsFor(command);
        solveModel(run, environment, file, run.settings.logLevel > 0 ? std::cout : hidden);
    } catch (...) {
        const Complaint complaint = currentComplaint();
        complaintLine = complaint.line();
        run.outcome = outcomeOf(complaint);
        run.exitCode = complaint.code;
    }
    // Who asked for silence wants to know all the same why the link failed.
    if (run.outcome.isExplainedByLog) std::cout << hidden.str() << std::flush;
    std::cerr << complaintLine;
    return run;
}

std::string messageOf(const AmplRun& run) {
    namespace record = hostapi::head_and_tail;
    std::string message = version;
    message += ": " + run.outcome.text;
    if (!run.outcome.hasStatistics) return message;
    if (run.outcome.hasPoint && run.model->hasObjective())
        message += "; objective " + numberText(run.model->headAndTail(record::objective));
    message += '\n' + numberText(run.model->headAndTail(record::iterations)) + " iterations, " +
               numberText(run.model->headAndTail(record::seconds)) + " seconds";
    return message;
}

void writeSolutionFile(const std::string& path, const NlHeader& header, const AmplRun& run) {
    AmplSolution solution = {messageOf(run), run.outcome.code, {}};
    if (run.outcome.hasPoint) solution.levels = run.model->levels();
    std::ofstream out(filePath(path), std::ios::binary);
    writeAmplSolution(out, header, solution);
    out.close();
    if (!out) throw Failure(ExitCode::outputFailed, path + ": cannot be written");
}

ExitCode solveForClient(const AmplCommand& command) {
    std::string stub = command.stub;
    if (stub.ends_with(".nl")) stub.resize(stub.size() - 3);
    std::error_code ignored;
    std::filesystem::remove(filePath(stub + ".sol"), ignored);
    const InputText file = InputText::fromFile(stub + ".nl");
    const NlHeader header = headerOf(file);
    Environment environment;
    const AmplRun run = runFor(command, environment, file);

    writeSolutionFile(stub + ".sol", header, run);
    const std::int32_t wanted = run.settings.wanted;
    if (!command.isCalledByClient && (wanted & wanted_solution::silence) == 0)
        std::cout << messageOf(run) << '\n';
    if ((wanted & wanted_solution::levels) != 0 && run.outcome.hasPoint)
        writeSolution(std::cout, *run.model);
    return run.exitCode;
}

}  // namespace

std::optional<AmplCommand> parseAmplCommand(int argc, const char* const* argv) {
    AmplCommand command;
    bool isOfProtocol = false;
    std::string foreign;
    for (int k = 1; k < argc; ++k) {
        const std::string_view word = argv[k];
        const bool isOption = word == "-AMPL" || word == "-s" || word == "-v" || word == "-=";
        isOfProtocol = isOfProtocol || isOption;
        if (word == "-AMPL") command.isCalledByClient = true;
        if (word == "-v") command.task = AmplCommand::Task::showVersion;
        if (word == "-=") command.task = AmplCommand::Task::listKeywords;
        if (isOption) continue;
        if (!command.stub.empty()) {
            command.keywords.emplace_back(word);
        } else if (word.starts_with('-')) {
            foreign = word;
        } else {
            command.stub = word;
        }
    }
    if (!isOfProtocol) return std::nullopt;
    if (command.task != AmplCommand::Task::solve) return command;
    if (!foreign.empty())
        throw Failure(ExitCode::badCommandLine,
                      "found " + foreign + " before the stub, expected -s");
    if (command.stub.empty())
        throw Failure(ExitCode::badCommandLine, "expected a stub: norvsolve STUB -AMPL");
    return command;
}

ExitCode runAmplCommand(const AmplCommand& command) {
    switch (command.task) {
        case AmplCommand::Task::showVersion:
            std::cout << version << '\n';
            return ExitCode::reported;
        case AmplCommand::Task::listKeywords:
            listKeywords(std::cout);
            return ExitCode::reported;
        default:
            return solveForClient(command);
    }
}

}  // namespace norv
