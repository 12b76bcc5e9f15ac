#include "double/call_log.hpp"

#include <fstream>
#include <map>

#include "double/exchange.hpp"

namespace doubles {

namespace {

constexpr const char* ofSetup =
    "nevLogStat nevLogStatPChar nevLog nevLogPChar nmoModelStatSet nmoSolveStatSet optSetIntStr";
/// All that change something outside the model.
constexpr const char* ofRuns =
    "nevLogStat nevLogStatPChar nevLog nevLogPChar nmoModelStatSet nmoSolveStatSet optSetIntStr "
    "nevStat* nmoObjStyleSet nmoObjReformSet nmoIndexBaseSet nmoSet* nmoCompleteSolution "
    "optReadDefinition optEOLOnlySet optEchoSet optReadParameterFile optClearMessages XCreate "
    "XFree huxXCreate huxXFree ls_create_solver ls_delete_solver ls_set_* ls_add_callback "
    "ls_add_phase ls_phase_set* ls_expr_set_int_value ls_expr_set_double_value "
    "ls_save_environment ls_solve ls_stop ls_interrupt";

const std::map<std::string, std::string> shortForms = {
    {"nevLog", "log "},       {"nevLogPChar", "log+ "},      {"nevLogStat", "both "},
    {"find", "find "},        {"nevLogStatPChar", "both+ "}, {"nmoModelStatSet", "model="},
    {"CnmoXCheck", "check "}, {"CnevXCheck", "check "},      {"CXCheck", "check "},
    {"ChuxXCheck", "check "}, {"nmoSolveStatSet", "solve="}};

bool fits(const std::string& name, std::string_view pattern) {
    return pattern.back() == '*' ? name.starts_with(pattern.substr(0, pattern.size() - 1))
                                 : name == pattern;
}

/// A record of a solve trace without what no test can foresee.
std::string withoutTime(const std::string& record) {
    const std::vector<std::string> fields = split(record, ", ");
    if (fields.size() != 6 || record.find_first_not_of("0123456789") != fields[0].size())
        return record;
    return record.substr(0, fields[0].size() + 6) + ", t, " + fields[4] + ", " + fields[5];
}

}  // namespace

CallLog::CallLog(const std::string& kind, const std::vector<std::string>& rules)
    : rules_(split(kind == "setup" ? ofSetup : ofRuns, " ")), isSetup_(kind == "setup") {
    rules_.insert(rules_.end(), rules.begin(), rules.end());
}

void CallLog::begin(const std::string& step, bool isShown) {
    lines_.flush();
    isShown_ = isShown;
    hasSolver_ = !isSetup_ || step != "ready";
}

bool CallLog::shows(const std::string& name) {
    const auto [place, isNew] = shows_.try_emplace(name, false);
    for (std::size_t k = 0; k < rules_.size() && isNew; ++k) {
        const bool hides = rules_[k][0] == '-';
        if (fits(name, std::string_view(rules_[k]).substr(hides ? 1 : 0))) place->second = !hides;
    }
    return place->second;
}

void CallLog::add(const std::string& name, const std::string& arguments,
                  const std::string& result) {
    hasSolver_ = hasSolver_ || name == "ls_create_solver";
    if (!isShown_ || !hasSolver_ || !shows(name)) return;
    if (name == "nevLogStatPChar" && arguments == "\"\\n\"") return addPiece("\\n");
    const auto found = shortForms.find(name);
    addPiece(found != shortForms.end() ? found->second + arguments + result
                                       : name + "(" + arguments + ")" + result);
}

std::string CallLog::abbreviated(std::string text) const {
    for (const auto& [path, shortText] : abbreviations_) text = replaced(text, path, shortText);
    return text;
}

void CallLog::end(int result) {
    isShown_ = isShown_ || result != 0;
    if (!isShown_ || (result == 0 && isSetup_)) return;
    addPiece("->" + std::to_string(result));
    lines_.flush();
}

void CallLog::addFile(const std::filesystem::path& file) {
    lines_.flush();
    addPiece(file.filename().string() + ":");
    std::ifstream stream(file);
    int nbHeads = shows("heads") ? 2 : 0;
    for (std::string text; std::getline(stream, text);)
        if (text[0] != '*' || ++nbHeads > 2) addPiece("| " + withoutTime(text));
    lines_.flush();
}

}  // namespace doubles
