#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

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
    CallLog(const std::string& kind, const std::vector<std::string>& rules);

    /// From now on `text` is written in place of `path`.
    void abbreviate(const std::string& path, const std::string& text) {
        abbreviations_.emplace_back(path, text);
    }

    void begin(const std::string& step, bool isShown);
    void add(const std::string& name, const std::string& arguments, const std::string& result);
    /// Text between blanks.
    void addPiece(const std::string& piece) { lines_.addPiece(abbreviated(piece)); }
    /// Whole lines, of whatever kind.
    void addLines(const std::string& lines) {
        if (isShown_) lines_.addLines(abbreviated(lines));
    }
    /// An entry point is over. Failures are shown always, of a setup nothing else.
    void end(int result);
    /// The lines of a file that the link wrote, of a trace without its two head lines unless
    /// "heads" are to be shown. Times, the fourth field of a record, become "t".
    void addFile(const std::filesystem::path& file);

    [[nodiscard]] std::string text() { return lines_.text(); }

private:
    [[nodiscard]] bool shows(const std::string& name);
    [[nodiscard]] std::string abbreviated(std::string text) const;

    std::vector<std::string> rules_;
    std::map<std::string, bool> shows_;  ///< what the rules say, by name
    std::vector<std::pair<std::string, std::string>> abbreviations_;
    bool isSetup_;
    bool isShown_ = true;
    bool hasSolver_ = false;  ///< whether this step has come to the optimizer's creation
    Lines lines_;
};

}  // namespace doubles
