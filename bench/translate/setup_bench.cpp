#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "bench_instance.hpp"
#include "host/libraries.hpp"
#include "norv/options.hpp"
#include "tape.hpp"
#include "tape_replay.hpp"
#include "translate/nlocalsolver.hpp"

/// Model setup against its floor: the very same calls of the optimizer from a flat tape.
///
/// Both run in this process, on the same engine, each on a fresh solver whose creation and deletion
/// are not measured. Closing the model is the engine's work alone and can outweigh all else, so it
/// is measured by itself as well and a second ratio leaves it out of both sides.
///
/// "--once setup|floor|building linear|quadratic|instructions TERMS" runs one of them once, for a
/// profiler that counts inside `measuredSetup`, `measuredBuilding` and `measuredClosing`.

namespace {

using bench::Terms;

struct Instance {
    Instance(Terms terms, std::int32_t nbTerms, bool withNames)
        : model(bench::makeInstance(terms, nbTerms, withNames, environment)) {}

    norv::Environment environment;
    norv::Options options;
    norv::Model model;
    bench::Tape tape;
};

bench::WriteTape* tapeWriter() {
    void* module = dlopen(VEXCC_TAPE_WRITER, RTLD_NOW | RTLD_LOCAL);
    void* function = module != nullptr ? dlsym(module, "writeTape") : nullptr;
    if (function == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<bench::WriteTape*>(function);
}

void bindHost() {
    char message[256];
    if (vex::nmoGetReady(message, sizeof message) == 0 ||
        vex::nevGetReady(message, sizeof message) == 0 ||
        vex::optGetReady(message, sizeof message) == 0)
        throw std::runtime_error(message);
}

/// Made on first use: instances are large and most runs need few of them.
Instance& instanceOf(Terms terms, std::int32_t nbTerms, bool withNames) {
    static std::map<std::tuple<Terms, std::int32_t, bool>, std::unique_ptr<Instance>> instances;
    auto& instance = instances[{terms, nbTerms, withNames}];
    if (instance == nullptr) {
        bindHost();
        instance = std::make_unique<Instance>(terms, nbTerms, withNames);
        if (!instance->options.readDefinition(VEXCC_OPTION_DEFINITION))
            throw std::runtime_error(instance->options.messages().front().text);
        tapeWriter()(instance->model.handle(), instance->environment.handle(),
                     instance->options.handle(), &instance->tape);
    }
    return *instance;
}

__attribute__((noinline)) void measuredSetup(vex::NorvLocalSolver& link) {
    link.setupModel();
}

__attribute__((noinline)) void measuredBuilding(const bench::Tape& tape, ls_solver* solver) {
    bench::replayBuilding(tape, solver);
}

__attribute__((noinline)) void measuredClosing(ls_solver* solver) {
    ls_close(solver);
}

/// Processor time, which a busy machine stretches less than the time on the wall.
double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

double secondsOfSetup(const Instance& instance) {
    vex::NorvLocalSolver link;
    link.nmo = instance.model.handle();
    link.nev = instance.environment.handle();
    link.opt = instance.options.handle();
    link.solver = std::make_unique<localsolver::LocalSolver>();
    const double start = processorSeconds();
    measuredSetup(link);
    return processorSeconds() - start;
}

struct Floor {
    double building;
    double closing;
};

Floor secondsOfFloor(const Instance& instance) {
    const localsolver::LocalSolver solver;
    const double start = processorSeconds();
    measuredBuilding(instance.tape, solver.getHandle());
    const double built = processorSeconds();
    measuredClosing(solver.getHandle());
    return {built - start, processorSeconds() - built};
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The two take turns, so that what else the machine does hits both alike. The benchmark's time is
/// setup's; the counters tell medians in nanoseconds per term, and ratios.
void setupAgainstFloor(benchmark::State& state, Terms terms, bool withNames) {
    const auto nbTerms = static_cast<std::int32_t>(state.range(0));
    const Instance& instance = instanceOf(terms, nbTerms, withNames);
    std::vector<double> setups;
    std::vector<double> buildings;
    std::vector<double> closings;
    while (state.KeepRunning()) {
        const Floor floor = secondsOfFloor(instance);
        buildings.push_back(floor.building);
        closings.push_back(floor.closing);
        setups.push_back(secondsOfSetup(instance));
        state.SetIterationTime(setups.back());
    }
    const double perTerm = 1e9 / nbTerms;
    const double setup = median(setups) * perTerm;
    const double building = median(buildings) * perTerm;
    const double closing = median(closings) * perTerm;
    state.counters["setup_ns"] = setup;
    state.counters["building_ns"] = building;
    state.counters["closing_ns"] = closing;
    state.counters["ratio"] = setup / (building + closing);
    state.counters["ratio_building"] = (setup - closing) / building;
}

void registerSizes(benchmark::internal::Benchmark* benchmark) {
    for (const int nbTerms : {1000, 10000, 100000, 1000000}) benchmark->Arg(nbTerms);
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(setupAgainstFloor, linear, Terms::linear, false)->Apply(registerSizes);
BENCHMARK_CAPTURE(setupAgainstFloor, quadratic, Terms::quadratic, false)->Apply(registerSizes);
BENCHMARK_CAPTURE(setupAgainstFloor, instructions, Terms::instructions, false)
    ->Apply(registerSizes);
BENCHMARK_CAPTURE(setupAgainstFloor, instructionsWithNames, Terms::instructions, true)
    ->Apply(registerSizes);
BENCHMARK_CAPTURE(setupAgainstFloor, linearWithNames, Terms::linear, true)->Apply(registerSizes);

int runOnce(std::string_view what, std::string_view kind, const std::string& nbTerms) {
    const Terms terms = kind == "linear"      ? Terms::linear
                        : kind == "quadratic" ? Terms::quadratic
                                              : Terms::instructions;
    const Instance& instance = instanceOf(terms, std::stoi(nbTerms), /*withNames=*/false);
    if (what == "setup")
        secondsOfSetup(instance);
    else if (what == "floor")
        secondsOfFloor(instance);
    else
        measuredBuilding(instance.tape, localsolver::LocalSolver().getHandle());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 5 && std::string_view(argv[1]) == "--once")
        return runOnce(argv[2], argv[3], argv[4]);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
