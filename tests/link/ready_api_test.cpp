#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

#include "link/build_banner.hpp"
#include "link/entry_points.hpp"
#include "link/scripted_world.hpp"
#include "translate/nlocalsolver.hpp"

namespace vex::test {
namespace {

using testing::ElementsAreArray;
using Lines = std::vector<std::string>;

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

char objects[2];
const ModelHandle model = reinterpret_cast<ModelHandle>(&objects[0]);
const OptionHandle hostOptions = reinterpret_cast<OptionHandle>(&objects[1]);

// What a preparation does, step by step.
const Lines banner = {"nevLogStat: ", "nevLogStat: audit line", "nevStatAudit: audit line",
                      "huxXFree"};
const Lines info = {"nevLogStat: ", "nevLogStat: engine"};
const Lines definition = {"nevGetStrOpt: NameSysDir", "optReadDefinition: /sys/optlocalsolver.def",
                          "nevStatCon:", "nevStatCoff:", "optClearMessages:"};
const Lines endOfLine = {"optEOLOnlySet: 1"};
const Lines newSolver = {"hook", "ls_create_solver", "ls_set_verbosity: 0"};
const Lines dropped = {"ls_delete_solver"};
const Lines replacedSolver = dropped + newSolver;
const Lines setup = {"setupModel"};
const Lines prepared = banner + info + definition + endOfLine;
const Lines capability = {"nmoModelStatSet: 14", "nmoSolveStatSet: 6"};
const Lines failure = {"nmoModelStatSet: 13", "nmoSolveStatSet: 10"};

class ReadyAPITest : public testing::Test {
protected:
    ReadyAPITest() {
        world = {};
        vexCreate(&handle, nullptr, 0);
    }
    ~ReadyAPITest() override { vexFree(&handle); }

    std::int32_t ready(OptionHandle options = hostOptions) {
        world.calls.clear();
        return vexReadyAPI(handle, model, options);
    }
    NorvLocalSolver& link() { return *static_cast<NorvLocalSolver*>(handle); }

    void* handle = nullptr;
};

// These two come first: bindings stay for the life of the process.
TEST_F(ReadyAPITest, WithoutHostLibraryNothingIsWritten) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(ready(), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(world.calls, ElementsAreArray(Lines{}));
}

TEST_F(ReadyAPITest, WithoutOptionLibraryTheReasonIsLogged) {
    bindHub();
    EXPECT_EQ(ready(), 1);
    ASSERT_EQ(world.calls.size(), (banner + info).size() + 2);
    EXPECT_EQ(world.calls[6], "nevLogStatPChar: *** Can't load option library: ");
    EXPECT_THAT(world.calls[7],
                testing::StartsWith("nevLogStat: Could not load shared library prmdclib64"));
}

TEST_F(ReadyAPITest, EachOutcomeHasItsCallsAndResult) {
    struct Case {
        const char* what;
        std::function<void()> script;
        std::int32_t result;
        Lines calls;
    };
    const auto setupThrows = [](auto error) {
        return [error] { world.setups = {[error] { throw error; }}; };
    };
    using localsolver::LSException;
    const auto deep = [] { throw RecursionDepthLimitReached(); };
    const Lines tooDeep = {"nevLogStatPChar: Recursion depth limit reached during model setup.\n"};
    const Lines disabling = {"nevLogStatPChar: Disabling aggregation of variables.\n",
                             "optSetIntStr: aggrvars, 0"};
    const Lines consider = {"nevLogStatPChar: Consider not using option 'defvar'.\n"};
    const Case cases[] = {
        {"ready", [] {}, 0, prepared + newSolver + setup},
        {"no audit object", [] { world.auditObject = false; }, 1, {}},
        {"definition file refused: all its messages",
         [] {
             world.numbers["optReadDefinition"] = 7;
             world.messages["optReadDefinition"] = {{8, "eight"}, {2, "two"}};
         },
         1,
         banner + info +
             Lines{"nevGetStrOpt: NameSysDir", "optReadDefinition: /sys/optlocalsolver.def",
                   "nevStatCon:", "nevLogStat: eight", "nevLogStat: two",
                   "nevStatCoff:", "optClearMessages:"}},
        {"system directory as long as the scratch text",
         [] { world.texts["nevGetStrOpt"] = std::string(1023, 'd'); }, 0,
         banner + info + Lines{definition[0]} +
             Lines{"optReadDefinition: " + std::string(1023, 'd') + "optlocalsolver.def"} +
             Lines(definition.begin() + 2, definition.end()) + endOfLine + newSolver + setup},
        {"option file: types up to 7, and 9; its result does not matter",
         [] {
             world.numbers["nmoOptFile"] = 1;
             for (const std::int32_t type : {-1, 0, 7, 8, 9, 10}) {
                 world.messages["optReadParameterFile"].emplace_back(
                     type, "type " + std::to_string(type));
             }
         },
         0,
         prepared +
             Lines{"optEchoSet: 1", "optReadParameterFile: localsolver.opt",
                   "nevStatCon:", "nevLogStat: type -1", "nevLogStat: type 0", "nevLogStat: type 7",
                   "nevLogStat: type 9", "nevStatCoff:", "optClearMessages:", "optEchoSet: 0"} +
             newSolver + setup},
        {"the link's own error",
         setupThrows(LSException(LS_ERROR_CALLER, "f", 1, "g", "Unsupported equation type.")), 0,
         prepared + newSolver + setup +
             Lines{"nevLogStatPChar: Unsupported equation type.", "nevLogStatPChar: \n"} +
             capability},
        {"an error of the optimizer", setupThrows(LSException(LS_ERROR_LIMIT, "f", 1, "g", "full")),
         1,
         prepared + newSolver + setup + Lines{"nevLogStatPChar: full", "nevLogStatPChar: \n"} +
             failure + dropped},
        {"an error while the optimizer is created", [] { world.creationError = "no memory"; }, 1,
         prepared +
             Lines{"hook", "ls_create_solver", "nevLogStatPChar: no memory",
                   "nevLogStatPChar: \n"} +
             failure},
        {"too deep without aggregation", [=] { world.setups = {deep}; }, 0,
         prepared + newSolver + setup + tooDeep + consider + capability},
        {"too deep with aggregation: once more without",
         [=] {
             world.setups = {deep};
             world.numbers["optGetIntStr"] = 1;
         },
         0, prepared + newSolver + setup + tooDeep + disabling + replacedSolver + setup},
        {"too deep both times",
         [=] {
             world.setups = {deep, deep};
             world.numbers["optGetIntStr"] = 1;
         },
         0,
         prepared + newSolver + setup + tooDeep + disabling + replacedSolver + setup + consider +
             capability},
        {"an error of the second setup",
         [=] {
             world.setups = {deep,
                             [] { throw LSException(LS_ERROR_CALLER, "f", 1, "g", "again"); }};
             world.numbers["optGetIntStr"] = 1;
         },
         0,
         prepared + newSolver + setup + tooDeep + disabling + replacedSolver + setup +
             Lines{"nevLogStatPChar: again", "nevLogStatPChar: \n"} + capability},
        {"another exception", setupThrows(std::runtime_error("boom")), 1,
         prepared + newSolver + setup + dropped},
    };
    bindHub();
    bindOptions();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        vexFree(&handle);
        world = {};
        vexCreate(&handle, nullptr, 0);
        c.script();
        EXPECT_EQ(ready(), c.result);
        EXPECT_THAT(world.calls, ElementsAreArray(c.calls));
    }
}

TEST_F(ReadyAPITest, GuardsReportForeignExceptionsOnStandardError) {
    bindHub();
    bindOptions();
    world.setups = {[] { throw std::runtime_error("boom"); }, [] { throw 1; }};
    testing::internal::CaptureStderr();
    EXPECT_EQ(ready(), 1);
    EXPECT_EQ(ready(), 1);
    world.drive = []() -> std::int32_t { throw std::runtime_error("bang"); };
    EXPECT_EQ(vexCallSolver(handle), 1);
    world.drive = []() -> std::int32_t { throw "bang"; };
    EXPECT_EQ(c__vexcallsolver(handle), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception from readyAPI: boom\nException from readyAPI: Unknown error\n"
              "Exception from CallSolver: bang\nException from CallSolver: Unknown error\n");
    world.drive = [] { return 3; };
    EXPECT_EQ(vexCallSolver(handle), 3);
}

TEST_F(ReadyAPITest, SecondCallKeepsTheOptionsAndReplacesTheSolver) {
    bindHub();
    bindOptions();
    EXPECT_EQ(ready(), 0);
    EXPECT_EQ(ready(), 0);
    EXPECT_THAT(world.calls, ElementsAreArray(banner + info + endOfLine + replacedSolver + setup));

    world.creationError = "no memory";
    EXPECT_EQ(ready(), 1);
    EXPECT_EQ(link().solver, nullptr) << "the deleted solver is out of reach";

    world.creationError.clear();
    EXPECT_EQ(ready(), 0);
    world.auditObject = false;
    EXPECT_EQ(ready(), 1);
    EXPECT_EQ(link().solver, nullptr) << "a model of an earlier call is not solved";
}

TEST_F(ReadyAPITest, OptionObjectIsFreedOnlyByItsMaker) {
    bindHub();
    bindOptions();
    EXPECT_EQ(ready(hostOptions), 0);
    EXPECT_EQ(link().opt, hostOptions);
    EXPECT_FALSE(link().ownsOptions);
    world.calls.clear();
    vexFree(&handle);
    EXPECT_THAT(world.calls, ElementsAreArray(Lines{"ls_delete_solver"}));

    vexCreate(&handle, nullptr, 0);
    world.optionObject = false;
    EXPECT_EQ(ready(nullptr), 1);
    EXPECT_THAT(world.calls,
                ElementsAreArray(banner + info +
                                 Lines{"XCreate", "nevLogStatPChar: *** ",
                                       "nevLogStatPChar: Error while creating object"}));
    world.optionObject = true;
    EXPECT_EQ(c__vexreadyapi(handle, model, nullptr), 0);
    EXPECT_TRUE(link().ownsOptions);
    world.calls.clear();
    vexFree(&handle);
    EXPECT_THAT(world.calls, ElementsAreArray(Lines{"ls_delete_solver", "XFree"}));
}

TEST(Banner, NamesLinkVersionRevisionDateAndPlatform) {
    EXPECT_THAT(buildBanner, testing::StartsWith("LocalSolver link " VEXCC_VERSION " "));
    EXPECT_THAT(buildBanner, testing::HasSubstr(" Released "));
    EXPECT_THAT(buildBanner, testing::EndsWith(" " VEXCC_PLATFORM));
}

}  // namespace
}  // namespace vex::test
