/// Values of .nl models: the host's evaluation against that of the AMPL solver library, which runs
/// in a process of its own.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "hostapi/codes.hpp"
#include "norv/environment.hpp"
#include "norv/readers/nl_writer.hpp"
#include "norvsolve/run_program.hpp"
#include "readers/nl_model.hpp"
#include "readers/nl_reader.hpp"

namespace norv::test {
namespace {

using Point = std::vector<double>;

/// What the witness says of a file.
struct Witness {
    int nbVariables = 0, nbRows = 0, nbLogical = 0, nbObjectives = 0, maximise = 0;
    std::vector<std::array<double, 4>> variables;  ///< lower, upper, start, is discrete
    std::vector<std::array<double, 2>> rows;       ///< lower, upper
    std::vector<std::string> sets;                 ///< type and members, as text
    std::vector<std::vector<std::string>> values;  ///< by point
};

Witness ask(const std::string& path, const std::vector<Point>& points) {
    const std::string input = scratchFile("points.txt");
    std::ofstream file(input);
    file.precision(17);
    for (const Point& point : points) {
        for (const double each : point) file << each << '\n';
    }
    file.close();
    const ProgramRun run =
        runProgram({"/bin/sh", "-c", "\"$0\" \"$1\" < \"$2\"", AMPL_VALUES, path, input});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    Witness witness;
    std::istringstream lines(run.output);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "size") {
            words >> witness.nbVariables >> witness.nbRows >> witness.nbLogical >>
                witness.nbObjectives >> witness.maximise;
        } else if (kind == "set") {
            witness.sets.push_back(line);
        } else if (kind == "values") {
            std::vector<std::string> values;
            for (std::string word; words >> word;) values.push_back(word);
            witness.values.push_back(values);
        } else {
            std::array<double, 4> numbers{};
            for (double& each : numbers) {
                std::string word;
                if (words >> word) each = std::stod(word);
            }
            if (kind == "variable") witness.variables.push_back(numbers);
            if (kind == "row") witness.rows.push_back({numbers[0], numbers[1]});
        }
    }
    return witness;
}

Model modelOf(const std::string& path, const Environment& environment) {
    ModelBuilder builder;
    const InputText text = InputText::fromFile(path);
    buildModel(readNl(text, readNlNames(path)), builder);
    return builder.finish(environment);
}

/// Points near the start, near 0 and all over the bounds.
std::vector<Point> pointsFor(const Model& model, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const auto levels = model.levels();
    std::vector<Point> points = {Point(levels.begin(), levels.end())};
    for (int k = 0; k < 12; ++k) {
        Point point;
        for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
            const double lower = std::fmax(model.lower(j), -5.0 * (k % 3 + 1));
            const double upper = std::fmin(model.upper(j), std::fmax(lower, 0.0) + 10.0);
            double level = lower + (upper - lower) * unit(random);
            if (model.variableType(j) != hostapi::variable_type::continuous || k == 1)
                level = std::round(level);
            point.push_back(k == 0 ? 0.0 : level);
        }
        points.push_back(point);
    }
    return points;
}

void expectSame(const Evaluation& ours, double shift, const std::string& theirs,
                const std::string& what) {
    // The library takes an infinite value for one; it is an error here.
    const bool fails = theirs == "error" || !std::isfinite(std::stod(theirs));
    EXPECT_EQ(ours.nbErrors > 0, fails) << what << ": " << ours.value << " and " << theirs;
    if (fails || ours.nbErrors > 0) return;
    const double value = std::stod(theirs);
    const double tolerance = 1e-9 * std::fmax(1.0, std::fmax(std::fabs(value), std::fabs(shift)));
    EXPECT_NEAR(ours.value + shift, value, tolerance) << what;
}

void compareValues(const Model& model, const Witness& witness, const std::vector<Point>& points) {
    ASSERT_EQ(witness.values.size(), points.size());
    for (std::size_t p = 0; p < points.size(); ++p) {
        SCOPED_TRACE("point " + std::to_string(p));
        const auto& values = witness.values[p];
        expectSame(model.evaluateObjective(points[p]), 0.0, values[0], "objective");
        for (std::int32_t i = 0; i < witness.nbRows + witness.nbLogical; ++i) {
            double shift = 0.0;
            if (i < witness.nbRows) {
                // Constants went into the right-hand side.
                const auto& [lower, upper] = witness.rows[static_cast<std::size_t>(i)];
                shift = (std::isfinite(lower) ? lower : upper) - model.rightHandSide(i);
                ASSERT_TRUE(std::isfinite(shift)) << "free row " << model.rowName(i);
            }
            expectSame(model.evaluateRow(i, points[p]), shift,
                       values[static_cast<std::size_t>(i) + 1], model.rowName(i));
        }
    }
}

void compareSets(const Model& model, std::vector<std::string> theirs) {
    std::vector<std::string> ours;
    for (const SpecialOrderedSet& set : model.specialOrderedSets()) {
        if (!set.restricts()) continue;
        ours.push_back("set " + std::to_string(set.nbNonzeros()));
        for (const std::int32_t member : set.members) ours.back() += " " + std::to_string(member);
    }
    std::sort(ours.begin(), ours.end());
    std::sort(theirs.begin(), theirs.end());
    EXPECT_EQ(ours, theirs);
}

void compareInstances(const Model& model, const Witness& witness) {
    ASSERT_EQ(model.nbVariables(), witness.nbVariables);
    EXPECT_EQ(model.sense() != 0, witness.maximise != 0);
    std::int32_t nbTwins = 0;
    for (const auto& [lower, upper] : witness.rows)
        nbTwins += std::isfinite(lower) && std::isfinite(upper) && lower != upper ? 1 : 0;
    EXPECT_EQ(model.nbRows(), witness.nbRows + witness.nbLogical + nbTwins);
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        const auto& [lower, upper, start, isDiscrete] =
            witness.variables[static_cast<std::size_t>(j)];
        EXPECT_EQ(model.lower(j), lower) << j;
        EXPECT_EQ(model.upper(j), upper) << j;
        EXPECT_EQ(model.variableType(j) != hostapi::variable_type::continuous, isDiscrete != 0)
            << j;
        EXPECT_EQ(model.levels()[static_cast<std::size_t>(j)],
                  std::fmax(lower, std::fmin(start, upper)))
            << j;
    }
}

void compare(const std::string& path) {
    SCOPED_TRACE(path);
    const Environment environment;
    const Model model = modelOf(path, environment);
    const std::vector<Point> points = pointsFor(model, 7);
    const Witness witness = ask(path, points);
    compareInstances(model, witness);
    compareSets(model, witness.sets);
    compareValues(model, witness, points);
}

TEST(NlValues, PublicInstancesAgreeWithTheSolverLibrary) {
    const std::filesystem::path folder = std::filesystem::path(INSTANCES_FOLDER) / "nl";
    if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << "no public instances here";
    int nbFiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".nl") continue;
        compare(entry.path().string());
        ++nbFiles;
    }
    EXPECT_GT(nbFiles, 0);
}

TEST(NlValues, OperatorsAgreeWithTheSolverLibrary) {
    NlSketch sketch;
    for (const char* unary : {"o13", "o14", "o15", "o16", "o37", "o38", "o39", "o40", "o41", "o42",
                              "o43", "o44", "o45", "o46", "o47", "o50", "o52", "o77"})
        sketch.rows.push_back(std::string(unary) + " v0");
    for (const char* binary : {"o0", "o1", "o2", "o3", "o4", "o5", "o6", "o55"})
        sketch.rows.push_back(std::string(binary) + " v0 v1");
    for (const char* other : {"o5 v0 n3",
                              "o5 v0 n0.5",
                              "o5 v2 n1",
                              "o5 v1 n-2",
                              "o5 n2 v1",
                              "o57 v0 n0",
                              "o58 v0 n0",
                              "o11 3 v0 v1 v2",
                              "o12 3 v0 n1 v2",
                              "o54 4 v0 n2 v1 v2",
                              "o54 3 n1 o2 n3 v0 o16 v1",
                              "o35 o22 v0 v1 o41 v0 n7",
                              "o35 o23 v0 n0 n1 o43 v0",
                              "o59 3 o22 v0 v1 o28 v1 n0 o30 v2 n0",
                              "o60 4 n0 v0 v1 v2",
                              "o64 3 n-1 n0 n2 n3 n5 v0",
                              "o64 2 n1 n-2 n4 v1",
                              "o1 n3 o2 n2 v0",
                              "o1 v0 o2 v1 n5",
                              "o3 n1 o0 v0 o16 v1",
                              "o2 o2 n2 v0 o0 v1 v2",
                              "o5 o0 v0 o2 n2 v1 n2",
                              "v3",
                              "o2 v3 v4",
                              "o43 o0 v4 n10"})
        sketch.rows.push_back(other);
    for (const char* logical :
         {"o20 o22 v0 n0 o29 v1 n0", "o21 o22 v0 n0 o29 v1 n0", "o24 v0 v1", "o28 v0 v1",
          "o34 o23 v0 v1", "o70 3 o22 v0 n9 o22 v1 n9 o22 v2 n0",
          "o71 3 o22 v0 n-2 o30 v1 n0 o29 v2 n7", "o72 o22 v0 n0 o29 v1 n0 n1",
          "o72 o22 v0 n0 o29 v1 n0 o29 v2 n0", "o73 o22 v0 n0 o29 v1 n0",
          "o62 n2 o59 3 o29 v0 n0 o29 v1 n0 o29 v2 n0", "o63 n1 o59 2 o29 v0 n0 o29 v1 n0",
          "o66 n1 o59 2 o29 v0 n0 o29 v1 n0", "o67 n2 o59 2 o29 v0 n0 o29 v1 n0",
          "o68 n1 o59 2 o29 v0 n0 o29 v1 n0", "o69 n1 o59 2 o29 v0 n0 o29 v1 n0", "o74 3 v0 v1 v2"})
        sketch.logicalRows.push_back(logical);
    sketch.objectives = {"o2 v4 o54 3 v0 v3 o41 v1"};
    sketch.definitions = {"o44 v1", "o2 v0 v3"};
    for (const bool withLinearTerms : {false, true}) {
        sketch.withLinearTerms = withLinearTerms;
        const std::string path = scratchFile("operators.nl");
        std::ofstream(path, std::ios::binary) << NlWriter(NlForm::text).write(sketch);
        compare(path);
    }
}

bool keepsTo(const Model& model, std::int32_t row, const Point& point) {
    const double excess = model.evaluateRow(row, point).value - model.rightHandSide(row);
    const std::int32_t type = model.rowType(row);
    return (type == hostapi::equation_type::greater || excess <= 1e-9) &&
           (type == hostapi::equation_type::less || excess >= -1e-9);
}

/// Gives the terms from `t` on some piece each, and all of them the values that the rows ask for.
/// @return whether the rows behind the first ones, which are the file's, take that.
bool complete(const Model& model, const NlInstance& instance, Point& point, std::size_t t) {
    const std::size_t firstPiece = instance.variables.size() + instance.piecewise.size();
    if (t < instance.piecewise.size()) {
        const auto argument = static_cast<std::size_t>(instance.piecewise[t].argument);
        for (std::size_t j = firstPiece; j < point.size(); j += 2) {
            if (point[j] != 0.0) continue;  // another term's
            point[j] = 1.0;
            point[j + 1] = point[argument];
            if (complete(model, instance, point, t + 1)) return true;
            point[j] = point[j + 1] = 0.0;
        }
        return false;
    }
    bool keepsToAll = true;
    for (std::int32_t i = instance.header.nbRows; i < model.nbRows(); ++i) {
        const LinearPart first = model.linearPart(i).front();
        const auto value = static_cast<std::size_t>(first.variable);
        const bool tellsValue = value >= instance.variables.size() && value < firstPiece;
        if (tellsValue) point[value] -= model.evaluateRow(i, point).value / first.coefficient;
        keepsToAll = keepsToAll && (model.rowName(i).ends_with("_up") || keepsTo(model, i, point));
    }
    return keepsToAll;
}

TEST(NlValues, PiecesAgreeWithTheSolverLibrary) {
    NlSketch sketch;
    // The library jumps at 0 when a piece goes on below it.
    sketch.rows = {"o64 3 n-1 n0 n2 n3 n5 v0", "o0 o2 n3 o64 2 n1 n-2 n4 v1 v0"};
    sketch.objectives = {"o0 o64 5 n1 n-9 n-1 n-0.5 n2 n0 n6 n2 n0 v2 n7"};
    const std::string path = scratchFile("pieces.nl");
    std::ofstream(path, std::ios::binary) << NlWriter(NlForm::text).write(sketch);
    const Environment environment;
    NlInstance instance = readNl(InputText::fromFile(path), {}, 1, /*nbValueVariables=*/3);
    for (NlVariable& each : instance.variables) each = {-50.0, 50.0, 0.0};
    ModelBuilder builder;
    buildModel(instance, builder);
    const Model withoutPieces = ModelBuilder(builder).finish(environment);
    ASSERT_TRUE(addPieces(withoutPieces, builder, instance.piecewise));
    const Model model = builder.finish(environment);
    EXPECT_FALSE(model.isNonlinear());

    std::vector<Point> points = pointsFor(modelOf(path, environment), 7);
    const Witness witness = ask(path, points);
    for (Point& each : points) {
        each.resize(static_cast<std::size_t>(model.nbVariables()));
        EXPECT_TRUE(complete(model, instance, each, 0));
    }
    compareValues(model, witness, points);
}

TEST(NlValues, SpecialOrderedSetsAgreeWithTheSolverLibrary) {
    NlSketch sketch;
    sketch.rows = {"n1"};
    sketch.nbVariables = 16;
    const char* const suffixes[] = {
        // One of each type, of users, and one that restricts nothing.
        "S0 8 sosno\n0 3\n1 3\n2 -3\n3 -3\n4 -3\n5 -3\n6 -8\n7 -8\n"
        "S4 6 ref\n0 2\n1 1\n2 4.5\n3 -1\n4 2\n6 1\n",
        // AMPL's own.
        "S0 7 sos\n3 17\n4 17\n5 17\n7 17\n8 32\n9 32\n12 32\n"
        "S4 7 sosref\n3 -1\n4 1\n5 2\n7 2.5\n8 1\n9 2\n12 4\n",
    };
    const Environment environment;
    const std::string path = scratchFile("sets.nl");
    for (const char* each : suffixes) {
        std::ofstream(path, std::ios::binary) << NlWriter(NlForm::text).write(sketch) << each;
        EXPECT_FALSE(modelOf(path, environment).specialOrderedSets().empty());
        compare(path);
    }
}

}  // namespace
}  // namespace norv::test
