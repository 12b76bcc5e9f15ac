#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "host/codes.hpp"
#include "host/folder_loading.hpp"
#include "host/host_interfaces.hpp"
#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "norv/model_builder.hpp"

// The link as the host meets it: a shared library, loaded by its file name.

namespace vex {
namespace {

LibraryHandle loadedLink() {
    std::string reason;
    const LibraryHandle link = platformLoading().open(LINK_FILE, reason);
    if (link == nullptr) throw std::runtime_error(reason);
    return link;
}

template <class Function>
Function* entryPoint(const std::string& name) {
    return reinterpret_cast<Function*>(platformLoading().find(loadedLink(), name));
}

TEST(SharedLibrary, OffersEachEntryPointUnderItsPlainName) {
    for (const char* name : {"vexCreate",
                             "vexcreate",
                             "xcreate",
                             "vexxcreate",
                             "vexFree",
                             "vexfree",
                             "xfree",
                             "vexxfree",
                             "vexReadyAPI",
                             "c__vexreadyapi",
                             "vexCallSolver",
                             "c__vexcallsolver",
                             "vexModifyProblem",
                             "vexInitialize",
                             "c__vexinitialize",
                             "vexHaveModifyProblem",
                             "vexFinalize",
                             "c__vexfinalize",
                             "c__xapiversion",
                             "d__xapiversion",
                             "d__vexxapiversion",
                             "d__vexxcheck",
                             "c__xcheck",
                             "d__xcheck"}) {
        EXPECT_NE(entryPoint<void()>(name), nullptr) << name;
    }
    EXPECT_EQ(entryPoint<void()>("ls_info"), nullptr) << "that is the optimizer's, not the link's";
}

/// max x + 2 y, x + y <= 4, both integers of 0 to 3: x = 1, y = 3.
norv::Model smallModel(const norv::Environment& environment) {
    norv::ModelBuilder builder;
    const std::int32_t row = builder.addRow(equation_type::less, 4, "limit");
    for (const double gain : {1.0, 2.0}) {
        const std::int32_t j =
            builder.addVariable(variable_type::integer, 0, 3, 0, gain == 1.0 ? "x" : "y");
        builder.addCoefficient(row, j, 1);
        builder.addCoefficient(norv::objectiveRow, j, gain);
    }
    builder.setSense(objective_sense::maximise);
    return builder.finish(environment);
}

/// One instance from vexInitialize to vexFinalize. @return its levels.
std::vector<double> solveSmallModel(norv::Environment& environment, const std::string& options,
                                    std::int32_t expectedStatus) {
    environment.setSystemDirectory(SYSTEM_DIRECTORY);
    environment.setIterationLimit(2000);
    norv::Model model = smallModel(environment);
    const std::string optionFile = testing::TempDir() + "shared_library_test.opt";
    std::ofstream(optionFile) << options;
    model.setOptionFile(optionFile);
    void* link = nullptr;
    entryPoint<void()>("vexInitialize")();
    entryPoint<std::int32_t(void**)>("xcreate")(&link);
    EXPECT_EQ((entryPoint<std::int32_t(void*, ModelHandle, OptionHandle)>("vexReadyAPI")(
                  link, model.handle(), nullptr)),
              0);
    entryPoint<std::int32_t(void*)>("vexCallSolver")(link);
    entryPoint<void(void**)>("xfree")(&link);
    entryPoint<void()>("vexFinalize")();
    EXPECT_EQ(model.modelStatus(), expectedStatus);
    return {model.levels().begin(), model.levels().end()};
}

TEST(SharedLibrary, SolvesWithTheHostsLibrariesAndTracesInThePlatformsLineEnds) {
    norv::Environment environment;
    const std::string trace = testing::TempDir() + "shared_library_test.trace";
    EXPECT_THAT(solveSmallModel(environment, "solvetrace " + trace + "\n", model_status::optimal),
                testing::ElementsAre(1, 3));
    std::ifstream file(trace, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const std::string end = librarySuffix == std::string(".dll") ? "\r\n" : "\n";
    const std::string head =
        "* solvetrace file " + trace + ": ID = LocalSolver.1 Instance = " + end +
        "* fields are lineNum, seriesID, node, seconds, bestFound, bestBound" + end;
    ASSERT_THAT(bytes, testing::StartsWith(head));
    // Seconds, and what is found when the search starts, no test can foresee.
    std::vector<std::string> records;
    for (std::size_t at = head.size(); at < bytes.size(); at += records.back().size()) {
        records.push_back(bytes.substr(at, bytes.find('\n', at) + 1 - at));
    }
    using testing::AllOf, testing::EndsWith, testing::StartsWith;
    EXPECT_THAT(records,
                testing::ElementsAre(AllOf(StartsWith("1, S, 0, "), EndsWith(", na" + end)),
                                     AllOf(StartsWith("2, E, 0, "), EndsWith(", 7, na" + end)),
                                     "* solvetrace file closed" + end));
}

TEST(SharedLibrary, RefusalOfTheOptimizerCrossesBothLibraries) {
    norv::Environment environment;
    std::string log;
    environment.setLogSink([&log](std::string_view text) { log += text; });
    environment.setThreads(5000);
    solveSmallModel(environment, "", model_status::errorNoSolution);
    EXPECT_THAT(log, testing::HasSubstr("5000 is out of range"));
}

/// The option library's "XCreate" is looked up in lower case first, and the link exports `xcreate`.
void expectEachItsOwnCreate(bool linkFirst) {
    std::string reason;
    LibraryHandle link = nullptr;
    const auto loadLink = [&] { link = platformLoading().open(LINK_FILE, reason); };
    if (linkFirst) loadLink();

    const LibraryLoading loading = test::loadingFrom(SMALL_HOSTS "/sound");
    Binding binding(optInterface);
    char message[256];
    ASSERT_TRUE(binding.ensureLoaded({message, sizeof message}, loading)) << message;
    if (!linkFirst) loadLink();
    ASSERT_NE(link, nullptr) << reason;

    const LibraryHandle options = loading.open("prmdclib64" + std::string(librarySuffix), reason);
    auto* const nbObjects =
        reinterpret_cast<std::int32_t (*)()>(platformLoading().find(options, "smallHostObjects"));
    auto* const createLink =
        reinterpret_cast<std::int32_t (*)(void**)>(platformLoading().find(link, "xcreate"));
    auto* const freeLink =
        reinterpret_cast<void (*)(void**)>(platformLoading().find(link, "xfree"));
    ASSERT_TRUE(nbObjects != nullptr && createLink != nullptr && freeLink != nullptr);

    void* optionObject = nullptr;
    void* linkObject = nullptr;
    ASSERT_TRUE(binding.create(&optionObject, {message, sizeof message}, loading));
    EXPECT_EQ(nbObjects(), 1);
    EXPECT_EQ(createLink(&linkObject), 1);
    EXPECT_EQ(nbObjects(), 1);
    EXPECT_NE(linkObject, nullptr);
    freeLink(&linkObject);
    EXPECT_EQ(nbObjects(), 1);
    binding.destroy(&optionObject);
    EXPECT_EQ(nbObjects(), 0);
    EXPECT_EQ(linkObject, nullptr);
    EXPECT_EQ(optionObject, nullptr);
}

// Libraries are never unloaded, so each order has a process of its own.
TEST(SharedLibraryDeathTest, OptionLibraryAndLinkCallTheirOwnCreateInBothOrders) {
    for (const bool linkFirst : {true, false}) {
        EXPECT_EXIT(
            {
                expectEachItsOwnCreate(linkFirst);
                std::exit(testing::Test::HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "")
            << "link first: " << linkFirst;
    }
}

}  // namespace
}  // namespace vex
