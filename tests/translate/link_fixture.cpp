#include "translate/link_fixture.hpp"

#include <charconv>
#include <sstream>

#include "diag/model_dump.hpp"
#include "diag/operator_names.hpp"
#include "host/libraries.hpp"
#include "host/operations.hpp"
#include "translate/instance_text.hpp"

void bindHost() {
    char message[256];
    if (vex::nmoGetReady(message, sizeof message) == 0 ||
        vex::nevGetReady(message, sizeof message) == 0 ||
        vex::optGetReady(message, sizeof message) == 0)
        throw std::runtime_error(message);
}

vex::AnyFunction hostFunction(const char* symbol) {
    bindHost();  // it would undo a replacement if it came later
    const vex::LibraryLoading& loading = vex::platformLoading();
    for (const char* library : {"hubdclib64", "prmdclib64"}) {
        std::string reason;
        const vex::AnyFunction found =
            loading.find(loading.open(std::string(library) + vex::librarySuffix, reason), symbol);
        if (found != nullptr) return found;
    }
    return nullptr;
}

LinkFixture::LinkFixture(std::string_view instance, const std::vector<std::string>& settings)
    : model(readInstance(instance, environment)) {
    bindHost();
    environment.setLogSink([this](std::string_view text) { log += text; });
    if (!options.readDefinition(VEXCC_OPTION_DEFINITION))
        throw std::runtime_error(options.messages().front().text);
    for (const std::string& setting : settings) {
        if (!options.set(setting, "test")) throw std::runtime_error(options.messages().back().text);
    }
    link.nmo = model.handle();
    link.nev = environment.handle();
    link.opt = options.handle();
}

void LinkFixture::setUp() {
    link.resetTranslation();
    for (const auto& [variable, row] : definitions) {
        link.definedVariables[variable] = row;
        link.definingEquations[row] = variable;
    }
    startSolver();
    link.setupModel();
}

void LinkFixture::startModel() {
    link.resetTranslation();
    startSolver();
    vex::nmoIndexBaseSet(link.nmo, 0);
    link.variables.resize(static_cast<std::size_t>(model.nbVariables()));
}

void LinkFixture::startSolver() {
    link.solver.reset();
    link.solver = std::make_unique<localsolver::LocalSolver>();
    link.solver->setVerbosity(0);
}

void LinkFixture::define(std::int32_t variable, std::int32_t row) {
    definitions.emplace_back(variable, row);
}

std::string LinkFixture::dump() const {
    std::ostringstream stream;
    vex::dumpModel(stream, link.solver->getModel());
    return stream.str();
}

std::string LinkFixture::typedText(localsolver::LSExpression expression) const {
    for (std::size_t j = 0; j < link.variables.size(); ++j) {
        if (link.variables[j] == expression && expression.isDecision())
            return model.variableName(static_cast<std::int32_t>(j));
    }
    const auto op = expression.getOperator();
    if (op == LS_OP_CONST) {
        if (!expression.isDouble()) return std::to_string(expression.getIntValue());
        char text[32];
        const std::string digits(
            text, std::to_chars(text, text + sizeof text, expression.getDoubleValue()).ptr);
        return digits.find_first_of(".en") == std::string::npos ? digits + ".0" : digits;
    }
    return std::string(vex::operatorNames[op]) + "(" + typedOperands(expression) + ")";
}

std::string LinkFixture::typedOperands(localsolver::LSExpression expression) const {
    std::string text;
    for (std::int32_t k = 0; k < expression.getNbOperands(); ++k)
        text += (k > 0 ? ", " : "") + typedText(expression.getOperand(k));
    return text;
}
