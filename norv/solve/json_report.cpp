#include <cmath>
#include <nlohmann/json.hpp>

#include "hostapi/codes.hpp"
#include "solve/report.hpp"
#include "solve/status_text.hpp"

namespace norv {
namespace {

using Json = nlohmann::ordered_json;

Json statusObject(std::int32_t code, const std::string& text) {
    return {{"code", code}, {"text", text}};
}

/// Integral numbers without a point; null for what JSON has no word for.
Json number(double value) {
    constexpr double exact = 9007199254740992.0;  // beyond, doubles leave integers out
    if (!std::isfinite(value)) return {};
    const bool isIntegral = value == std::floor(value) && std::fabs(value) < exact;
    return isIntegral ? Json(static_cast<std::int64_t>(value)) : Json(value);
}

Json orNull(const std::optional<double>& value) {
    return value ? number(*value) : Json();
}

/// What is known at the end of the run only.
Json orNull(const RunRecord& run, Json value) {
    return run.isSolved ? std::move(value) : Json();
}

Json checkObject(const PointCheck& check) {
    return {{"passed", check.passed},
            {"largestViolation", check.largestViolation},
            {"worst", check.worst},
            {"violated", check.nbViolated},
            {"withinToleranceOnly", check.loose},
            {"tolerance", checkTolerance}};
}

Json sizesObject(const ModelSizes& sizes, const Model& model) {
    return {{"equations", sizes.rows.equations},
            {"inequalities", sizes.rows.inequalities},
            {"logicalRows", sizes.rows.logical},
            {"freeRows", sizes.rows.free},
            {"quadraticRows", sizes.rows.quadratic},
            {"nonlinearRows", sizes.rows.nonlinear},
            {"continuous", sizes.columns.continuous},
            {"binary", sizes.columns.binary},
            {"integer", sizes.columns.integer},
            {"semiContinuous", sizes.columns.semiContinuous},
            {"coefficients", model.nbCoefficients()},
            {"specialOrderedSets", model.specialOrderedSets().size()}};
}

Json settingsObject(const std::vector<MadeSetting>& settings) {
    Json object = Json::object();
    for (const MadeSetting& each : settings) object[each.name] = each.value;
    return object;
}

Json traceArray(const TraceFile& trace) {
    Json incumbents = Json::array();
    std::optional<double> found;
    std::optional<double> bound;
    for (const TraceRecord& record : trace.records) {
        const bool isNews = record.bestFound != found || record.bestBound != bound;
        found = record.bestFound;
        bound = record.bestBound;
        if (!isNews) continue;
        incumbents.push_back(
            {{"seconds", record.seconds}, {"objective", orNull(found)}, {"bound", orNull(bound)}});
    }
    return incumbents;
}

Json variableArray(const Model& model) {
    Json variables = Json::array();
    const auto levels = model.levels();
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        const double level = levels[static_cast<std::size_t>(j)];
        const bool isDiscrete = model.variableType(j) != hostapi::variable_type::continuous;
        variables.push_back(
            {{"name", model.variableName(j)}, {"level", isDiscrete ? number(level) : Json(level)}});
    }
    return variables;
}

Json activityArray(const Model& model) {
    Json rows = Json::array();
    for (std::int32_t i = 0; i < model.nbRows(); ++i) {
        const Evaluation row = model.evaluateRow(i, model.levels());
        rows.push_back({{"name", model.rowName(i)},
                        {"activity", row.nbErrors == 0 ? Json(row.value) : Json()},
                        {"type", rowTypeText(model.rowType(i))},
                        {"rightHandSide", model.rightHandSide(i)}});
    }
    return rows;
}

}  // namespace

void writeJson(std::ostream& out, const RunRecord& run) {
    const Model& model = run.model();
    const std::optional<PointCheck>& check = run.result.check;
    namespace record = hostapi::head_and_tail;
    const bool minimises = model.sense() == hostapi::objective_sense::minimise;
    const Json result = {
        {"file", run.settings.model},
        {"versions",
         {{"norvsolve", NORV_VERSION}, {"link", run.linkVersion}, {"optimizer", run.optimizer}}},
        {"rows", model.nbRows()},
        {"columns", model.nbVariables()},
        {"sizes", sizesObject(run.sizes, model)},
        {"sense", minimises ? "minimise" : "maximise"},
        {"status", run.ending.text},
        {"exitCode", orNull(run, static_cast<int>(run.ending.exitCode()))},
        {"modelStatus",
         orNull(run, statusObject(model.modelStatus(), modelStatusText(model.modelStatus())))},
        {"solveStatus",
         orNull(run, statusObject(model.solveStatus(), solveStatusText(model.solveStatus())))},
        {"meaning", run.result.verdict.text},
        {"objective", check ? number(run.objective()) : Json()},
        {"bound", orNull(run.bound)},
        {"gap", orNull(run.gap())},
        {"iterations", orNull(run, number(model.headAndTail(record::iterations)))},
        {"seconds", orNull(run, number(model.headAndTail(record::seconds)))},
        {"timings",
         {{"reading", run.times.reading},
          {"solving", run.times.solving},
          {"checking", run.times.checking}}},
        {"settings", settingsObject(run.allSettings)},
        {"made", settingsObject(run.settings.made)},
        {"check", check ? checkObject(*check) : Json()},
        {"trace", traceArray(run.trace)},
        {"variables", check ? variableArray(model) : Json::array()},
        {"activities", check ? activityArray(model) : Json::array()},
    };
    // Names are bytes of the model file and need not be UTF-8; JSON must be.
    out << result.dump(2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace) << '\n';
}

}  // namespace norv
