#include "solve/program.hpp"

#include <fstream>
#include <iostream>

#include "norv/file_path.hpp"
#include "solve/ampl/client.hpp"
#include "solve/failure.hpp"
#include "solve/output_file.hpp"
#include "solve/plot/trace_plot.hpp"
#include "solve/rerun.hpp"
#include "solve/run.hpp"
#include "solve/settings/command_line.hpp"
#include "solve/settings/help.hpp"
#include "solve/system_text.hpp"

namespace norv {
namespace {

InputText readInput(const std::string& path) {
    if (path != "-") return InputText::fromFile(path);
    return InputText::fromStream(binaryStandardInput(), "standard input");
}

/// Draws a solve trace that exists already, titled with the instance it names or its own name.
void drawTrace(const InputText& file, const Settings& settings) {
    const std::string& picture = settings.output.plot;
    if (picture.empty())
        throw Failure(ExitCode::badInput, file.path() + ": a solve trace, which --plot draws");
    requireDistinct({settings.model}, {picture});
    const TraceFile trace = readTrace(file);
    const std::string name = fileName(filePath(file.path()).filename());
    OutputFile out(picture);
    writeTracePlot(out.stream(), trace, trace.instance.empty() ? name : trace.instance);
    out.finish();
}

/// The questions that settings ask. @return whether there was one.
bool answerQuestions(const Request& request, const Settings& settings, const Catalogue& catalogue) {
    if (settings.showsVersion) {
        std::cout << "norvsolve " NORV_VERSION "\n";
    } else if (settings.showsHelp) {
        printHelp(std::cout, catalogue);
    } else if (settings.showsManual) {
        printManual(std::cout, catalogue);
    } else if (!settings.completion.empty()) {
        printCompletion(std::cout, catalogue, settings.completion);
    } else if (request.task == Request::Task::listSettings) {
        listSettings(std::cout, catalogue, request.searched);
    } else if (request.task == Request::Task::listNames) {
        listNames(std::cout, catalogue);
    } else if (request.task == Request::Task::answer) {
        for (const std::string& each : request.questions)
            answer(std::cout, catalogue, each, settings);
    } else {
        return false;
    }
    return true;
}

/// @param rerun  what is repeated, or null.
ExitCode solveForUser(const Request& request, Settings settings, const Catalogue& catalogue,
                      const Rerun* rerun, Clock::time_point start) {
    if (request.file.empty())
        throw Failure(ExitCode::badInput, "expected a model: norvsolve FILE (--help tells more)");
    const InputText file = readInput(settings.model);
    if (looksLikeTrace(file.text())) {
        drawTrace(file, settings);
        return ExitCode::solved;
    }
    const OutputSettings& wanted = settings.output;
    const bool isQuiet = wanted.isQuiet || wanted.level == 0;
    const bool logsToErrors = wanted.json == "-" || wanted.solution == "-";
    std::ostream nowhere(nullptr);
    LogTarget log = {std::cout, StandardStream::output, request.echoes};
    RunRecord run;
    run.allSettings = catalogue.valuesIn(settings);
    run.settings = std::move(settings);
    if (isQuiet) {
        runSolve(run, file, start, {nowhere, std::nullopt, request.echoes, /*explains=*/false});
    } else if (logsToErrors) {
        runSolve(run, file, start, {std::cerr, StandardStream::error, request.echoes});
    } else {
        runSolve(run, file, start, log);
    }
    if (rerun) {
        const std::string outcome = rerun->compare(run);
        if (!isQuiet) (logsToErrors ? std::cerr : std::cout) << "Rerun: " << outcome << ".\n";
        if (outcome != "the same answer") return ExitCode::failedCheck;
    }
    return run.ending.exitCode();
}

ExitCode run(int argc, const char* const* argv, Clock::time_point start) {
    const Catalogue catalogue(definitionFileFor(argc, argv));
    Request request = readCommandLine(argc, argv, catalogue);
    const std::string variable = environmentVariable("norvsolve_options");
    if (request.isClient && !request.file.empty())
        return solveForClient(request, catalogue, variable, start);
    if (!request.fault.empty()) throw Failure(ExitCode::badInput, request.fault);
    Settings settings = settingsOf(request, variable, catalogue);
    if (answerQuestions(request, settings, catalogue)) return ExitCode::solved;
    const bool writesSolution =
        request.writesSolution || (settings.output.wanted & wanted_solution::file) != 0;
    if (writesSolution && !request.file.empty())
        return solveForClient(request, catalogue, variable, start);
    std::optional<Rerun> rerun;
    if (!settings.rerun.empty()) {
        rerun.emplace(settings.rerun);
        rerun->addTo(request);
        settings = settingsOf(request, variable, catalogue);
    }
    return solveForUser(request, std::move(settings), catalogue, rerun ? &*rerun : nullptr, start);
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
    try {
        const ExitCode code = run(argc, argv, Clock::now());
        requirePrinted();
        return static_cast<int>(code);
    } catch (...) {
        const Complaint complaint = currentComplaint();
        std::cout.flush();
        std::cerr << complaint.line();
        return static_cast<int>(complaint.code);
    }
}

}  // namespace norv
