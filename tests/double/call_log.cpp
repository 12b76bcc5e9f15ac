#include "double/call_log.hpp"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace doubles {

namespace {

constexpr std::size_t longestLine = 99;

const std::vector<std::string> writers = {"nevLogStat", "nevLogStatPChar", "nevLog", "nevLogPChar"};

/// All that change something outside the model.
const std::vector<std::string> acts = {"nevStat*",
                                       "nmoObjStyleSet",
                                       "nmoObjReformSet",
                                       "nmoIndexBaseSet",
                                       "nmoSet*",
                                       "nmoModelStatSet",
                                       "nmoSolveStatSet",
                                       "nmoCompleteSolution",
                                       "optReadDefinition",
                                       "optEOLOnlySet",
                                       "optEchoSet",
                                       "optReadParameterFile",
                                       "optClearMessages",
                                       "optSetIntStr",
                                       "XCreate",
                                       "XFree",
                                       "huxXCreate",
                                       "huxXFree",
                                       "ls_create_solver",
                                       "ls_delete_solver",
                                       "ls_set_*",
                                       "ls_add_callback",
                                       "ls_add_phase",
                                       "ls_phase_set*",
                                       "ls_expr_set_int_value",
                                       "ls_expr_set_double_value",
                                       "ls_save_environment",
                                       "ls_solve",
                                       "ls_stop",
                                       "ls_interrupt"};

const std::vector<std::string> statuses = {"nmoModelStatSet", "nmoSolveStatSet", "optSetIntStr"};

bool matches(const std::string& name, const std::string& pattern) {
    return pattern.back() == '*' ? name.starts_with(pattern.substr(0, pattern.size() - 1))
                                 : name == pattern;
}

bool matchesOne(const std::string& name, const std::vector<std::string>& patterns) {
    return std::any_of(patterns.begin(), patterns.end(),
                       [&name](const auto& pattern) { return matches(name, pattern); });
}

/// A record of a solve trace without what no test can foresee.
std::string withoutTime(const std::string& record) {
    std::size_t seconds = 0;
    for (int field = 0; field < 3; ++field) {
        seconds = record.find(", ", seconds);
        if (seconds == std::string::npos) return record;
        seconds += 2;
    }
    return record.substr(0, seconds) + "t" +
           record.substr(std::min(record.find(',', seconds), record.size()));
}

}  // namespace

CallLog::CallLog(const std::string& kind, const std::vector<std::string>& show,
                 std::vector<std::string> hide)
    : shown(writers), hidden(std::move(hide)), waitsForSolver(kind == "setup") {
    const std::vector<std::string>& more = kind == "setup" ? statuses : acts;
    shown.insert(shown.end(), more.begin(), more.end());
    shown.insert(shown.end(), show.begin(), show.end());
}

void CallLog::abbreviate(const std::string& path, const std::string& text) {
    abbreviations.emplace_back(path, text);
}

void CallLog::begin(const std::string& step, bool isShown_) {
    flush();
    isShown = isShown_;
    hasSolver = !waitsForSolver || step != "ready";
}

void CallLog::add(const std::string& name, const std::string& arguments,
                  const std::string& result) {
    hasSolver = hasSolver || name == "ls_create_solver";
    if (!isShown || !hasSolver || !matchesOne(name, shown) || matchesOne(name, hidden)) return;
    addCall(name + "(" + arguments + ")" + result);
}

void CallLog::addCall(const std::string& written) {
    const std::string call = abbreviated(written);
    if (line.size() + call.size() > longestLine) flush();
    line += (line.empty() ? "" : " ") + call;
}

void CallLog::addLines(const std::string& lines) {
    if (!isShown) return;
    flush();
    all += abbreviated(lines);
}

void CallLog::end(const char* entryPoint, int result) {
    isShown = isShown || result != 0;
    if (!isShown || (result == 0 && waitsForSolver)) return;
    addCall(entryPoint + (" = " + std::to_string(result)));
    flush();
}

void CallLog::addFile(const std::filesystem::path& file) {
    flush();
    std::ifstream stream(file);
    all += "file " + file.filename().string() + ":\n";
    for (std::string text; std::getline(stream, text);)
        all +=
            "  " + abbreviated(text[0] >= '0' && text[0] <= '9' ? withoutTime(text) : text) + "\n";
}

std::string CallLog::text() {
    flush();
    return all;
}

std::string CallLog::abbreviated(std::string text) const {
    for (const auto& [path, shortText] : abbreviations) {
        for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path, at))
            text.replace(at, path.size(), shortText);
    }
    return text;
}

void CallLog::flush() {
    if (!line.empty()) all += line + "\n";
    line.clear();
}

}  // namespace doubles
