#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace doubles {

/// Calls as a text, one after another, broken into lines.
class CallLog {
public:
    /// @param kind  which calls are shown, as in whole_call.hpp; `show` adds, `hide` removes.
    CallLog(const std::string& kind, const std::vector<std::string>& show,
            std::vector<std::string> hide);

    /// From now on `text` is written in place of `path`.
    void abbreviate(const std::string& path, const std::string& text);

    void begin(const std::string& step, bool isShown);
    void add(const std::string& name, const std::string& arguments, const std::string& result);
    /// Whole lines, of whatever kind.
    void addLines(const std::string& lines);
    /// An entry point is over. Failures are shown always, of a setup nothing else.
    void end(const char* entryPoint, int result);
    /// The contents of a file that the link wrote. Times, the fourth field of a record, become "t".
    void addFile(const std::filesystem::path& file);

    [[nodiscard]] std::string text();

private:
    [[nodiscard]] bool shows(const std::string& name) const;
    void addCall(const std::string& call);
    [[nodiscard]] std::string abbreviated(std::string text) const;
    void flush();

    std::vector<std::string> shown, hidden;
    std::vector<std::pair<std::string, std::string>> abbreviations;
    bool isShown = true;
    bool hasSolver = false;  ///< whether this step has come to the optimizer's creation
    bool waitsForSolver;
    std::string line;  ///< being filled
    std::string all;
};

}  // namespace doubles
