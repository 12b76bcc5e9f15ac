#include "solve/rerun.hpp"

#include <nlohmann/json.hpp>

#include "readers/input_text.hpp"
#include "readers/read_error.hpp"
#include "solve/number_text.hpp"

namespace norv {

struct Rerun::Result {
    nlohmann::json json;
};

Rerun::Rerun(const std::string& path) : path_(path), result_(std::make_unique<Result>()) {
    const InputText file = InputText::fromFile(path);
    result_->json = nlohmann::json::parse(file.text(), nullptr, /*allow_exceptions=*/false);
    const nlohmann::json& json = result_->json;
    for (const char* member : {"file", "made", "status", "objective", "variables"}) {
        if (!json.is_object() || !json.contains(member))
            throw ReadError(path + ": found no member \"" + member +
                            "\", expected a result of norvsolve --json");
    }
    if (json.value("exitCode", nlohmann::json()).is_null())
        throw ReadError(path + ": found a run that did not end, expected one that did");
}

Rerun::~Rerun() = default;

void Rerun::addTo(Request& request) const {
    std::vector<SaidSetting> said;
    for (const auto& [name, value] : result_->json["made"].items()) {
        const SettingRow* const row = findSetting(name);
        const std::string group = row != nullptr ? row->group : "";
        const bool isOutput = group == "Results" || group == "Log";
        if (!isOutput && name != "rerun" && value.is_string())
            said.push_back({name, value.get<std::string>(), path_});
    }
    request.said.insert(request.said.begin(), said.begin(), said.end());
    if (request.file.empty()) request.file = result_->json["file"].get<std::string>();
}

std::string Rerun::compare(const RunRecord& run) const {
    const nlohmann::json& json = result_->json;
    if (json["status"] != run.ending.text)
        return "another answer: " + run.ending.text + ", not " + json["status"].get<std::string>();
    if (!run.result.check) return "the same answer";
    if (json["objective"] != run.objective()) {
        return "another answer: objective " + numberText(run.objective()) + ", not " +
               json["objective"].dump();
    }
    const auto levels = run.model().levels();
    if (json["variables"].size() != levels.size()) return "another model: other variables";
    for (std::size_t j = 0; j < levels.size(); ++j) {
        const nlohmann::json& variable = json["variables"][j];
        if (variable["level"] == levels[j]) continue;
        return "another answer: variable " +
               run.model().variableName(static_cast<std::int32_t>(j)) + " is " +
               numberText(levels[j]) + ", not " + variable["level"].dump();
    }
    return "the same answer";
}

}  // namespace norv
