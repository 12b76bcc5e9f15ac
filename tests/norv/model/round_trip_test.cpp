// Random instances: what the builder was told, every operation gives back, compared with maps.

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

#include "hostapi/codes.hpp"
#include "norv/host_operations.hpp"
#include "norv/model_builder.hpp"

namespace {

using hosttest::hub;
using norv::objectiveRow;

/// The element at an index that counts like the host, in signed integers.
template <class Value>
Value at(const std::vector<Value>& values, std::int32_t index) {
    return values.at(static_cast<std::size_t>(index));
}

/// What was told, kept the slow way. Coefficients are small integers, so that sums are exact.
struct Reference {
    std::map<std::pair<std::int32_t, std::int32_t>, double> linear;  // row, variable
    std::map<std::int32_t, std::map<std::pair<std::int32_t, std::int32_t>, double>> quadratic;
    std::vector<std::int32_t> rowTypes;
    std::int32_t nbVariables = 0;

    bool occursQuadratically(std::int32_t row, std::int32_t j) const {
        const auto found = quadratic.find(row);
        if (found == quadratic.end()) return false;
        for (const auto& [pair, value] : found->second) {
            if (value != 0.0 && (pair.first == j || pair.second == j)) return true;
        }
        return false;
    }
    double coefficient(std::int32_t row, std::int32_t j) const {
        const auto found = linear.find({row, j});
        return found == linear.end() ? 0.0 : found->second;
    }
    bool occurs(std::int32_t row, std::int32_t j) const {
        return coefficient(row, j) != 0.0 || occursQuadratically(row, j);
    }
    double valueAt(std::int32_t row, const std::vector<double>& point) const {
        double sum = 0.0;
        for (std::int32_t j = 0; j < nbVariables; ++j) sum += coefficient(row, j) * at(point, j);
        const auto found = quadratic.find(row);
        if (found == quadratic.end()) return sum;
        for (const auto& [pair, value] : found->second)
            sum += value * at(point, pair.first) * at(point, pair.second);
        return sum;
    }
};

class RandomInstance {
public:
    explicit RandomInstance(unsigned seed) : random(seed) {
        reference.nbVariables = draw(1, 8);
        const std::int32_t nbRows = draw(0, 7);
        for (std::int32_t j = 0; j < reference.nbVariables; ++j)
            builder.addVariable(hostapi::variable_type::continuous, -5.0, 5.0);
        for (std::int32_t i = 0; i < nbRows; ++i) {
            reference.rowTypes.push_back(draw(0, 3));
            builder.addRow(reference.rowTypes.back(), draw(-9, 9));
        }
        for (std::int32_t k = draw(0, 60); k > 0; --k) {
            const std::int32_t i = draw(objectiveRow, nbRows - 1), j = draw(0, lastVariable());
            const double value = draw(-2, 2);
            builder.addCoefficient(i, j, value);
            reference.linear[{i, j}] += value;
        }
        for (std::int32_t k = draw(0, 20); k > 0; --k) {
            const std::int32_t i = draw(objectiveRow, nbRows - 1);
            const std::int32_t v = draw(0, lastVariable()), w = draw(0, lastVariable());
            const double value = draw(-2, 2);
            builder.addQuadratic(i, v, w, value);
            reference.quadratic[i][std::minmax(v, w)] += value;
        }
    }

    std::vector<double> point() {
        std::vector<double> values;
        for (std::int32_t j = 0; j < reference.nbVariables; ++j) values.push_back(draw(-6, 6));
        return values;
    }

    norv::ModelBuilder builder;
    Reference reference;

private:
    std::int32_t draw(std::int32_t from, std::int32_t to) {
        return std::uniform_int_distribution<std::int32_t>(from, to)(random);
    }
    std::int32_t lastVariable() const { return reference.nbVariables - 1; }

    std::mt19937 random;
};

/// One row or the objective, as its operations deliver it.
struct Delivered {
    std::int32_t nbEntries = 0, nbQuadratic = 0, nbNonlinear = 0;
    std::vector<std::int32_t> variables, flags, first, second;
    std::vector<double> values, products;

    Delivered(hostapi::ModelHandle nmo, std::int32_t row) {
        if (row < 0)
            hub().nmoGetObjStat(nmo, &nbEntries, &nbQuadratic, &nbNonlinear);
        else
            hub().nmoGetRowStat(nmo, row, &nbEntries, &nbQuadratic, &nbNonlinear);
        for (auto* list : {&variables, &flags}) list->resize(static_cast<std::size_t>(nbEntries));
        for (auto* list : {&first, &second}) list->resize(static_cast<std::size_t>(nbQuadratic));
        values.resize(static_cast<std::size_t>(nbEntries));
        products.resize(static_cast<std::size_t>(nbQuadratic));
        std::int32_t nb = -1, nbFlagged = -1;
        if (row < 0) {
            hub().nmoGetObjSparse(nmo, variables.data(), values.data(), flags.data(), &nb,
                                  &nbFlagged);
            hub().nmoGetObjQ(nmo, first.data(), second.data(), products.data());
        } else {
            hub().nmoGetRowSparse(nmo, row, variables.data(), values.data(), flags.data(), &nb,
                                  &nbFlagged);
            hub().nmoGetRowQ(nmo, row, first.data(), second.data(), products.data());
        }
        EXPECT_EQ(nb, nbEntries);
        EXPECT_EQ(nbFlagged, nbNonlinear);
    }
};

void expectSame(const Reference& reference, hostapi::ModelHandle nmo, std::int32_t index,
                std::int32_t row) {
    const Delivered got(nmo, index);
    std::size_t k = 0;
    std::int32_t nbNonlinear = 0;
    for (std::int32_t j = 0; j < reference.nbVariables; ++j) {
        if (!reference.occurs(row, j)) continue;
        ASSERT_LT(k, got.variables.size());
        EXPECT_EQ(got.variables[k], j);
        EXPECT_EQ(got.values[k], reference.coefficient(row, j));
        EXPECT_EQ(got.flags[k] != 0, reference.coefficient(row, j) == 0.0);
        nbNonlinear += got.flags[k];
        ++k;
    }
    EXPECT_EQ(got.variables.size(), k);
    EXPECT_EQ(got.nbNonlinear, nbNonlinear);
    k = 0;
    const auto quadratic = reference.quadratic.find(row);
    if (quadratic != reference.quadratic.end()) {
        for (const auto& [pair, value] : quadratic->second) {
            if (value == 0.0) continue;
            ASSERT_LT(k, got.first.size());
            EXPECT_EQ(std::pair(got.first[k], got.second[k]), pair);
            EXPECT_EQ(got.products[k], pair.first == pair.second ? 2.0 * value : value);
            ++k;
        }
    }
    EXPECT_EQ(got.first.size(), k);
}

/// Walks a column and compares it with the rows in the link's order.
void expectColumn(const Reference& reference, hostapi::ModelHandle nmo, std::int32_t j,
                  const std::vector<std::int32_t>& rowAt) {
    void* cursor = nullptr;
    bool ended = false;
    for (std::size_t index = 0; index < rowAt.size(); ++index) {
        if (!reference.occurs(rowAt[index], j)) continue;
        std::int32_t row = -7, flag = -7;
        double value = -7.0;
        EXPECT_FALSE(ended);
        hub().nmoGetColJacInfoOne(nmo, j, &cursor, &value, &row, &flag);
        EXPECT_EQ(row, static_cast<std::int32_t>(index));
        EXPECT_EQ(value, reference.coefficient(rowAt[index], j));
        EXPECT_EQ(flag != 0, reference.occursQuadratically(rowAt[index], j));
        ended = cursor == nullptr;
    }
    if (ended) return;
    std::int32_t row = 0;
    hub().nmoGetColJacInfoOne(nmo, j, &cursor, nullptr, &row, nullptr);
    EXPECT_LT(row, 0);
    EXPECT_EQ(cursor, nullptr);
}

TEST(RoundTrip, RandomInstancesComeBackAsTold) {
    const norv::Environment environment;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomInstance drawn(seed);
        const Reference& reference = drawn.reference;
        const auto model = drawn.builder.finish(environment);
        const auto nmo = model.handle();
        hub().nmoIndexBaseSet(nmo, 0);
        std::vector<std::int32_t> rowAt;
        const bool hidesFreeRows = seed % 2 == 0;
        for (std::int32_t i = 0; i < model.nbRows(); ++i) {
            if (!hidesFreeRows || at(reference.rowTypes, i) != hostapi::equation_type::free)
                rowAt.push_back(i);
        }
        if (hidesFreeRows) {
            hub().nmoSetNRowPerm(nmo);
            hub().nmoSetNRowPerm(nmo);
            EXPECT_EQ(hub().nmoGetEquTypeCnt(nmo, hostapi::equation_type::free), 0);
        }
        ASSERT_EQ(hub().nmoM(nmo), static_cast<std::int32_t>(rowAt.size()));
        expectSame(reference, nmo, -1, objectiveRow);
        const std::vector<double> point = drawn.point();
        EXPECT_EQ(model.evaluateObjective(point).value, reference.valueAt(objectiveRow, point));
        for (std::int32_t index = 0; index < hub().nmoM(nmo); ++index) {
            const std::int32_t row = at(rowAt, index);
            expectSame(reference, nmo, index, row);
            EXPECT_EQ(hub().nmoGetEquTypeOne(nmo, index), at(reference.rowTypes, row));
            double value = 0.0;
            std::int32_t nbErrors = -1;
            EXPECT_EQ(hub().nmoEvalFunc(nmo, index, point.data(), &value, &nbErrors), 0);
            EXPECT_EQ(value, reference.valueAt(row, point));
            EXPECT_EQ(model.evaluateRow(row, point).value, value);
        }
        for (std::int32_t j = 0; j < reference.nbVariables; ++j)
            expectColumn(reference, nmo, j, rowAt);
        if (HasFailure()) break;
    }
}

}  // namespace
