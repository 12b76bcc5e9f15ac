#include "solve/solve_run.hpp"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <thread>

#include "norv/file_path.hpp"
#include "solve/failure.hpp"
#include "solve/link_library.hpp"
#include "solve/number_text.hpp"
#include "solve/settings/command_line.hpp"

namespace norv {
namespace {

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

Options definedOptions(const SolveSettings& settings) {
    Options options;
    const bool defined =
        options.readDefinition(systemDirectory(settings.systemDirectory) + "optlocalsolver.def");
    if (!defined) throw Failure(ExitCode::badInput, takeMessages(options));
    options.clearMessages();
    return options;
}

/// Reads the file, or its lines that are for the link, into the options.
void readOptionFile(Options& options, const SolveSettings& settings) {
    if (!settings.ownsOptions) {
        if (!settings.optionFile.empty()) options.readFile(settings.optionFile);
        return;
    }
    for (const Assignment& each : settings.fileAssignments) options.set(each.text, each.source);
}

/// What the user reads, a line each, without the last line's end.
std::string takeWarnings(Options& options) {
    constexpr std::int32_t lastShown = 7;
    std::string lines;
    for (const OptionMessage& message : options.messages()) {
        if (message.type > lastShown) continue;
        lines += (lines.empty() ? "" : "\n") + message.text;
    }
    options.clearMessages();
    return lines;
}

/// The link warns as it reads the file; where warnings are errors, it does not come to that.
void requireFlawless(const SolveSettings& settings) {
    if (settings.optionFile.empty()) return;
    Options options = definedOptions(settings);
    readOptionFile(options, settings);
    const std::string warnings = takeWarnings(options);
    if (!warnings.empty()) throw Failure(ExitCode::badInput, warnings);
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

void configure(Environment& environment, const Settings& all, std::ostream& log) {
    const SolveSettings& settings = all.solve;
    environment.setSystemDirectory(systemDirectory(settings.systemDirectory));
    // The link would round down, and begin no search for half a second.
    const double wholeSeconds = std::ceil(settings.timeLimit);
    if (wholeSeconds != settings.timeLimit) {
        const std::string warning = "Time limit " + numberText(settings.timeLimit) +
                                    " s: the link takes whole seconds, " +
                                    numberText(wholeSeconds) + " is used.";
        if (all.output.isStrict) throw Failure(ExitCode::badInput, warning);
        log << warning << '\n';
    }
    environment.setTimeLimit(wholeSeconds);
    environment.setIterationLimit(settings.iterationLimit);
    const auto nbThreads = static_cast<std::int32_t>(std::thread::hardware_concurrency());
    environment.setThreads(settings.threads > 0 ? settings.threads : std::max(nbThreads, 1));
}

std::optional<Options> makeOptions(const Settings& all, bool always, std::ostream& log) {
    const SolveSettings& settings = all.solve;
    requireReadable(settings.optionFile);
    if (all.output.isStrict) requireFlawless(settings);
    if (settings.assignments.empty() && !settings.ownsOptions && !always) return std::nullopt;
    Options options = definedOptions(settings);
    readOptionFile(options, settings);
    const std::string warnings = takeWarnings(options);
    if (!warnings.empty()) log << warnings << '\n';
    for (const Assignment& each : settings.assignments) {
        if (!options.set(each.text, each.source))
            throw Failure(ExitCode::badInput, takeMessages(options));
    }
    return options;
}

void solve(LoadedModel& loaded, const SolveSettings& settings,
           const std::optional<Options>& options, ImprovingPoints* points) {
    Model& model = loaded.forLink ? *loaded.forLink : loaded.model;
    if (!options && !settings.optionFile.empty()) model.setOptionFile(settings.optionFile);
    LinkLibrary link(settings.link);
    if (points != nullptr)
        points->setSource([&link](auto levels) { return link.readIncumbent(levels); });
    link.solve(model, options ? options->handle() : nullptr);
    if (loaded.forLink) loaded.model.takeResults(*loaded.forLink);
}

SolveResult checkResult(const LoadedModel& loaded, const SolveSettings& settings,
                        const std::optional<Options>& options) {
    // The link imposed its bounds on the model that it saw.
    const Model& model = loaded.forLink ? *loaded.forLink : loaded.model;
    SolveResult result;
    if (claimsFeasiblePoint(model.modelStatus())) result.check = checkPoint(loaded.model);
    result.verdict = boxVerdict(model, result.check, hasThreshold(settings, options));
    return result;
}

}  // namespace norv
