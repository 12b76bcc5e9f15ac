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

Json checkObject(const PointCheck& check) {
    return {{"passed", check.passed},
            {"largestViolation", check.largestViolation},
            {"worst", check.worst},
            {"violated", check.nbViolated},
            {"withinToleranceOnly", check.loose},
            {"tolerance", checkTolerance}};
}

Json variableArray(const Model& model) {
    Json variables = Json::array();
    const auto levels = model.levels();
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        variables.push_back(
            {{"name", model.variableName(j)}, {"level", levels[static_cast<std::size_t>(j)]}});
    }
    return variables;
}

}  // namespace

void writeJson(std::ostream& out, const RunRecord& run) {
    const Model& model = run.model();
    const SolveResult& solveResult = run.result;
    const std::optional<PointCheck>& check = solveResult.check;
    namespace record = hostapi::head_and_tail;
    const Json result = {
        {"file", run.settings.model},
        {"rows", model.nbRows()},
        {"columns", model.nbVariables()},
        {"modelStatus", statusObject(model.modelStatus(), modelStatusText(model.modelStatus()))},
        {"solveStatus", statusObject(model.solveStatus(), solveStatusText(model.solveStatus()))},
        {"meaning", solveResult.verdict.text},
        {"objective", check ? Json(model.headAndTail(record::objective)) : Json()},
        {"iterations", model.headAndTail(record::iterations)},
        {"seconds", model.headAndTail(record::seconds)},
        {"check", check ? checkObject(*check) : Json()},
        {"variables", check ? variableArray(model) : Json::array()},
    };
    // Names are bytes of the model file and need not be UTF-8; JSON must be.
    out << result.dump(2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace) << '\n';
}

}  // namespace norv
