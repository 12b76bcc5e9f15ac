#include "solve/ampl/client.hpp"

#include <filesystem>
#include <iostream>
#include <sstream>

#include "hostapi/codes.hpp"
#include "norv/file_path.hpp"
#include "readers/nl_header.hpp"
#include "readers/nl_input.hpp"
#include "readers/nl_reader.hpp"
#include "solve/ampl/solution_file.hpp"
#include "solve/failure.hpp"
#include "solve/number_text.hpp"
#include "solve/output_file.hpp"
#include "solve/report.hpp"

namespace norv {
namespace {

namespace fs = std::filesystem;

/// "model" for "model", "model.nl" and "model.nl.gz".
std::string stubOf(std::string file) {
    for (const std::string_view ending : {".gz", ".nl"}) {
        if (file.ends_with(ending)) file.resize(file.size() - ending.size());
    }
    return file;
}

/// The file as it was named, when there is one, else with the ending that clients leave out.
std::string modelPath(const std::string& named) {
    const bool isStub = !named.ends_with(".nl") && !fs::is_regular_file(filePath(named));
    return isStub ? named + ".nl" : named;
}

NlHeader headerOf(const InputText& file) {
    if (!looksLikeNl(file.text()))
        throw Failure(ExitCode::badInput, file.path() +
                                              ": found no .nl file, for which alone there "
                                              "is a .sol file");
    NlInput input(file);
    return readNlHeader(input);
}

/// Everything that can go wrong becomes an ending, so that the client hears of it.
void runFor(RunRecord& run, const Request& request, const Catalogue& catalogue,
            const std::string& variable, const InputText& file, Clock::time_point start) {
    std::ostringstream hidden;
    std::string complaintLine;
    try {
        if (!request.fault.empty()) throw Failure(ExitCode::badInput, request.fault);
        run.settings = settingsOf(request, variable, catalogue);
        run.settings.model = file.path();
        run.allSettings = catalogue.valuesIn(run.settings);
        const bool isLoud = run.settings.output.level > 0 && !run.settings.output.isQuiet;
        if (isLoud) {
            runSolve(run, file, start, {std::cout, StandardStream::output, request.echoes});
        } else {
            runSolve(run, file, start, {hidden, std::nullopt, request.echoes, /*explains=*/false});
        }
    } catch (...) {
        const Complaint complaint = currentComplaint();
        complaintLine = complaint.line();
        // An output that could not be written leaves the answer what it is.
        if (complaint.code != ExitCode::outputFailed || !run.isSolved) {
            run.ending = {Ending::Kind::failed, StopReason::none, complaint.reason, complaint.code};
            if (complaint.code == ExitCode::unsupported)
                run.ending.kind = Ending::Kind::unsupported;
        }
    }
    // Who asked for silence wants to know all the same why the link failed.
    const bool isExplained =
        run.ending.kind == Ending::Kind::unsupported ||
        (run.ending.kind == Ending::Kind::failed && run.ending.complaint == ExitCode::failed);
    if (isExplained) std::cout << hidden.str() << std::flush;
    std::cerr << complaintLine;
}

/// A line that names what the client asked for and does not get.
std::string missingSuffixes(const std::vector<std::string>& asked) {
    std::string names;
    for (const std::string& each : asked) {
        if (each != activitySuffix) names += (names.empty() ? " " : ", ") + each;
    }
    return names.empty() ? "" : "\nno values for suffixes:" + names;
}

std::string messageOf(const RunRecord& run) {
    namespace record = hostapi::head_and_tail;
    std::string message = "norvsolve " NORV_VERSION ": " + run.ending.text;
    if (!run.isSolved) return message;
    if (run.ending.hasPoint() && run.model().hasObjective())
        message += "; objective " + numberText(run.objective(), 10);
    message += '\n' + numberText(run.model().headAndTail(record::iterations)) + " iterations, " +
               numberText(run.model().headAndTail(record::seconds)) + " seconds";
    if ((run.settings.output.wanted & wanted_solution::duals) != 0)
        message += "\nno dual values: the search has none";
    return message + missingSuffixes(run.loaded->askedSuffixes);
}

/// The values of all rows, where a client can take them.
std::vector<double> activitiesOf(const RunRecord& run, std::int32_t nbRows) {
    std::vector<double> activities;
    for (std::int32_t i = 0; i < nbRows; ++i) {
        const Evaluation row = run.model().evaluateRow(i, run.model().levels());
        activities.push_back(row.nbErrors == 0 ? row.value : 0.0);
    }
    return activities;
}

void writeSolutionFile(OutputFile& out, const NlHeader& header, const RunRecord& run) {
    AmplSolution solution = {messageOf(run), run.ending.solutionCode(), {}, {}};
    if (run.isSolved && run.ending.hasPoint()) {
        const auto nbVariables = static_cast<std::size_t>(header.nbVariables);
        solution.levels = run.model().levels().first(nbVariables);
        solution.activities = activitiesOf(run, header.nbRows);
    }
    writeAmplSolution(out.stream(), header, solution);
    out.finish();
}

}  // namespace

ExitCode solveForClient(const Request& request, const Catalogue& catalogue,
                        const std::string& variable, Clock::time_point start) {
    const std::string stub =
        request.solutionStub.empty() ? stubOf(request.file) : stubOf(request.solutionStub);
    const std::string path = stub.ends_with(".sol") ? stub : stub + ".sol";
    std::error_code ignored;
    fs::remove(filePath(path), ignored);
    const InputText file = InputText::fromFile(modelPath(request.file));
    const NlHeader header = headerOf(file);
    OutputFile out(path);
    RunRecord run;
    runFor(run, request, catalogue, variable, file, start);

    writeSolutionFile(out, header, run);
    const std::int32_t wanted = run.settings.output.wanted;
    if (!request.isClient && (wanted & wanted_solution::silence) == 0)
        std::cout << messageOf(run) << '\n';
    if ((wanted & wanted_solution::levels) != 0 && run.isSolved && run.ending.hasPoint())
        writeSolution(std::cout, run.model());
    return request.isClient ? ExitCode::solved : run.ending.exitCode();
}

}  // namespace norv
