#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "double/exchange.hpp"

namespace doubles {

/// A text of pieces that share lines as far as they fit, and of lines of their own.
class Lines {
public:
    void addPiece(const std::string& piece) {
        if (line_.size() + 1 + piece.size() > 100) flush();
        line_ += (line_.empty() ? "" : " ") + piece;
    }
    void flush() {
        if (!line_.empty()) all_ += line_ + "\n";
        line_.clear();
    }
    /// Whole lines, each with its end.
    void addLines(const std::string& lines) {
        flush();
        all_ += lines;
    }
    [[nodiscard]] std::string text() {
        flush();
        return all_;
    }

private:
    std::string line_, all_;
};

/// What is shown at first of setups, and of runs: all that change something outside the model.
inline constexpr const char* ofSetup =
    "nevLogStat nevLogStatPChar nevLog nevLogPChar nmoModelStatSet nmoSolveStatSet optSetIntStr";
inline constexpr const char* ofRuns =
    "nevLogStat nevLogStatPChar nevLog nevLogPChar nmoModelStatSet nmoSolveStatSet optSetIntStr "
    "nevStat* nmoObjStyleSet nmoObjReformSet nmoIndexBaseSet nmoSet* nmoCompleteSolution "
    "optReadDefinition optEOLOnlySet optEchoSet optReadParameterFile optClearMessages XCreate "
    "XFree huxXCreate huxXFree ls_create_solver ls_delete_solver ls_set_* ls_add_callback "
    "ls_add_phase ls_phase_set* ls_expr_set_int_value ls_expr_set_double_value "
    "ls_save_environment ls_solve ls_stop ls_interrupt";

inline const std::map<std::string, std::string> shortForms = {
    {"nevLog", "log "},       {"nevLogPChar", "log+ "},      {"nevLogStat", "both "},
    {"find", "find "},        {"nevLogStatPChar", "both+ "}, {"nmoModelStatSet", "model="},
    {"CnmoXCheck", "check "}, {"CnevXCheck", "check "},      {"CXCheck", "check "},
    {"ChuxXCheck", "check "}, {"nmoSolveStatSet", "solve="}};

/// Calls as a text, one after another. The calls met most have short forms:
///   log "…" | both "…"     nevLog, nevLogStat; "log+", "both+": the forms that end no line; of
///                          these the bare line end to both: \n
///   model=N | solve=N      nmoModelStatSet, nmoSolveStatSet
///   find NAME | check "…"  of the bindings
///   ->N                    the end of vexReadyAPI, vexCallSolver
class CallLog {
public:
    /// @param kind   which calls are shown, as in whole_call.hpp.
    /// @param rules  more of them: a pattern shows, one behind '-' hides; the last that fits
    /// counts.
    CallLog(const std::string& kind, const std::vector<std::string>& rules)
        : rules_(split(kind == "setup" ? ofSetup : ofRuns, " ")), isSetup_(kind == "setup") {
        rules_.insert(rules_.end(), rules.begin(), rules.end());
    }

    /// From now on `text` is written in place of `path`.
    void abbreviate(const std::string& path, const std::string& text) {
        abbreviations_.emplace_back(path, text);
    }

    void begin(const std::string& step, bool isShown) {
        lines_.flush();
        isShown_ = isShown;
        hasSolver_ = !isSetup_ || step != "ready";
    }

    void add(const std::string& name, const std::string& arguments, const std::string& result) {
        hasSolver_ = hasSolver_ || name == "ls_create_solver";
        if (!isShown_ || !hasSolver_ || !shows(name)) return;
        if (name == "nevLogStatPChar" && arguments == "\"\\n\"") return addPiece("\\n");
        const auto found = shortForms.find(name);
        addPiece(found != shortForms.end() ? found->second + arguments + result
                                           : name + "(" + arguments + ")" + result);
    }

    /// Text between blanks.
    void addPiece(const std::string& piece) { lines_.addPiece(abbreviated(piece)); }
    /// Whole lines, of whatever kind.
    void addLines(const std::string& lines) {
        if (isShown_) lines_.addLines(abbreviated(lines));
    }

    /// An entry point is over. Failures are shown always, of a setup nothing else.
    void end(int result) {
        isShown_ = isShown_ || result != 0;
        if (!isShown_ || (result == 0 && isSetup_)) return;
        addPiece("->" + std::to_string(result));
        lines_.flush();
    }

    /// The lines of a file that the link wrote, of a trace without its two head lines unless
    /// "heads" are to be shown. Times, the fourth field of a record, become "t".
    void addFile(const std::filesystem::path& file) {
        lines_.flush();
        addPiece(file.filename().string() + ":");
        std::ifstream stream(file);
        int nbHeads = shows("heads") ? 2 : 0;
        for (std::string text; std::getline(stream, text);)
            if (text[0] != '*' || ++nbHeads > 2) addPiece("| " + withoutTime(text));
        lines_.flush();
    }

    [[nodiscard]] std::string text() { return lines_.text(); }

private:
    [[nodiscard]] bool shows(const std::string& name) {
        const auto [place, isNew] = shows_.try_emplace(name, false);
        for (std::size_t k = 0; k < rules_.size() && isNew; ++k) {
            const bool hides = rules_[k][0] == '-';
            const std::string pattern = rules_[k].substr(hides ? 1 : 0);
            const bool isBeginning = pattern.back() == '*';
            if (isBeginning ? name.starts_with(pattern.substr(0, pattern.size() - 1))
                            : name == pattern)
                place->second = !hides;
        }
        return place->second;
    }

    [[nodiscard]] std::string abbreviated(std::string text) const {
        for (const auto& [path, shortText] : abbreviations_) text = replaced(text, path, shortText);
        return text;
    }

    /// A record of a solve trace without what no test can foresee.
    static std::string withoutTime(const std::string& record) {
        const std::vector<std::string> fields = split(record, ", ");
        if (fields.size() != 6 || record.find_first_not_of("0123456789") != fields[0].size())
            return record;
        return record.substr(0, fields[0].size() + 6) + ", t, " + fields[4] + ", " + fields[5];
    }

    std::vector<std::string> rules_;
    std::map<std::string, bool> shows_;  ///< what the rules say, by name
    std::vector<std::pair<std::string, std::string>> abbreviations_;
    bool isSetup_;
    bool isShown_ = true;
    bool hasSolver_ = false;  ///< whether this step has come to the optimizer's creation
    Lines lines_;
};

}  // namespace doubles
