#include "solve/model_file.hpp"

#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"
#include "readers/mps_model.hpp"
#include "readers/mps_reader.hpp"
#include "readers/nl_model.hpp"
#include "readers/nl_reader.hpp"
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
    if (nbEquations == model.nbVariables() && nbInequalities == 0 && !model.hasObjective()) return;
    throw Failure(ExitCode::badInput,
                  path + ": no square system: found " + std::to_string(nbEquations) +
                      " equations, " + std::to_string(nbInequalities) + " inequalities and " +
                      (model.hasObjective() ? "an" : "no") + " objective, expected " +
                      std::to_string(model.nbVariables()) +
                      " equations, one for each variable, and nothing else");
}

}  // namespace

Model readModel(const InputText& file, const Environment& environment, bool isSquareSystem,
                std::ostream& log) {
    ModelBuilder builder;
    // No .mps file begins with a "g" or "b" and a digit.
    if (looksLikeNl(file.text())) {
        build(readNl(file, readNlNames(file.path())), builder, log);
    } else {
        build(readMps(file), builder, log);
    }
    if (isSquareSystem) builder.setModelType(hostapi::model_type::squareSystem);
    Model model = builder.finish(environment);
    if (isSquareSystem) requireSquare(model, file.path());
    log << file.path() << ": " << model.nbRows() << " rows, " << model.nbVariables() << " columns ("
        << model.nbDiscrete() << " discrete), " << model.nbCoefficients() << " coefficients\n";
    return model;
}

}  // namespace norv
