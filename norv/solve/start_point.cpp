#include "solve/start_point.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "hostapi/codes.hpp"
#include "readers/input_text.hpp"
#include "readers/number_text.hpp"
#include "readers/read_error.hpp"
#include "solve/number_text.hpp"
#include "solve/point_check.hpp"

namespace norv {
namespace {

/// A file line by line, with places for complaints.
class Lines {
public:
    explicit Lines(const InputText& file) : path_(file.path()), rest_(file.text()) {}

    [[nodiscard]] bool next() {
        if (rest_.empty()) return false;
        line_ = rest_.substr(0, rest_.find('\n'));
        rest_.remove_prefix(std::min(line_.size() + 1, rest_.size()));
        if (line_.ends_with('\r')) line_.remove_suffix(1);
        ++number_;
        return true;
    }
    [[nodiscard]] std::string_view text() const { return line_; }
    [[nodiscard]] double numberAt(std::size_t column) const {
        const NumberText number = parseNumber(line_.substr(column));
        if (number.fault == NumberFault::none && std::isfinite(number.value)) return number.value;
        refuse(column, "a finite number");
    }
    [[noreturn]] void refuse(std::size_t column, const char* expected) const {
        throw ReadError(
            complaint(path_, {number_, column + 1},
                      "found " + quoted(line_.substr(column)) + ", expected " + expected));
    }

private:
    const std::string& path_;
    std::string_view rest_;
    std::string_view line_;
    std::size_t number_ = 0;
};

struct Start {
    std::vector<double> levels;
    std::vector<std::string> unknownNames;
};

/// "name<TAB>level", or blanks between them: a name may hold blanks, a number does not. Only levels
/// other than 0 are named.
void readNamedLevels(Lines lines, const Model& model, Start& start) {
    std::unordered_map<std::string, std::int32_t> variables;
    for (std::int32_t j = 0; j < model.nbVariables(); ++j)
        variables.emplace(model.variableName(j), j);
    while (lines.next()) {
        const std::string_view line = lines.text();
        if (line.empty() || line.starts_with('#')) continue;
        const std::size_t gap = line.find_last_of("\t ");
        if (gap == std::string_view::npos) lines.refuse(0, "a name and its level");
        const double level = lines.numberAt(gap + 1);
        const std::string_view name = line.substr(0, line.find_last_not_of("\t ", gap) + 1);
        const auto found = variables.find(std::string(name));
        if (found == variables.end()) {
            start.unknownNames.emplace_back(name);
        } else {
            start.levels[static_cast<std::size_t>(found->second)] = level;
        }
    }
}

/// The counts behind the message tell where the levels are.
void readSolutionFile(Lines lines, Start& start) {
    const auto require = [&lines](const char* expected) {
        if (!lines.next()) lines.refuse(0, expected);
    };
    while (lines.text() != "Options") require("the word Options, as in a .sol file");
    const auto count = [&] {
        require("a count");
        return static_cast<std::size_t>(std::clamp(lines.numberAt(0), 0.0, 1e9));
    };
    std::size_t nbOptions = count();
    bool hasTolerance = false;
    for (std::size_t k = 0; k < nbOptions; ++k) {
        const bool isMark = count() == 3 && k == 1;
        hasTolerance = hasTolerance || isMark;
        if (isMark) nbOptions -= 2;  // the tolerance counts as two and stands further down
    }
    count();  // rows
    const std::size_t nbDuals = count();
    const std::size_t nbVariables = count();
    const std::size_t nbLevels = count();
    if (hasTolerance) require("a tolerance");
    if (nbVariables != start.levels.size() || nbLevels != nbVariables)
        lines.refuse(0, "a level for each variable of the model");
    for (std::size_t k = 0; k < nbDuals; ++k) require("a dual value");
    for (double& each : start.levels) {
        require("a level");
        each = lines.numberAt(0);
    }
}

bool looksLikeSolutionFile(std::string_view text) {
    return text.find("\nOptions\n") != std::string_view::npos ||
           text.find("\nOptions\r\n") != std::string_view::npos;
}

/// Moves levels into their bounds. @return how many moved.
std::int32_t project(const Model& model, std::vector<double>& levels) {
    std::int32_t nbMoved = 0;
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        double& level = levels[static_cast<std::size_t>(j)];
        const double before = level;
        const std::int32_t type = model.variableType(j);
        const bool isSemi = type == hostapi::variable_type::semiContinuous ||
                            type == hostapi::variable_type::semiInteger;
        if (isSemi && level == 0.0) continue;
        level = std::max(model.lower(j), std::min(model.upper(j), level));
        nbMoved += level != before ? 1 : 0;
    }
    return nbMoved;
}

std::string describe(const Model& model, const Start& start, std::int32_t nbMoved) {
    const PointCheck check = checkLevels(model, start.levels);
    std::string text;
    if (check.passed) {
        text = "feasible";
        const Evaluation objective = model.evaluateObjective(start.levels);
        if (model.hasObjective() && objective.nbErrors == 0)
            text += ", objective " + numberText(objective.value);
    } else {
        text = std::to_string(check.nbViolatedRows) + " of " + std::to_string(model.nbRows()) +
               " rows violated, most by " + numberText(check.largestViolation, 6) + ": " +
               check.worst;
    }
    if (nbMoved > 0) {
        text += "; " + std::to_string(nbMoved) +
                (nbMoved == 1 ? " value moved into its bounds" : " values moved into their bounds");
    }
    constexpr std::size_t mostNames = 3;
    const std::size_t nbUnknown = start.unknownNames.size();
    for (std::size_t k = 0; k < std::min(nbUnknown, mostNames); ++k)
        text += (k == 0 ? "; unknown names: " : ", ") + start.unknownNames[k];
    if (nbUnknown > mostNames) text += " and " + std::to_string(nbUnknown - mostNames) + " more";
    return text;
}

}  // namespace

std::string takeStart(LoadedModel& loaded, const std::string& path) {
    Model& model = loaded.model;
    const InputText file = InputText::fromFile(path);
    Start start;
    start.levels.assign(model.levels().size(), 0.0);
    if (looksLikeSolutionFile(file.text())) {
        readSolutionFile(Lines(file), start);
    } else {
        readNamedLevels(Lines(file), model, start);
    }
    const std::int32_t nbMoved = project(model, start.levels);
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        const double level = start.levels[static_cast<std::size_t>(j)];
        model.setLevel(j, level);
        if (loaded.forLink) loaded.forLink->setLevel(j, level);
    }
    return "Start: " + describe(model, start, nbMoved) + ".\n";
}

}  // namespace norv
