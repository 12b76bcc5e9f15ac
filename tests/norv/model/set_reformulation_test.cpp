// Special ordered sets against the binaries and rows in their place, point by point.

#include "norv/set_reformulation.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using norv::Model;
using norv::ModelBuilder;
using Point = std::vector<double>;
namespace variable = hostapi::variable_type;
namespace equation = hostapi::equation_type;

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Domain {
    std::int32_t type;
    double lower, upper;
};
constexpr Domain unit = {variable::continuous, 0.0, 2.0};
constexpr Domain free = {variable::continuous, -infinity, infinity};

struct Set {
    std::int32_t type;
    std::vector<std::int32_t> members;
};

bool keepsTo(const Set& set, const Point& point) {
    std::vector<std::size_t> places;
    for (std::size_t k = 0; k < set.members.size(); ++k) {
        if (point[static_cast<std::size_t>(set.members[k])] != 0.0) places.push_back(k);
    }
    return places.size() < 2 || (set.type == variable::specialOrdered2 && places.size() == 2 &&
                                 places[1] == places[0] + 1);
}

bool isIn(const Model& model, std::int32_t j, double level) {
    const std::int32_t type = model.variableType(j);
    if (type == variable::semiContinuous && level == 0.0) return true;
    if (type == variable::binary && level != std::round(level)) return false;
    return level >= model.lower(j) && level <= model.upper(j);
}

bool satisfiesRows(const Model& model, const Point& point) {
    for (std::int32_t i = 0; i < model.nbRows(); ++i) {
        const double excess = model.evaluateRow(i, point).value - model.rightHandSide(i);
        const std::int32_t type = model.rowType(i);
        if (type != equation::greater && excess > 1e-6) return false;
        if (type != equation::less && excess < -1e-6) return false;
    }
    return true;
}

/// Does `accepts` take the point, completed from `j` on by some of `choices` in every place?
template <class Accepts>
bool anyCompletion(const Model& model, Point& point, std::size_t j, const Point& choices,
                   const Accepts& accepts) {
    if (j == point.size()) return accepts(point);
    return std::any_of(choices.begin(), choices.end(), [&](double choice) {
        point[j] = choice;
        return isIn(model, static_cast<std::int32_t>(j), choice) &&
               anyCompletion(model, point, j + 1, choices, accepts);
    });
}

struct Case {
    const char* what;
    std::vector<Domain> domains;
    std::vector<Set> sets;
    std::int32_t nbBinaries;  ///< none in place of what is binary, or restricts nothing
};

TEST(SetReformulation, AcceptsTheSamePointsAsTheSets) {
    constexpr std::int32_t one = variable::specialOrdered1;
    constexpr std::int32_t two = variable::specialOrdered2;
    constexpr Domain negative = {variable::continuous, -2.0, 0.0};
    constexpr Domain positive = {variable::continuous, 1.0, 2.0};
    constexpr Domain binary = {variable::binary, 0.0, 1.0};
    constexpr Domain semi = {variable::semiContinuous, 1.0, 2.0};
    const Case cases[] = {
        {"at most one", {unit, negative, unit}, {{one, {0, 1, 2}}}, 3},
        {"binaries stand for themselves", {binary, unit, binary}, {{one, {0, 1, 2}}}, 1},
        {"neighbours, in the set's order", {unit, negative, unit, unit}, {{two, {3, 0, 2, 1}}}, 3},
        {"bounds that rows imply", {free, free, unit}, {{one, {0, 1, 2}}}, 3},
        {"implied bounds of neighbours", {free, unit, free}, {{two, {0, 1, 2}}}, 2},
        {"a member that is never 0", {positive, unit, negative}, {{two, {0, 1, 2}}}, 2},
        {"two that are never 0", {positive, unit, positive}, {{one, {0, 1, 2}}}, 3},
        {"semi-continuous members", {semi, unit, semi}, {{one, {0, 1, 2}}}, 3},
        {"sets that share", {unit, unit, negative, binary}, {{one, {0, 1}}, {one, {1, 2, 3}}}, 3},
        {"a chain of both types", {unit, unit, unit, unit}, {{two, {0, 1, 2}}, {one, {2, 3}}}, 4},
        {"nothing to restrict", {free, free, unit}, {{one, {0}}, {two, {0, 1}}, {one, {}}}, 0},
    };
    const norv::Environment environment;
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        ModelBuilder builder;
        for (const Domain& d : each.domains) builder.addVariable(d.type, d.lower, d.upper, 1.0);
        // Rows that bound x0 and x1 where these have no bound.
        builder.addRangeRow(-infinity, 2.0);
        builder.addRangeRow(-2.0, infinity);
        builder.addRangeRow(-3.0, 3.0);
        for (const std::int32_t j : {0, 1}) builder.addCoefficient(0, j, 1.0);
        builder.addCoefficient(0, 2, -1.0);
        for (const std::int32_t j : {0, 1, 2}) builder.addCoefficient(1, j, 1.0);
        for (const std::int32_t j : {1, 2}) builder.addCoefficient(2, j, 1.0);
        for (const Set& set : each.sets) builder.addSpecialOrderedSet({set.type, "s", set.members});
        ModelBuilder copy(builder);
        const Model model = builder.finish(environment);
        EXPECT_EQ(reformulateSets(model, copy).nbBinaries, each.nbBinaries);
        const Model made = copy.finish(environment);
        EXPECT_TRUE(made.specialOrderedSets().empty());
        Point point(each.domains.size());
        int nbKept = 0;
        anyCompletion(model, point, 0, {-2.0, -1.0, 0.0, 0.5, 1.0, 2.0}, [&](const Point& own) {
            const bool isKept = satisfiesRows(model, own) &&
                                std::all_of(each.sets.begin(), each.sets.end(),
                                            [&](const Set& set) { return keepsTo(set, own); });
            Point completed = own;
            completed.resize(static_cast<std::size_t>(made.nbVariables()));
            EXPECT_EQ(anyCompletion(made, completed, own.size(), {0.0, 1.0},
                                    [&](const Point& all) { return satisfiesRows(made, all); }),
                      isKept)
                << testing::PrintToString(own);
            nbKept += isKept ? 1 : 0;
            return false;
        });
        EXPECT_EQ(nbKept > 0, each.what != std::string("two that are never 0"));
    }
}

}  // namespace
