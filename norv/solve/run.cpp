#include "solve/run.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <fstream>
#include <iostream>
#include <list>
#include <utility>

#include "hostapi/codes.hpp"
#include "norv/file_path.hpp"
#include "readers/read_error.hpp"
#include "solve/conflict.hpp"
#include "solve/failure.hpp"
#include "solve/log_writer.hpp"
#include "solve/output_file.hpp"
#include "solve/plot/trace_plot.hpp"
#include "solve/report.hpp"
#include "solve/search_watch.hpp"
#include "solve/solve_run.hpp"
#include "solve/start_point.hpp"
#include "solve/termination_signals.hpp"
#include "solve/trace_request.hpp"
#include "writers/model_writer.hpp"

namespace norv {
namespace {

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void writeSolutionOf(std::ostream& out, const RunRecord& run) {
    if (run.result.check) writeSolution(out, run.model());
}

void drawRun(std::ostream& out, const RunRecord& run) {
    const std::string name = fileName(filePath(run.settings.model).filename());
    writeTracePlot(out, run.trace, name, run.direction());
}

/// The results that a run is asked for, opened before the search.
class Outputs {
public:
    explicit Outputs(const Settings& settings) {
        const OutputSettings& wanted = settings.output;
        requireDistinct({settings.model, settings.solve.optionFile, settings.solve.startFile},
                        {wanted.solution, wanted.json, wanted.plot, wanted.report,
                         wanted.statusFile, wanted.model});
        if (!wanted.statusFile.empty()) status_.emplace(wanted.statusFile);
        if (!wanted.model.empty()) {
            if (writerFor(wanted.model) == nullptr)
                throw Failure(ExitCode::badInput,
                              wanted.model + ": found this ending, expected .lp or .mps");
            model_.emplace(wanted.model);
        }
        add(wanted.solution, writeSolutionOf, /*takesPoints=*/true);
        add(wanted.json, writeJson, /*takesPoints=*/true);
        add(wanted.plot, drawRun, /*takesPoints=*/false);
        add(wanted.report, writeHtml, /*takesPoints=*/false);
    }

    [[nodiscard]] std::ostream* status() { return status_ ? &status_->stream() : nullptr; }

    /// Before the search: whoever wants a model only need not wait.
    void writeModel(const LoadedModel& loaded) {
        if (!model_) return;
        const std::string& path = model_->path();
        try {
            writerFor(path)(model_->stream(), loaded.forLink ? *loaded.forLink : loaded.model);
        } catch (const NotWritable& reason) {
            throw Failure(ExitCode::badInput, path + ": not written: " + reason.what());
        }
        model_->finish();
    }

    /// Are there results that want to know about points on the way?
    [[nodiscard]] bool takePoints() const {
        return std::ranges::any_of(results_, [](const Result& each) { return each.isReplaced(); });
    }

    /// While the search runs: what cannot be written now is tried once more at the end.
    void writePoint(const RunRecord& run) {
        for (Result& each : results_) {
            if (!each.isReplaced()) continue;
            try {
                each.write(each.file.stream(), run);
                each.file.finish();
            } catch (const Failure&) {  // NOLINT(bugprone-empty-catch)
            }
        }
    }

    /// Failure (outputFailed) with all that went wrong, once everything has been tried.
    void write(const RunRecord& run) {
        std::string faults;
        const auto attempt = [&faults](const auto& action) {
            try {
                action();
            } catch (const Failure& failure) {
                faults += (faults.empty() ? "" : "\n") + std::string(failure.what());
            }
        };
        for (Result& each : results_) {
            attempt([&] {
                each.write(each.file.stream(), run);
                each.file.finish();
            });
        }
        if (status_) attempt([&] { status_->finish(); });
        attempt(requirePrinted);
        if (!faults.empty()) throw Failure(ExitCode::outputFailed, faults);
    }

private:
    using Writer = void (*)(std::ostream& out, const RunRecord& run);
    struct Result {
        Result(const std::string& path, Writer writer, bool wantsPoints)
            : file(path), write(writer), takesPoints(wantsPoints) {}
        [[nodiscard]] bool isReplaced() const { return takesPoints && file.isReplaced(); }
        OutputFile file;
        Writer write;
        bool takesPoints;  ///< also those on the way
    };

    void add(const std::string& path, Writer writer, bool takesPoints) {
        if (!path.empty()) results_.emplace_back(path, writer, takesPoints);
    }

    std::optional<OutputFile> status_;
    std::optional<OutputFile> model_;
    std::list<Result> results_;
};

bool needsTrace(const Settings& settings) {
    const OutputSettings& wanted = settings.output;
    return !wanted.plot.empty() || !wanted.json.empty() || !wanted.report.empty() ||
           std::isfinite(settings.solve.stopAfter);
}

/// "Settings: time-limit 5, seed 3", those that somebody made.
void printSettings(std::ostream& out, const Settings& settings) {
    if (settings.made.empty()) return;
    const char* separator = "Settings: ";
    for (const MadeSetting& each : settings.made)
        out << std::exchange(separator, ", ") << each.name << ' ' << each.value;
    out << '\n';
}

/// The trace with what progress lines told between its records.
TraceFile withProgress(TraceFile trace, const SearchWatch& watch) {
    const auto& bounds = watch.bounds();
    trace.infeasible = watch.infeasible();
    std::size_t k = 0;
    for (TraceRecord& record : trace.records) {
        while (k < bounds.size() && bounds[k].first <= record.seconds) ++k;
        if (k > 0 && !record.bestBound) record.bestBound = bounds[k - 1].second;
    }
    return trace;
}

/// Why there is no solution, as far as a second or two tell; --explain takes a minute and writes
/// the conflicting part to the current folder.
void explain(std::ostream& log, const RunRecord& run) {
    const Settings& settings = run.settings;
    constexpr std::int32_t mostRows = 2000;  // for a quick look
    const bool isLong = settings.output.explains;
    if (!isLong && run.model().nbRows() > mostRows) return;
    const auto conflict = findConflict(run.model(), settings.solve,
                                       std::chrono::duration<double>(isLong ? 60.0 : 2.0));
    if (!conflict || conflict->rows.size() + conflict->bounds.size() == 0) return;
    log << "These cannot hold together" << (conflict->isMinimal ? "" : " (perhaps fewer of them)")
        << ": " << conflictText(run.model(), *conflict) << ".\n";
    if (!isLong) return;
    const std::string path = fileName(filePath(settings.model).stem()) + ".conflict.lp";
    OutputFile out(path);
    const Environment environment;
    writeLp(out.stream(), conflictModel(run.model(), *conflict, environment));
    out.finish();
    log << "Written to " << path << ".\n";
}

/// The trace so far; the last line may still be on its way, and the next reading gets it.
TraceFile traceSoFar(const std::optional<TraceRequest>& trace, const SearchWatch& watch) {
    try {
        return trace ? withProgress(trace->read(), watch) : TraceFile();
    } catch (const ReadError&) {
        return {};
    }
}

/// What the results tell about while the search still runs.
void describePoint(RunRecord& run, const SearchWatch& watch, const PointCheck& check) {
    run.result.check = check;
    run.ending = {Ending::Kind::feasible, StopReason::none,
                  "not ended yet, feasible solution so far"};
    run.bound = watch.bound();
    run.linkVersion = watch.linkVersion();
    run.optimizer = watch.optimizer();
}

/// What the search's end tells, beyond the levels.
void conclude(RunRecord& run, const SearchWatch& watch) {
    run.ending = endingOf(run.model(), run.result, watch.reason(), watch.refusal());
    run.bound = watch.bound();
    run.linkVersion = watch.linkVersion();
    run.optimizer = watch.optimizer();
    const bool isProved = run.ending.kind == Ending::Kind::optimal && run.model().hasObjective();
    if (isProved) run.bound = run.objective();
}

}  // namespace

double RunRecord::objective() const {
    return model().headAndTail(hostapi::head_and_tail::objective);
}

const char* RunRecord::direction() const {
    if (!model().hasObjective()) return "";
    const bool minimises = model().sense() == hostapi::objective_sense::minimise;
    return minimises ? "minimise" : "maximise";
}

std::optional<double> RunRecord::gap() const {
    if (!bound || !result.check) return std::nullopt;
    const double value = objective();
    return std::fabs(value - *bound) / std::max(1.0, std::fabs(value));
}

void runSolve(RunRecord& run, const InputText& file, Clock::time_point start, LogTarget target) {
    const Settings& settings = run.settings;
    std::ostream& log = target.out;
    Environment environment;
    TerminationSignals signals(environment);
    Outputs outputs(settings);
    LogWriter writer(log,
                     [&target] { return target.terminal ? terminalColumns(*target.terminal) : 0; });
    configure(environment, settings, log);
    std::optional<Options> options = makeOptions(settings, needsTrace(settings), log);
    run.loaded = readModel(file, environment, settings.solve.reading, log);
    run.sizes = sizesOf(run.model());
    printSizes(log, run.sizes);
    if (target.echoesSettings) printSettings(log, settings);
    outputs.writeModel(*run.loaded);
    if (!settings.solve.startFile.empty()) log << takeStart(*run.loaded, settings.solve.startFile);
    std::optional<TraceRequest> trace;
    if (needsTrace(settings)) trace.emplace(*options);
    run.times.reading = secondsSince(start);

    signals.beginSearch();
    const Clock::time_point searchStart = Clock::now();
    SearchWatch watch(environment, settings.solve, start, trace ? trace->path() : "");
    LineSplitter lines([&watch](std::string_view line) { watch.seeLine(line); });
    environment.setLogSink([&](std::string_view text) {
        lines.write(text);
        writer.write(text);
    });
    std::ostream* const status = outputs.status();
    environment.setStatusSink([status](std::string_view text) {
        if (status != nullptr) *status << text;
    });
    ImprovingPoints points(*run.loaded, [&](const PointCheck& check) {
        describePoint(run, watch, check);
        run.times.solving = secondsSince(searchStart);
        run.trace = traceSoFar(trace, watch);
        outputs.writePoint(run);
    });
    watch.setListener([&points] { points.look(); });
    solve(*run.loaded, settings.solve, options, outputs.takePoints() ? &points : nullptr);
    watch.setListener({});
    run.result = {};
    writer.finishLine();
    run.times.solving = secondsSince(searchStart);
    const Clock::time_point checkStart = Clock::now();
    run.result = checkResult(*run.loaded, settings.solve, options);
    run.times.checking = secondsSince(checkStart);
    if (trace) run.trace = withProgress(trace->read(), watch);
    conclude(run, watch);
    run.isSolved = true;
    printSummary(log, run, target.terminal && terminalTakesColour(*target.terminal));
    if (run.ending.kind == Ending::Kind::infeasible && target.explains) explain(log, run);
    if (settings.output.printsSolution) writeSolutionOf(log, run);
    outputs.write(run);
}

}  // namespace norv
