#include "solve/settings/setting_table.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>
#include <vector>

#include "readers/number_text.hpp"
#include "solve/failure.hpp"
#include "solve/number_text.hpp"

namespace norv {
namespace {

using Kind = SettingRow::Kind;
using Place = SettingPlace;

constexpr const char* search = "Search";
constexpr const char* model = "Model";
constexpr const char* results = "Results";
constexpr const char* log = "Log";
constexpr const char* program = "Program";

// clang-format off
const SettingRow rows[] = {
    {"time-limit", "t timelim maxtime", search, Kind::number, "0 inf", "60",
     "Seconds of search, rounded up to whole ones",
     [](Settings& s) { return Place(&s.solve.timeLimit); }},
    {"wall-limit", "", search, Kind::number, "0 inf", "inf",
     "Seconds from the start of the program, reading included",
     [](Settings& s) { return Place(&s.solve.wallLimit); }},
    {"stop-after", "", search, Kind::number, "0 inf", "inf",
     "Stop when nothing has improved for so many seconds, once there is a point",
     [](Settings& s) { return Place(&s.solve.stopAfter); }},
    {"iteration-limit", "i iterlim maxiter", search, Kind::integer, "0 2147483647", "2000000000",
     "Iteration limit; 2000000000 stands for none",
     [](Settings& s) { return Place(&s.solve.iterationLimit); }},
    {"threads", "", search, Kind::integer, "0 1024", "1", "Threads of the optimizer; 0: all there are",
     [](Settings& s) { return Place(&s.solve.threads); }},
    {"start", "", search, Kind::text, "FILE", "",
     "Starting point by names, as --solution writes it, or a .sol file",
     [](Settings& s) { return Place(&s.solve.startFile); }},
    {"rerun", "", search, Kind::text, "RESULT.json", "",
     "Repeat the run of a --json result and compare the answers",
     [](Settings& s) { return Place(&s.rerun); }, false},

    {"square", "", model, Kind::flag, "", "0",
     "Solve equations: as many as variables, without an objective",
     [](Settings& s) { return Place(&s.solve.reading.isSquareSystem); }},
    {"sos", "", model, Kind::choice, "reformulate refuse", "reformulate",
     "Special ordered sets: solve them as binary variables, or have the link refuse them",
     [](Settings& s) { return Place(&s.solve.reading.keepsSets); }},
    {"intorg-upper", "", model, Kind::choice, "1 inf", "1",
     "Upper bound of .mps integer columns that have no bounds",
     [](Settings& s) { return Place(&s.solve.reading.hasOpenIntegers); }},
    {"objective-number", "objno", model, Kind::integer, "0 2147483647", "1",
     "Which objective of an .nl file counts; 0: none",
     [](Settings& s) { return Place(&s.solve.reading.objective); }},

    {"solution", "", results, Kind::text, "FILE", "",
     "Write the non-zero variables, name<TAB>level a line",
     [](Settings& s) { return Place(&s.output.solution); }},
    {"json", "", results, Kind::text, "FILE", "",
     "Write the result as JSON; - is the standard output, and the log then goes to standard error",
     [](Settings& s) { return Place(&s.output.json); }},
    {"plot", "", results, Kind::text, "FILE.svg", "",
     "Draw the best value found over time; the model may be a solve trace",
     [](Settings& s) { return Place(&s.output.plot); }},
    {"report", "", results, Kind::text, "FILE.html", "", "Write one page that tells about the run",
     [](Settings& s) { return Place(&s.output.report); }},
    {"status-file", "", results, Kind::text, "FILE", "", "Write the link's status file",
     [](Settings& s) { return Place(&s.output.statusFile); }},
    {"write", "", results, Kind::text, "FILE", "",
     "Write a linear or quadratic model as .lp or .mps, without special ordered sets unless "
     "sos=refuse",
     [](Settings& s) { return Place(&s.output.model); }},
    {"wantsol", "", results, Kind::integer, "0 15", "0",
     "Sum of 1: write STUB.sol, 2: print the non-zero variables, 4: print dual values (there are "
     "none), 8: do not print the message",
     [](Settings& s) { return Place(&s.output.wanted); }},

    {"outlev", "", log, Kind::integer, "0 2147483647", "1",
     "0: nothing but errors, and the log where it explains a failure (the default with -AMPL); "
     "from 1 on the log and the summary",
     [](Settings& s) { return Place(&s.output.level); }},
    {"quiet", "q", log, Kind::flag, "", "0", "The same as outlev=0",
     [](Settings& s) { return Place(&s.output.isQuiet); }},
    {"print-solution", "", log, Kind::flag, "", "0", "Print the non-zero variables",
     [](Settings& s) { return Place(&s.output.printsSolution); }},
    {"explain", "", log, Kind::flag, "", "0",
     "Look longer for few rows and bounds that cannot hold together, and write them as an .lp file",
     [](Settings& s) { return Place(&s.output.explains); }},
    {"strict", "", log, Kind::flag, "", "0", "Make warnings about settings errors",
     [](Settings& s) { return Place(&s.output.isStrict); }},

    {"option-file", "o", program, Kind::text, "FILE", "",
     "Option file: settings, a line each; the only place for defvar",
     [](Settings& s) { return Place(&s.solve.optionFile); }, false},
    {"link", "", program, Kind::text, "FILE", "vexcclib64", "The link to load, by name or path",
     [](Settings& s) { return Place(&s.solve.link); }, false},
    {"system-directory", "", program, Kind::text, "FOLDER", "",
     "Where optlocalsolver.def is; by default the program's folder or its installation",
     [](Settings& s) { return Place(&s.solve.systemDirectory); }, false},
    {"help", "h ?", program, Kind::flag, "", "0", "Print this help",
     [](Settings& s) { return Place(&s.showsHelp); }, false},
    {"version", "v", program, Kind::flag, "", "0", "Print the version",
     [](Settings& s) { return Place(&s.showsVersion); }, false},
    {"manual-page", "", program, Kind::flag, "", "0", "Print the manual page, for man",
     [](Settings& s) { return Place(&s.showsManual); }, false},
    {"completion", "", program, Kind::text, "bash", "", "Print completions for the shell",
     [](Settings& s) { return Place(&s.completion); }, false},
};
// clang-format on

std::vector<std::string> wordsOf(const char* text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

[[noreturn]] void refuse(const SettingRow& row, const std::string& value, const std::string& source,
                         const std::string& expected) {
    throw Failure(ExitCode::badInput,
                  source + ": " + row.name + ": found \"" + value + "\", expected " + expected);
}

bool flagOf(const SettingRow& row, const std::string& value, const std::string& source) {
    constexpr std::string_view yes[] = {"", "1", "yes", "true", "on"};
    constexpr std::string_view no[] = {"0", "no", "false", "off"};
    const std::string key = keyOf(value);
    if (std::ranges::find(yes, key) != std::end(yes)) return true;
    if (std::ranges::find(no, key) != std::end(no)) return false;
    refuse(row, value, source, "1 or 0");
}

double numberOf(const SettingRow& row, const std::string& value, const std::string& source) {
    const std::vector<std::string> range = wordsOf(row.values);
    const NumberText number = parseNumber(value);
    const bool isNumber = number.fault == NumberFault::none && !std::isnan(number.value);
    const bool isWhole = row.kind != Kind::integer || number.value == std::floor(number.value);
    const bool isInside =
        number.value >= parseNumber(range[0]).value && number.value <= parseNumber(range[1]).value;
    if (isNumber && isWhole && isInside) return number.value;
    refuse(row, value, source,
           (row.kind == Kind::integer ? "an integer, " : "a number, ") + valuesOf(row));
}

bool choiceOf(const SettingRow& row, const std::string& value, const std::string& source) {
    const std::vector<std::string> choices = wordsOf(row.values);
    const auto found = std::ranges::find(choices, value);
    if (found == choices.end()) refuse(row, value, source, valuesOf(row));
    return found != choices.begin();
}

}  // namespace

std::span<const SettingRow> settingRows() {
    return rows;
}

std::string keyOf(std::string_view name) {
    std::string key;
    for (const char each : name) {
        if (each == '-' || each == '_') continue;
        key += each >= 'A' && each <= 'Z' ? static_cast<char>(each - 'A' + 'a') : each;
    }
    return key;
}

const SettingRow* findSetting(std::string_view name) {
    const std::string key = keyOf(name);
    for (const SettingRow& row : rows) {
        if (keyOf(row.name) == key) return &row;
        for (const std::string& alias : wordsOf(row.aliases)) {
            if (keyOf(alias) == key) return &row;
        }
    }
    return nullptr;
}

std::string valuesOf(const SettingRow& row) {
    const std::vector<std::string> words = wordsOf(row.values);
    switch (row.kind) {
        case Kind::flag:
            return "1 or 0";
        case Kind::integer:
        case Kind::number:
            if (words[1] == "inf" || words[1] == "2147483647") return words[0] + " or more";
            return words[0] + " to " + words[1];
        case Kind::choice:
            return words[0] + " or " + words[1];
        default:
            return row.values;
    }
}

std::string valueOf(const SettingRow& row, const Settings& settings) {
    Settings copy = settings;  // places are those of settings that may be changed
    const SettingPlace place = row.place(copy);
    if (const auto* text = std::get_if<std::string*>(&place)) return **text;
    if (const auto* number = std::get_if<double*>(&place)) return numberText(**number);
    if (const auto* integer = std::get_if<std::int32_t*>(&place))
        return **integer < 0 ? row.initial : std::to_string(**integer);
    const bool isSet = *std::get<bool*>(place);
    return row.kind == Kind::choice ? wordsOf(row.values)[isSet ? 1 : 0] : isSet ? "1" : "0";
}

void assign(const SettingRow& row, const std::string& value, const std::string& source,
            Settings& settings) {
    const SettingPlace place = row.place(settings);
    switch (row.kind) {
        case Kind::flag:
            *std::get<bool*>(place) = flagOf(row, value, source);
            break;
        case Kind::integer:
            *std::get<std::int32_t*>(place) =
                static_cast<std::int32_t>(numberOf(row, value, source));
            break;
        case Kind::number:
            *std::get<double*>(place) = numberOf(row, value, source);
            break;
        case Kind::choice:
            *std::get<bool*>(place) = choiceOf(row, value, source);
            break;
        case Kind::text:
            *std::get<std::string*>(place) = value;
            break;
    }
}

}  // namespace norv
