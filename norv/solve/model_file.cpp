#include "solve/model_file.hpp"

#include <algorithm>
#include <limits>
#include <span>
#include <stdexcept>
#include <utility>

#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"
#include "norv/piecewise_linear.hpp"
#include "norv/set_reformulation.hpp"
#include "readers/lp_reader.hpp"
#include "readers/mps_model.hpp"
#include "readers/mps_reader.hpp"
#include "readers/nl_model.hpp"
#include "readers/nl_reader.hpp"
#include "readers/read_error.hpp"
#include "solve/failure.hpp"

namespace norv {
namespace {

template <class Instance>
void build(const Instance& instance, ModelBuilder& builder, std::ostream& log) {
    for (const std::string& warning : instance.warnings) log << "Warning: " << warning << '\n';
    buildModel(instance, builder);
}

void requireSquare(const Model& model, const std::string& path) {
    std::int32_t nbEquations = 0;
    std::int32_t nbFreeRows = 0;
    for (std::int32_t i = 0; i < model.nbRows(); ++i) {
        const std::int32_t type = model.rowType(i);
        const bool isEquation =
            type == hostapi::equation_type::equality || type == hostapi::equation_type::logic;
        nbEquations += isEquation ? 1 : 0;
        nbFreeRows += type == hostapi::equation_type::free ? 1 : 0;
    }
    const std::int32_t nbInequalities = model.nbRows() - nbEquations - nbFreeRows;
    if (!model.specialOrderedSets().empty())
        throw Failure(ExitCode::badInput, path + ": no square system: found special ordered sets");
    if (nbEquations == model.nbVariables() && nbInequalities == 0 && !model.hasObjective()) return;
    throw Failure(ExitCode::badInput,
                  path + ": no square system: found " + std::to_string(nbEquations) +
                      " equations, " + std::to_string(nbInequalities) + " inequalities and " +
                      (model.hasObjective() ? "an" : "no") + " objective, expected " +
                      std::to_string(model.nbVariables()) +
                      " equations, one for each variable, and nothing else");
}

/// What an .nl file tells beside its model.
struct Remarks {
    std::int32_t nbTerms = 0;  ///< piecewise-linear ones, of variables
    std::vector<std::string> askedSuffixes;
};

Remarks readInto(ModelBuilder& builder, const InputText& file, const ReadingSettings& settings,
                 std::ostream& log) {
    Remarks remarks;
    // No .mps file begins with a "g" or "b" and a digit, or with the sense of an objective.
    if (looksLikeNl(file.text())) {
        const NlInstance instance = readNl(file, readNlNames(file.path()), settings.objective);
        build(instance, builder, log);
        remarks = {static_cast<std::int32_t>(instance.piecewise.size()), instance.askedSuffixes};
    } else if (looksLikeLp(file.text())) {
        for (const std::string& warning : readLp(file, builder))
            log << "Warning: " << warning << '\n';
    } else {
        build(readMps(file,
                      {settings.hasOpenIntegers ? std::numeric_limits<double>::infinity() : 1.0}),
              builder, log);
    }
    if (settings.isSquareSystem) builder.setModelType(hostapi::model_type::squareSystem);
    return remarks;
}

/// The model of the file with variables and rows in place of its piecewise-linear terms; nothing
/// where these are not all that is nonlinear, or an argument has no bounds.
std::optional<ModelBuilder> withPieces(const InputText& file, const ReadingSettings& settings,
                                       std::int32_t nbTerms, const Environment& environment) {
    const NlInstance instance = readNl(file, readNlNames(file.path()), settings.objective, nbTerms);
    ModelBuilder builder;
    buildModel(instance, builder);
    const Model model = ModelBuilder(builder).finish(environment);
    if (model.isNonlinear() || !addPieces(model, builder, instance.piecewise)) return std::nullopt;
    return builder;
}

std::string namesOf(std::span<const SpecialOrderedSet> sets) {
    constexpr std::size_t mostNames = 5;
    std::string names;
    for (std::size_t k = 0; k < std::min(sets.size(), mostNames); ++k) {
        names += (k > 0 ? ", \"" : "\"") + sets[k].name + "\" (type " +
                 std::to_string(sets[k].nbNonzeros()) + ")";
    }
    if (sets.size() > mostNames)
        names += " and " + std::to_string(sets.size() - mostNames) + " more";
    return names;
}

/// @param builder  a copy of the one that `model` was finished from.
Model withoutSets(const Model& model, ModelBuilder& builder, const Environment& environment,
                  const std::string& path, std::ostream& log) {
    SetReformulation made;
    try {
        made = reformulateSets(model, builder);
    } catch (const std::invalid_argument& missing) {
        throw Failure(ExitCode::unsupported, path + ": " + missing.what());
    }
    const std::size_t nbSets = model.specialOrderedSets().size();
    log << path << ": " << nbSets << " special ordered " << (nbSets == 1 ? "set is" : "sets are")
        << " solved as " << made.nbBinaries << " binary variables and " << made.nbRows << " rows\n";
    return builder.finish(environment);
}

}  // namespace

LoadedModel readModel(const InputText& file, const Environment& environment,
                      const ReadingSettings& settings, std::ostream& log) {
    ModelBuilder builder;
    std::optional<ModelBuilder> copy;
    std::optional<Model> finished;
    Remarks remarks;
    std::int32_t nbOwnRows = 0;  // without the twins of ranges
    try {
        remarks = readInto(builder, file, settings, log);
        nbOwnRows = builder.nbRows();
        if (builder.nbSpecialOrderedSets() > 0 && !settings.keepsSets) copy.emplace(builder);
        finished = builder.finish(environment);
    } catch (const std::invalid_argument& refusal) {
        throw ReadError(file.path() + ": " + refusal.what());
    }
    LoadedModel loaded = {std::move(*finished), std::nullopt, std::move(remarks.askedSuffixes)};
    const Model& model = loaded.model;
    if (settings.isSquareSystem) requireSquare(model, file.path());
    log << file.path() << ": " << model.nbRows() << " rows, " << model.nbVariables() << " columns ("
        << model.nbDiscrete() << " discrete), " << model.nbCoefficients() << " coefficients\n";
    const std::int32_t nbTerms = remarks.nbTerms;
    if (nbTerms > 0 && !settings.keepsSets && !settings.isSquareSystem) {
        if (auto pieces = withPieces(file, settings, nbTerms, environment)) {
            log << file.path() << ": " << nbTerms << " piecewise-linear term"
                << (nbTerms == 1 ? " is" : "s are") << " solved as "
                << pieces->nbVariables() - model.nbVariables() << " variables and "
                << pieces->nbRows() - nbOwnRows << " rows\n";
            copy.emplace(std::move(*pieces));
        }
    }
    if (copy && copy->nbSpecialOrderedSets() == 0) {
        loaded.forLink = copy->finish(environment);
    } else if (copy) {
        const Model withSets = ModelBuilder(*copy).finish(environment);
        loaded.forLink = withoutSets(withSets, *copy, environment, file.path(), log);
    } else if (!model.specialOrderedSets().empty()) {
        log << file.path()
            << ": special ordered sets are kept: " << namesOf(model.specialOrderedSets()) << '\n';
    }
    return loaded;
}

}  // namespace norv
