#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "norvsolve/run_program.hpp"
#include "readers/mps_reader.hpp"

/// Our reading of whole files against that of CoinUtils (coin_reader.cpp tells its limits: sense
/// and quadratic sections are not compared, semi-continuous columns are compared as plain ones).
namespace norv::test {
namespace {

/// The other reader's report in its own form, from our instance: the two texts must be the same.
/// CoinUtils leaves out explicit zeros, all free rows after the objective, and blanks in names.
std::vector<std::string> reportOf(const MpsInstance& instance) {
    std::vector<std::string> lines;
    const auto write = [&](const char* format, auto... values) {
        char line[600];
        std::snprintf(line, sizeof line, format, values...);
        lines.emplace_back(line);
    };
    const auto named = [](std::string_view name) {
        std::string text(name);
        std::erase(text, ' ');
        return text;
    };
    write("objective\t%s\t%.14g",
          named(instance.rows[static_cast<std::size_t>(instance.objective)].name).c_str(),
          instance.objectiveConstant);
    std::vector<int> rowIndices(instance.rows.size(), -1);
    int nbRows = 0;
    for (std::size_t i = 0; i < instance.rows.size(); ++i) {
        if (instance.rows[i].type == MpsRowType::free) continue;
        rowIndices[i] = nbRows++;
        const Sides sides = sidesOf(instance.rows[i]);
        write("row\t%s\t%.14g\t%.14g", named(instance.rows[i].name).c_str(), sides.lower,
              sides.upper);
    }
    std::vector<std::string> entries;
    for (std::size_t j = 0; j < instance.columns.size(); ++j) {
        const MpsColumn& column = instance.columns[j];
        double cost = 0.0;
        for (std::size_t k = instance.columnStarts[j]; k < instance.columnStarts[j + 1]; ++k) {
            const MpsEntry& entry = instance.entries[k];
            if (entry.row == instance.objective) cost = entry.value;
            const int row = rowIndices[static_cast<std::size_t>(entry.row)];
            if (row < 0 || entry.value == 0.0) continue;
            char line[100];
            std::snprintf(line, sizeof line, "entry\t%d\t%d\t%.14g", row, static_cast<int>(j),
                          entry.value);
            entries.emplace_back(line);
        }
        const bool isInteger =
            column.kind == MpsColumnKind::integer || column.kind == MpsColumnKind::binary;
        write("column\t%s\t%.14g\t%.14g\t%d\t%.14g", named(column.name).c_str(), column.lower,
              column.upper, isInteger ? 1 : 0, cost);
    }
    for (const MpsSet& set : instance.sets) {
        lines.push_back("set\t" + std::to_string(set.type));
        for (const MpsSetMember& member : set.members)
            lines.back().append("\t").append(
                instance.columns[static_cast<std::size_t>(member.column)].name);
    }
    lines.insert(lines.end(), entries.begin(), entries.end());
    return lines;
}

void compareReadings(const std::filesystem::path& path) {
    SCOPED_TRACE(path.string());
    const ProgramRun other = runProgram({COIN_READER, "print", path.string()});
    ASSERT_EQ(other.exitCode, 0) << other.errors;
    std::vector<std::string> expected;
    std::istringstream report(other.output);
    for (std::string line; std::getline(report, line);) {
        // The library prints a remark of its own about OBJSENSE.
        if (line.find("Coin ignores") == std::string::npos) expected.push_back(line);
    }
    const InputText text = InputText::fromFile(path.string());
    std::vector<std::string> actual = reportOf(readMps(text));
    std::sort(expected.begin(), expected.end());
    std::sort(actual.begin(), actual.end());
    ASSERT_EQ(actual.size(), expected.size());
    const auto [ours, theirs] = std::mismatch(actual.begin(), actual.end(), expected.begin());
    if (ours != actual.end()) ADD_FAILURE() << "read " << *ours << ", expected " << *theirs;
}

int compareFolder(const std::string& folder) {
    int nbFiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".mps") continue;
        compareReadings(entry.path());
        ++nbFiles;
    }
    return nbFiles;
}

TEST(Reading, agreesWithAnotherReaderOnTheExamples) {
    EXPECT_EQ(compareFolder(std::string(EXAMPLES_FOLDER)), 6);
}

TEST(Reading, agreesWithAnotherReaderOnIntegerBoundsAndSets) {
    std::string text = "NAME t\nROWS\n N cost\n L c1\nCOLUMNS\n M1 'MARKER' 'INTORG'\n";
    for (const char* column : {"a", "b", "c", "d", "e", "f", "g"})
        text.append(" ").append(column).append(" cost 1 c1 1\n");
    text += " M2 'MARKER' 'INTEND'\n y cost 1 c1 1\nRHS\n r c1 9\nBOUNDS\n";
    text += " LO BND       b                   -1\n UP BND       c                    7\n";
    text += " MI BND       d\n PL BND       e\n FR BND       f\n BV BND       g\n";
    text += "SOS\n S1 SOS one 1\n y 1\n a 2\n S2 SOS two 2\n y 1\n c 2.5\n b 3\nENDATA\n";
    const std::string path = scratchFile("open.mps");
    std::ofstream(path) << text;
    compareReadings(path);
}

TEST(Reading, agreesWithAnotherReaderOnThePublicInstances) {
    const std::string folder = std::string(INSTANCES_FOLDER) + "/mps";
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no public instances here";
    EXPECT_GT(compareFolder(folder), 0);
}

}  // namespace
}  // namespace norv::test
