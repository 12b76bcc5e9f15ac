#include "solve/command_line.hpp"

#include <CLI/CLI.hpp>
#include <limits>

#include "solve/exit_code.hpp"

namespace norv {
namespace {

void describeSolve(CLI::App& app, CommandLine& line) {
    constexpr std::int32_t mostIterations = std::numeric_limits<std::int32_t>::max();
    app.add_option("FILE", line.model, "Model to solve: .mps or .nl, plain or gzipped")->required();
    app.add_option_function<std::vector<std::string>>(
           "SETTINGS",
           [&line](const std::vector<std::string>& settings) {
               for (const std::string& each : settings) line.solve.assignments.push_back({each});
           },
           "Options of the link, as name=value; they override the option file")
        ->check([](const std::string& setting) {
            const bool named = setting.find('=') != std::string::npos && setting[0] != '=';
            return named ? std::string() : "found \"" + setting + "\", expected name=value";
        });
    app.add_option("-o,--option-file", line.solve.optionFile, "Option file of the link");
    app.add_option("-t,--time-limit", line.solve.timeLimit,
                   "Time limit in seconds, rounded up to whole ones")
        ->check(CLI::Range(0.0, std::numeric_limits<double>::max()))
        ->capture_default_str();
    app.add_option("-i,--iteration-limit", line.solve.iterationLimit,
                   "Iteration limit (default: none; so does 2000000000)")
        ->check(CLI::Range(std::int32_t{0}, mostIterations));
    app.add_option("--threads", line.solve.threads, "Number of threads")
        ->check(CLI::Range(std::int32_t{1}, std::int32_t{1024}))
        ->capture_default_str();
    app.add_flag("--square", line.solve.reading.isSquareSystem,
                 "Solve equations: as many as variables, without an objective");
    app.add_option_function<std::string>(
           "--sos",
           [&line](const std::string& treatment) {
               line.solve.reading.keepsSets = treatment == "refuse";
           },
           "Special ordered sets: reformulate (default) solves them as binary variables, refuse "
           "has the link refuse them")
        ->check(CLI::IsMember({"reformulate", "refuse"}));
    app.add_option("--intorg-upper", line.solve.reading.integerUpper,
                   "Upper bound of .mps integer columns that have no bounds, 1 or inf")
        ->check(CLI::IsMember({"1", "inf"}))
        ->capture_default_str();
}

void describeOutput(CLI::App& app, CommandLine& line) {
    app.add_option("--status-file", line.statusFile, "Write the status file here");
    app.add_flag("--print-solution", line.printsSolution, "Print the non-zero variables");
    app.add_option("--solution", line.solutionFile, "Write the non-zero variables here");
    app.add_option("--json", line.jsonFile,
                   "Write the result as JSON here; - is the standard output, and the log then goes "
                   "to standard error");
    app.add_option("--plot", line.plotFile,
                   "Draw the best value found over time, as SVG; FILE may be a solve trace");
    app.add_option("--link", line.solve.link, "The link, by name or path")->capture_default_str();
    app.add_option("--system-directory", line.solve.systemDirectory,
                   "Directory of optlocalsolver.def (default: the program's)");
    app.set_version_flag("--version", std::string("norvsolve ") + NORV_VERSION);
}

}  // namespace

ParsedArguments parseArguments(int argc, const char* const* argv) {
    CommandLine line;
    CLI::App app("Solves a model file through the link that Norv would load.", "norvsolve");
    app.allow_windows_style_options(false);  // "/models/blend.mps" is a path everywhere
    describeSolve(app, line);
    describeOutput(app, line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool isFault = app.exit(error) != 0;
        return {std::nullopt, isFault ? static_cast<int>(ExitCode::badCommandLine) : 0};
    }
    return {line, 0};
}

}  // namespace norv
