#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace doubles {

/// Calls as a text, one after another, broken into lines. The calls met most have short forms:
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
    CallLog(const std::string& kind, const std::vector<std::string>& rules);

    /// From now on `text` is written in place of `path`.
    void abbreviate(const std::string& path, const std::string& text);

    void begin(const std::string& step, bool isShown);
    void add(const std::string& name, const std::string& arguments, const std::string& result);
    /// Text between blanks.
    void addPiece(const std::string& piece);
    /// Whole lines, of whatever kind.
    void addLines(const std::string& lines);
    /// An entry point is over. Failures are shown always, of a setup nothing else.
    void end(int result);
    /// The lines of a file that the link wrote, of a trace without its two head lines unless
    /// "heads" are to be shown. Times, the fourth field of a record, become "t".
    void addFile(const std::filesystem::path& file);

    [[nodiscard]] std::string text();

private:
    [[nodiscard]] bool shows(const std::string& name);
    [[nodiscard]] std::string abbreviated(std::string text) const;
    void flush();

    std::vector<std::string> rules_;
    std::map<std::string, bool> shows_;  ///< what the rules say, by name
    std::vector<std::pair<std::string, std::string>> abbreviations_;
    bool isSetup_;
    bool isShown_ = true;
    bool hasSolver_ = false;  ///< whether this step has come to the optimizer's creation
    std::string line_;        ///< being filled
    std::string all_;
};

}  // namespace doubles
