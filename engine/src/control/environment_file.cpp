#include "control/environment_file.hpp"

#include <cerrno>
#include <fstream>
#include <system_error>

#include "control/solver.hpp"
#include "model/number_text.hpp"
#include "model/operator_table.hpp"
#include "model/refusal.hpp"

namespace engine {

namespace {

std::string number(std::int64_t value) {
    return numberText(Value::ofInt(value));
}

/// A name stays on its line and between its quotes, whatever it holds.
std::string quoted(const std::string& name) {
    std::string text = "\"";
    for (const char c : name) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (code < 0x20 || code == 0x7f) {
            text += formatText("\\x%02x", code);
        } else {
            text += c;
        }
    }
    return text + '"';
}

/// Doubles carry a mark that integers lack, so that the type reads back too.
std::string constantText(Value value) {
    const std::string text = numberText(value);
    const bool looksInteger = text.find_first_of(".enif") == std::string::npos;
    return !value.isInt() && looksInteger ? text + ".0" : text;
}

void appendExpression(std::string& text, const Model& model, ExpressionIndex e) {
    const ls_operator op = model.operatorOf(e);
    text += number(e);
    text += ' ';
    text += operatorInfo(op).name;
    if (op == LS_OP_CONST) text += ' ' + constantText(model.constantOf(e));
    for (std::int32_t k = 0; k < model.nbOperandsOf(e); ++k) {
        text += ' ' + number(model.operandOf(e, k));
    }
    if (model.names.isNamed(e)) text += ' ' + quoted(model.names.nameOf(e));
    text += '\n';
}

void appendModel(std::string& text, const Model& model) {
    text += "expressions " + number(model.nbExpressions()) + '\n';
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) appendExpression(text, model, e);
    text += "constraints " + number(static_cast<std::int64_t>(model.constraints().size())) + '\n';
    for (const ExpressionIndex e : model.constraints()) text += number(e) + '\n';
    text += "objectives " + number(static_cast<std::int64_t>(model.objectives().size())) + '\n';
    for (const Objective& o : model.objectives()) {
        text += (o.maximise ? "maximize " : "minimize ") + number(o.expression) + '\n';
    }
}

void appendParameters(std::string& text, const Parameters& p) {
    text += "parameters\n";
    text += "threads " + number(p.nbThreads) + '\n';
    text += "seed " + number(p.seed) + '\n';
    text += "annealing-level " + number(p.annealingLevel) + '\n';
    text += "iterations-between-ticks " + number(p.iterationsBetweenTicks) + '\n';
    text += "seconds-between-ticks " + number(p.secondsBetweenTicks) + '\n';
    text += "verbosity " + number(p.verbosity) + '\n';
    for (std::size_t k = 0; k < p.thresholds.size(); ++k) {
        if (!p.thresholds[k]) continue;
        text += "threshold " + number(static_cast<std::int64_t>(k)) + ' ' +
                constantText(Value::ofDouble(*p.thresholds[k])) + '\n';
    }
}

[[noreturn]] void refuseFile(const std::string& fileName, int error) {
    throw Refusal(LS_ERROR_FILE, formatText("cannot write \"%s\": %s", fileName.c_str(),
                                            std::generic_category().message(error).c_str()));
}

}  // namespace

std::string environmentText(const Solver& solver) {
    std::string text = "localsolver-environment 1\n";
    appendModel(text, solver.model);
    appendParameters(text, solver.parameters);
    text += "phases " + number(static_cast<std::int64_t>(solver.phases.size())) + '\n';
    for (const Phase& phase : solver.phases) {
        text += "time-limit " + number(phase.timeLimit) + " iteration-limit " +
                number(phase.iterationLimit) + '\n';
    }
    return text + "end\n";
}

void saveEnvironment(const Solver& solver, const std::string& fileName) {
    const std::string text = environmentText(solver);
    errno = 0;
    // Binary: the text's own line ends are the file's on every platform.
    std::ofstream file(fileName, std::ios::binary);
    file << text;
    // A full disk may show only when the buffer goes out.
    file.flush();
    if (!file) refuseFile(fileName, errno != 0 ? errno : EIO);
}

}  // namespace engine
