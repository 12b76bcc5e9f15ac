#include "double/whole_call.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <sstream>

#include "double/call_log.hpp"
#include "double/entry_call.hpp"
#include "double/exchange.hpp"
#include "double/host_double.hpp"
#include "double/instance_text.hpp"
#include "double/model_text.hpp"
#include "double/optimizer_double.hpp"
#include "host/host_interfaces.hpp"
#include "link/entry_points.hpp"
#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "norv/options.hpp"
#include "translate/nlocalsolver.hpp"

namespace doubles {

namespace {

using Words = std::vector<std::string>;

/// A folder to work in, gone at the end. Other test programs run at the same time.
struct ScratchFolder {
    ScratchFolder() {
        std::filesystem::create_directory(path);
        std::filesystem::current_path(path);
    }
    ~ScratchFolder() {
        std::filesystem::current_path(before, ignored);
        std::filesystem::remove_all(path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path before = std::filesystem::current_path();
    const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                       ("vexcc_case_" + std::to_string(std::random_device()()));
    std::error_code ignored;
};

/// What the lines ask for.
struct Case {
    std::string instance;
    std::string kind = "setup";
    Words steps, rules, options, levels;
    std::vector<Words> searches = {{"1"}};
    bool ownOptions = false;
    bool hasAnswers = false;

    void read(const std::string& statement);
};

void Case::read(const std::string& statement) {
    const std::string first = statement.substr(0, statement.find(' '));
    const std::string rest =
        first.size() < statement.size() ? statement.substr(first.size() + 1) : "";
    const Words words = split(rest, " ");
    if (first == "setup" || first == "solve" || first == "whole") {
        kind = first;
    } else if (first == "do") {
        steps.insert(steps.end(), words.begin(), words.end());
    } else if (first == "show" || first == "hide") {
        for (const std::string& word : words) rules.push_back((first == "hide" ? "-" : "") + word);
    } else if (first == "level") {
        levels = words;
    } else if (first == "search") {
        searches.clear();
        for (const std::string& script : split(rest, "|")) searches.push_back(split(script, " "));
    } else if (first == "option") {
        for (const std::string& option : split(rest, " | ")) options.push_back(option);
    } else if (first == "own") {
        ownOptions = true;
    } else if (first == "answer") {
        hasAnswers = true;
        for (const std::string& answer : split(rest, " | ")) {
            const std::size_t equals = answer.find(" = ");
            exchange().answer(answer.substr(0, equals), answer.substr(equals + 3));
        }
    } else {
        instance += statement + " ;";
    }
}

Case readCase(const std::vector<std::string>& lines) {
    Case c;
    for (const std::string& line : lines) {
        for (const std::string& statement : statementsOf(line)) c.read(statement);
    }
    if (!c.steps.empty()) return c;
    if (c.kind == "setup") c.steps = {"ready"};
    for (std::size_t k = 0; k < c.searches.size() && c.kind != "setup"; ++k)
        c.steps.insert(c.steps.end(), {"ready", "solve"});
    return c;
}

const std::map<std::string, const vex::HostInterface*> interfaces = {{"nmo", &vex::nmoInterface},
                                                                     {"nev", &vex::nevInterface},
                                                                     {"hux", &vex::huxInterface},
                                                                     {"opt", &vex::optInterface}};

/// What a fresh binding says where there is room for so much. The slots hold the double again
/// afterwards.
std::string bindAnew(const Words& step) {
    const vex::HostInterface& interface = *interfaces.at(step[1]);
    const std::size_t room = step.size() > 2 ? std::stoul(step[2]) : 1024;
    std::string message(1100, '#');
    vex::Binding binding(interface);
    vex::MessageText text(message.data(), static_cast<std::int32_t>(room));
    const int result = step[0] == "bind"
                           ? binding.ensureLoaded(text, hostLoading())
                           : static_cast<int>(binding.load("any.lib", text, hostLoading()));
    const bool isLoaded = binding.isLoaded();
    const Silence silence;
    char unused[1024];
    static_cast<void>(vex::Binding(interface).ensureLoaded({unused, sizeof unused}, hostLoading()));
    return std::to_string(result) + (isLoaded ? ", loaded, " : ", ") + quoted(message.c_str()) +
           (message.find_first_not_of('#', room) == message.npos ? "\n" : " AND MORE\n");
}

class Run {
public:
    explicit Run(const Case& c)
        : asked(c), model(readInstance(c.instance, environment)), log(c.kind, c.rules) {
        log.abbreviate(scratch.path.string(), "$tmp");
        log.abbreviate(std::string("64") + vex::librarySuffix, "64.lib");
        log.abbreviate(VEXCC_SYSTEM_DIRECTORY "/", "$system/");
        environment.setSystemDirectory(VEXCC_SYSTEM_DIRECTORY);
        setLevels();
        handles.model = model.handle();
        handles.options = asked.ownOptions ? nullptr : options.handle();
        if (!options.readDefinition(VEXCC_SYSTEM_DIRECTORY "/optlocalsolver.def"))
            throw std::invalid_argument(options.messages().front().text);
        if (!asked.options.empty()) writeOptionFile();
        setSearches(asked.searches);
    }
    ~Run() {
        exchange().stopListening();
        vexFree(&handles.link);
        setSearches({});
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    std::string text() {
        vexCreate(&handles.link, nullptr, 0);
        exchange().listen([this](const auto& name, const auto& arguments, const auto& result) {
            log.add(name, arguments, result);
            if (name == "ls_close") addModel();
        });
        for (const std::string& step : asked.steps) perform(step);
        exchange().stopListening();
        // Where the model was built from what the host says itself.
        if (asked.kind == "setup" && !asked.hasAnswers && link().solver != nullptr &&
            link().solver->getState() == LS_STATE_CLOSED)
            log.addLines(differencesByValue(link(), model));
        for (const char* file : {"dump", "trace"}) {
            if (std::filesystem::exists(scratch.path / file)) log.addFile(scratch.path / file);
        }
        return log.text();
    }

private:
    vex::NorvLocalSolver& link() { return *static_cast<vex::NorvLocalSolver*>(handles.link); }

    void addModel() {
        ls_solver* solver = link().solver->getHandle();
        const auto& rules = asked.rules;
        const bool inFull = std::find(rules.begin(), rules.end(), "-ls_close") == rules.end();
        log.addLines(modelText(solver, inFull));
    }

    void setLevels() {
        for (std::size_t k = 0; k + 1 < asked.levels.size(); k += 2) {
            std::int32_t j = 0;
            while (model.variableName(j) != asked.levels[k]) ++j;
            model.setLevel(j, numberOf(asked.levels[k + 1]));
        }
    }

    /// With a slash on every platform, as it is written down.
    void writeOptionFile() {
        const std::string path = scratch.path.string() + "/localsolver.opt";
        std::ofstream file(path);
        file << "solvetracetime 0\n";  // no case may depend on how long it takes
        for (const std::string& option : asked.options)
            file << replaced(option, "$tmp", scratch.path.string()) << "\n";
        model.setOptionFile(path, 2);
    }

    void perform(const std::string& step) {
        const bool isReady = step == "ready";
        if (isReady || step == "solve") {
            // The preparation of a solve is shown when it fails.
            log.begin(step, /*isShown=*/!isReady || asked.kind != "solve");
            const auto call = [&] {
                const Holding inside(isInLink, true);
                return isReady ? vexReadyAPI(handles.link, handles.model, handles.options)
                               : vexCallSolver(handles.link);
            };
            log.end(call());
        } else if (step == "throws") {
            log.begin(step, /*isShown=*/false);
            const std::string exception = setUpAlone();
            log.begin(step, /*isShown=*/true);
            log.addLines(exception);
        } else if (step.starts_with("load:") || step.starts_with("bind:")) {
            log.begin(step, /*isShown=*/true);
            log.addLines(bindAnew(split(step, ":")));
        } else if (step == "starve") {
            failingAllocation = 1;
        } else {
            log.addPiece(callEntryPoint(step, handles));
        }
    }

    /// The reason is in the log of the preparation.
    std::string setUpAlone() {
        link().resetTranslation();
        // Under the error hook that the preparation has set.
        link().solver =
            std::make_unique<localsolver::LocalSolver>(ls_create_solver(), /*isOwner=*/true);
        try {
            link().setupModel();
        } catch (const localsolver::LSException& error) {
            return "LSException " + std::to_string(error.getErrorCode()) + " of " +
                   error.getFileName() + ", " + error.getFunctionName() + "\n";
        }
        return "no exception\n";
    }

    const Case& asked;
    ScratchFolder scratch;
    norv::Environment environment;
    norv::Model model;
    norv::Options options;
    CallLog log;
    Handles handles;
};

}  // namespace

std::string runCase(const std::vector<std::string>& lines,
                    const std::function<void()>& beforehand) {
    bindHost();
    exchange().reset();
    const Case c = readCase(lines);
    Run run(c);
    beforehand();
    return run.text();
}

}  // namespace doubles
