#include "solve/ampl/keywords.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iomanip>
#include <limits>

#include "hostapi/codes.hpp"
#include "solve/failure.hpp"

namespace norv {
namespace {

/// One "key=value".
struct Setting {
    std::string key;  ///< in small letters
    std::string value;
    std::string source;

    [[noreturn]] void refuse(const std::string& reason) const {
        throw Failure(ExitCode::badCommandLine,
                      source + ": " + key + ": " + reason + " (norvsolve -= lists the keywords)");
    }

    template <class Number>
    [[nodiscard]] Number number(Number lowest, Number highest, const char* expected) const {
        Number number{};
        const char* const end = value.data() + value.size();
        const auto [stop, error] = std::from_chars(value.data(), end, number);
        if (error != std::errc() || stop != end || !(number >= lowest && number <= highest))
            refuse("found \"" + value + "\", expected " + expected);
        return number;
    }
};

void takeTimeLimit(AmplSettings& settings, const Setting& setting) {
    settings.solve.timeLimit = setting.number(0.0, std::numeric_limits<double>::infinity(),
                                              "a number of seconds, 0 or more");
}

void takeIterationLimit(AmplSettings& settings, const Setting& setting) {
    settings.solve.iterationLimit = setting.number<std::int32_t>(
        0, std::numeric_limits<std::int32_t>::max(), "a number of iterations, 0 to 2147483647");
}

void takeThreads(AmplSettings& settings, const Setting& setting) {
    settings.solve.threads = setting.number<std::int32_t>(1, 1024, "an integer, 1 to 1024");
}

void takeLogLevel(AmplSettings& settings, const Setting& setting) {
    settings.logLevel = setting.number<std::int32_t>(0, std::numeric_limits<std::int32_t>::max(),
                                                     "an integer, 0 or more");
}

void takeWanted(AmplSettings& settings, const Setting& setting) {
    settings.wanted =
        setting.number<std::int32_t>(0, wanted_solution::all, "a sum of 1, 2, 4 and 8");
}

void takeOptionFile(AmplSettings& settings, const Setting& setting) {
    settings.solve.optionFile = setting.value;
}

void takeLink(AmplSettings& settings, const Setting& setting) {
    settings.solve.link = setting.value;
}

void takeSets(AmplSettings& settings, const Setting& setting) {
    if (setting.value != "reformulate" && setting.value != "refuse")
        setting.refuse("found \"" + setting.value + "\", expected reformulate or refuse");
    settings.solve.reading.keepsSets = setting.value == "refuse";
}

struct Keyword {
    const char* name;
    const char* values;
    const char* purpose;
    void (*take)(AmplSettings& settings, const Setting& setting);
};

constexpr Keyword keywords[] = {
    {"iterlim", "0 to 2147483647, default none", "Iteration limit", takeIterationLimit},
    {"link", "a text, default vexcclib64", "The link, by name or path", takeLink},
    {"maxtime", "0 to inf, default 60", "The same as timelim", takeTimeLimit},
    {"optionfile", "a text, default empty", "Option file of the link", takeOptionFile},
    {"outlev", "0 or more, default 0", "0: no output but errors; 1: the log and a summary",
     takeLogLevel},
    {"sos", "reformulate or refuse, default reformulate",
     "Special ordered sets (suffixes sosno and ref): solve them as binary variables, or refuse",
     takeSets},
    {"threads", "1 to 1024, default 1", "Number of threads", takeThreads},
    {"timelim", "0 to inf, default 60", "Time limit in seconds, rounded up to whole ones",
     takeTimeLimit},
    {"timelimit", "0 to inf, default 60", "The same as timelim", takeTimeLimit},
    {"wantsol", "0 to 15, default 0",
     "Sum of 2: print the non-zero variables, 8: do not print the solve message; 1 and 4 change "
     "nothing",
     takeWanted},
};

std::string inSmallLetters(std::string_view text) {
    std::string result(text);
    for (char& each : result) {
        if (each >= 'A' && each <= 'Z') each = static_cast<char>(each - 'A' + 'a');
    }
    return result;
}

/// Takes the words of assignments off the front of a text.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool atEnd() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
        return rest_.empty();
    }
    std::string key() { return std::string(take(rest_.find_first_of(ends))); }
    void skipEquals() {
        if (!atEnd() && rest_.front() == '=') take(1);
    }
    /// Nothing for a quote without its end.
    std::optional<std::string> value() {
        const char quote = rest_.front();
        if (quote != '"' && quote != '\'') return std::string(take(rest_.find_first_of(blanks)));
        std::string text;
        while (true) {
            take(1);
            const std::size_t end = rest_.find(quote);
            if (end == std::string_view::npos) return std::nullopt;
            text += take(end);
            take(1);
            if (!rest_.starts_with(quote)) return text;
            text += quote;
        }
    }

private:
    static constexpr std::string_view blanks = " \t\r\n";
    static constexpr std::string_view ends = " \t\r\n=";

    std::string_view take(std::size_t length) {
        const std::string_view front = rest_.substr(0, length);
        rest_.remove_prefix(front.size());
        return front;
    }

    std::string_view rest_;
};

void takeSetting(AmplSettings& settings, const Setting& setting) {
    const auto* const found =
        std::find_if(std::begin(keywords), std::end(keywords),
                     [&](const Keyword& keyword) { return keyword.name == setting.key; });
    if (found != std::end(keywords)) return found->take(settings, setting);
    settings.solve.assignments.push_back(
        {assignmentText(setting.key, setting.value), setting.source});
}

}  // namespace

void takeKeywords(AmplSettings& settings, std::string_view text, const std::string& source) {
    Scanner scanner(text);
    while (!scanner.atEnd()) {
        Setting setting = {inSmallLetters(scanner.key()), {}, source};
        scanner.skipEquals();
        if (setting.key.empty() || scanner.atEnd()) setting.refuse("expected key=value");
        const std::optional<std::string> value = scanner.value();
        if (!value) setting.refuse("found a quote without its end");
        setting.value = *value;
        takeSetting(settings, setting);
    }
}

std::string joinedKeywords(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        const std::size_t equals = word.find('=');
        const bool isWhole = equals != std::string::npos && equals > 0 && equals + 1 < word.size();
        text += isWhole ? assignmentText(word.substr(0, equals), word.substr(equals + 1)) : word;
        text += ' ';
    }
    return text;
}

void listKeywords(std::ostream& out) {
    std::vector<OptionDescription> all = definedOptions(SolveSettings()).descriptions();
    for (const Keyword& each : keywords) all.push_back({each.name, each.values, each.purpose});
    std::sort(all.begin(), all.end(), [](const OptionDescription& a, const OptionDescription& b) {
        return a.name < b.name;
    });
    out << "Keywords of norvsolve: key=value after the stub, or in the environment variable "
           "norvsolve_options.\n\n";
    for (const OptionDescription& each : all) {
        out << std::left << std::setw(17) << each.name << each.purpose << " (" << each.values
            << ")\n";
    }
}

}  // namespace norv
