#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>

#include "host/codes.hpp"
#include "host/folder_loading.hpp"
#include "host/host_interfaces.hpp"
#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "norv/model_builder.hpp"

// The link as the host meets it: a shared library, loaded by its file name.

namespace vex {
namespace {

using testing::HasSubstr;

LibraryHandle loadedLink() {
    std::string reason;
    return platformLoading().open(LINK_FILE, reason);
}

template <class Function>
Function* entryPoint(LibraryHandle link, const std::string& name) {
    return reinterpret_cast<Function*>(platformLoading().find(link, name));
}

/// max x + 2 y, x + y <= 4, both integers of 0 to 3, from vexInitialize to vexFinalize.
/// @return the log, then the model status and the levels.
std::string solveSmallModel(const std::string& options, int nbThreads) {
    const LibraryHandle library = loadedLink();
    norv::Environment environment;
    std::string log;
    environment.setLogSink([&log](std::string_view text) { log += text; });
    environment.setThreads(nbThreads);
    environment.setSystemDirectory(SYSTEM_DIRECTORY);
    environment.setIterationLimit(2000);
    norv::ModelBuilder builder;
    builder.addRow(equation_type::less, 4);
    for (const std::int32_t j : {0, 1}) {
        builder.addVariable(variable_type::integer, 0, 3);
        builder.addCoefficient(/*row=*/0, j, 1);
        builder.addCoefficient(norv::objectiveRow, j, j + 1.0);
    }
    builder.setSense(objective_sense::maximise);
    norv::Model model = builder.finish(environment);
    const std::string optionFile = testing::TempDir() + "shared_library_test.opt";
    std::ofstream(optionFile) << options;
    model.setOptionFile(optionFile);
    void* link = nullptr;
    entryPoint<void()>(library, "vexInitialize")();
    entryPoint<std::int32_t(void**)>(library, "xcreate")(&link);
    entryPoint<std::int32_t(void*, ModelHandle, OptionHandle)>(library, "vexReadyAPI")(
        link, model.handle(), nullptr);
    entryPoint<std::int32_t(void*)>(library, "vexCallSolver")(link);
    entryPoint<void(void**)>(library, "xfree")(&link);
    entryPoint<void()>(library, "vexFinalize")();
    return log + std::to_string(model.modelStatus()) + ": " + std::to_string(model.levels()[0]) +
           ", " + std::to_string(model.levels()[1]);
}

TEST(SharedLibrary, SolvesWithTheHostsLibrariesAndTracesInThePlatformsLineEnds) {
    const std::string trace = testing::TempDir() + "shared_library_test.trace";
    const std::string log = solveSmallModel("solvetrace " + trace + "\n", 1);
    EXPECT_THAT(log, testing::EndsWith("\n1: 1.000000, 3.000000"));
    EXPECT_THAT(log, testing::ContainsRegex("LocalSolver link " VEXCC_VERSION
                                            " .+ Released 20..-..-.. " VEXCC_PLATFORM " "));
    std::ifstream file(trace, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const std::string end = librarySuffix == std::string(".dll") ? "\r\n" : "\n";
    EXPECT_THAT(bytes, testing::StartsWith("* solvetrace file " + trace +
                                           ": ID = LocalSolver.1 Instance = " + end + "* fields"));
    EXPECT_THAT(bytes, HasSubstr(", 7, na" + end + "* solvetrace file closed" + end));
}

TEST(SharedLibrary, RefusalOfTheOptimizerCrossesBothLibraries) {
    const std::string log = solveSmallModel("", 5000);
    EXPECT_THAT(log, HasSubstr("5000 is out of range"));
    EXPECT_THAT(log, HasSubstr("\n13: 0"));
}

/// The option library's "XCreate" is looked up in lower case first, and the link exports `xcreate`.
void expectEachItsOwnCreate(bool linkFirst) {
    if (linkFirst) loadedLink();
    const LibraryLoading loading = test::loadingFrom(SMALL_HOST);
    Binding binding(optInterface);
    char message[256];
    void* optionObject = nullptr;
    void* linkObject = nullptr;
    ASSERT_TRUE(binding.create(&optionObject, {message, sizeof message}, loading)) << message;
    std::string reason;
    const LibraryHandle options = loading.open("prmdclib64" + std::string(librarySuffix), reason);
    auto* const nbObjects = entryPoint<std::int32_t()>(options, "smallHostObjects");
    EXPECT_EQ(nbObjects(), 1);
    entryPoint<std::int32_t(void**)>(loadedLink(), "xcreate")(&linkObject);
    EXPECT_NE(linkObject, nullptr);
    EXPECT_EQ(nbObjects(), 1);
    entryPoint<void(void**)>(loadedLink(), "xfree")(&linkObject);
    EXPECT_EQ(nbObjects(), 1);
    binding.destroy(&optionObject);
    EXPECT_EQ(nbObjects(), 0);
    EXPECT_TRUE(linkObject == nullptr && optionObject == nullptr);
}

// Libraries are never unloaded, so each order has a process of its own.
TEST(SharedLibraryDeathTest, OptionLibraryAndLinkCallTheirOwnCreateInBothOrders) {
    for (const bool linkFirst : {true, false}) {
        EXPECT_EXIT((expectEachItsOwnCreate(linkFirst), std::exit(HasFailure() ? 1 : 0)),
                    testing::ExitedWithCode(0), "");
    }
}

}  // namespace
}  // namespace vex
