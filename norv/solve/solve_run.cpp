#include "solve/solve_run.hpp"

#include <cmath>
#include <filesystem>
#include <fstream>

#include "norv/file_path.hpp"
#include "solve/failure.hpp"
#include "solve/link_library.hpp"
#include "solve/report.hpp"
#include "solve/shared_library.hpp"
#include "solve/termination_signals.hpp"

namespace norv {
namespace {

const char* const definitionFile = "optlocalsolver.def";

/// With a separator at the end. Unless told, the program's own folder, or where an installation
/// keeps the definitions.
std::string systemDirectory(const SolveSettings& settings) {
    if (!settings.systemDirectory.empty()) return settings.systemDirectory + '/';
    const std::filesystem::path program = filePath(programDirectory());
    if (std::filesystem::exists(program / definitionFile)) return fileName(program);
    return fileName((program / NORV_DEFINITIONS).lexically_normal() / "");
}

/// The messages, a line each, without the last line's end; then forgets them.
std::string takeMessages(Options& options) {
    std::string lines;
    for (const OptionMessage& message : options.messages()) {
        if (!lines.empty()) lines += '\n';
        lines += message.text;
    }
    options.clearMessages();
    return lines;
}

/// The link goes on without an option file that it cannot open; who names one wants it read.
void requireReadable(const std::string& path) {
    if (path.empty() || std::ifstream(filePath(path))) return;
    throw Failure(ExitCode::badInput, path + ": the option file cannot be opened");
}

/// Does the link stop at an objective value? It reads an option file itself when nobody else has.
bool hasThreshold(const SolveSettings& settings, const std::optional<Options>& options) {
    constexpr const char* name = "dualbound";
    if (options) return options->isSet(name);
    if (settings.optionFile.empty()) return false;
    Options fromFile = definedOptions(settings);
    fromFile.readFile(settings.optionFile);
    return fromFile.isSet(name);
}

}  // namespace

std::string assignmentText(const std::string& name, const std::string& value) {
    std::string text = name + "=\"";
    for (const char each : value) text.append(each == '"' ? 2 : 1, each);
    return text + '"';
}

void configure(Environment& environment, const SolveSettings& settings, std::ostream& log) {
    environment.setSystemDirectory(systemDirectory(settings));
    // The link would round down, and begin no search for half a second.
    const double wholeSeconds = std::ceil(settings.timeLimit);
    if (wholeSeconds != settings.timeLimit) {
        log << "Time limit " << numberText(settings.timeLimit)
            << " s: the link takes whole seconds, " << numberText(wholeSeconds) << " is used.\n";
    }
    environment.setTimeLimit(wholeSeconds);
    if (settings.iterationLimit) environment.setIterationLimit(*settings.iterationLimit);
    environment.setThreads(settings.threads);
}

Options definedOptions(const SolveSettings& settings) {
    Options options;
    const bool defined = options.readDefinition(systemDirectory(settings) + definitionFile);
    if (!defined) throw Failure(ExitCode::badInput, takeMessages(options));
    options.clearMessages();
    return options;
}

std::optional<Options> makeOptions(const SolveSettings& settings, bool always, std::ostream& log) {
    requireReadable(settings.optionFile);
    if (settings.assignments.empty() && !always) return std::nullopt;
    Options options = definedOptions(settings);
    if (!settings.optionFile.empty()) options.readFile(settings.optionFile);
    if (!options.messages().empty()) log << takeMessages(options) << '\n';
    for (const Assignment& each : settings.assignments) {
        if (!options.set(each.text, each.source))
            throw Failure(ExitCode::badCommandLine, takeMessages(options));
    }
    return options;
}

SolveResult solve(LoadedModel& loaded, Environment& environment, const SolveSettings& settings,
                  const std::optional<Options>& options) {
    Model& model = loaded.forLink ? *loaded.forLink : loaded.model;
    if (!options && !settings.optionFile.empty()) model.setOptionFile(settings.optionFile);
    const LinkLibrary link(settings.link);
    {
        const TerminationSignals signals(environment);
        link.solve(model, options ? options->handle() : nullptr);
    }
    if (loaded.forLink) loaded.model.takeResults(*loaded.forLink);
    SolveResult result;
    if (claimsFeasiblePoint(model.modelStatus())) result.check = checkPoint(loaded.model);
    // The link imposed its bounds on the model that it saw.
    result.verdict = boxVerdict(model, result.check, hasThreshold(settings, options));
    return result;
}

}  // namespace norv
