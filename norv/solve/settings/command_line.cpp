#include "solve/settings/command_line.hpp"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "norv/file_path.hpp"
#include "readers/input_text.hpp"
#include "readers/read_error.hpp"
#include "solve/failure.hpp"
#include "solve/solve_run.hpp"

namespace norv {
namespace {

const char* const definitionFile = "optlocalsolver.def";
const char* const commandLine = "command line";
constexpr std::string_view blanks = " \t\r\n";

bool looksLikeName(std::string_view word) {
    const auto isPart = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-';
    };
    return !word.empty() && !(word[0] >= '0' && word[0] <= '9') &&
           std::ranges::all_of(word, isPart);
}

/// Goes over the words of a command line.
class WordReader {
public:
    WordReader(int argc, const char* const* argv, const Catalogue& catalogue)
        : words_(argv + (argc > 0 ? 1 : 0), argv + argc), catalogue_(catalogue) {}

    Request read() {
        while (next_ < words_.size() && request_.fault.empty()) readWord(words_[next_++]);
        // A client looks for its answer also when an earlier word is at fault.
        for (; next_ < words_.size(); ++next_) {
            if (words_[next_] == "-AMPL") request_.isClient = request_.writesSolution = true;
        }
        return std::move(request_);
    }

private:
    void readWord(const std::string& word) {
        if (isAfterDashes_ || word == "-") return takeFile(word);
        if (word == "--") {
            isAfterDashes_ = true;
            return;
        }
        if (takeProtocolWord(word)) return;
        if (word.starts_with("--")) return takeOption(word.substr(2), word);
        if (word.starts_with('-')) return takeOption(word.substr(1), word);
        takeBareWord(word);
    }

    /// The words that AMPL's drivers know beside "key=value".
    bool takeProtocolWord(const std::string& word) {
        if (word == "-AMPL") {
            request_.isClient = request_.writesSolution = true;
        } else if (word == "-s") {
            request_.writesSolution = true;
        } else if (word == "-e") {
            request_.echoes = false;
        } else if (word.starts_with("-o") && word.size() > 2) {
            request_.writesSolution = true;
            request_.solutionStub = word.substr(2);
        } else if (word.starts_with("-=")) {
            request_.task = Request::Task::listSettings;
            request_.searched = word.substr(2);
        } else if (word == "-!") {
            request_.task = Request::Task::listNames;
        } else {
            return false;
        }
        return true;
    }

    /// What follows one hyphen or two.
    void takeOption(const std::string& text, const std::string& word) {
        const std::size_t equals = text.find('=');
        const std::string name = text.substr(0, equals);
        if (name.size() < 2 && word.starts_with("--")) return fail(catalogue_.unknownText(word));
        if (name.size() > 1 && !word.starts_with("--"))
            return fail("found \"" + word + "\", expected --" + name + " or " + name + "=value");
        if (equals != std::string::npos) return say(name, text.substr(equals + 1));
        const auto entry = catalogue_.find(name);
        if (!entry) return fail(catalogue_.unknownText(name));
        if (entry->isFlag()) return say(name, "1");
        if (next_ == words_.size()) return fail(name + ": expected a value");
        say(name, words_[next_++]);
    }

    void takeBareWord(const std::string& word) {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        if (equals != std::string::npos && looksLikeName(name)) return takeAssignment(word, equals);
        if (equals == 0) return fail("found \"" + word + "\", expected name=value");
        const bool hasEquals = next_ < words_.size() && words_[next_].starts_with('=');
        if (looksLikeName(name) && hasEquals) {
            const std::string value = words_[next_++].substr(1);
            return value.empty() ? takeValueOf(name) : say(name, value);
        }
        if (request_.file.empty() || !looksLikeName(word)) return takeFile(word);
        const auto entry = catalogue_.find(word);
        if (!entry) return fail(catalogue_.unknownText(word));
        if (entry->isFlag()) return say(word, "1");
        takeValueOf(word);
    }

    void takeAssignment(const std::string& word, std::size_t equals) {
        const std::string name = word.substr(0, equals);
        const std::string value = word.substr(equals + 1);
        if (value == "?") {
            request_.task = Request::Task::answer;
            request_.questions.push_back(name);
            return;
        }
        const auto entry = catalogue_.find(name);
        // "outlev= 1", as some clients write it; an empty text is a value.
        const bool isOpen = value.empty() && entry && !entry->takesEmpty() && !entry->isFlag();
        if (isOpen && next_ < words_.size()) return takeValueOf(name);
        say(name, value);
    }

    void takeValueOf(const std::string& name) {
        if (next_ == words_.size()) return fail(name + ": expected a value");
        say(name, words_[next_++]);
    }

    void takeFile(const std::string& word) {
        if (!request_.file.empty())
            return fail("found a second file \"" + word + "\" after \"" + request_.file + '"');
        request_.file = word;
    }

    void say(const std::string& name, const std::string& value) {
        request_.said.push_back({name, value, commandLine});
    }
    void fail(const std::string& reason) { request_.fault = commandLine + (": " + reason); }

    std::vector<std::string> words_;
    const Catalogue& catalogue_;
    std::size_t next_ = 0;
    bool isAfterDashes_ = false;
    Request request_;
};

/// Takes the words of assignments off the front of a text.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool atEnd() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
        return rest_.empty();
    }
    std::string name() { return std::string(take(rest_.find_first_of(" \t\r\n="))); }
    bool skipEquals() {
        if (atEnd() || rest_.front() != '=') return false;
        take(1);
        return true;
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
    std::string_view take(std::size_t length) {
        const std::string_view front = rest_.substr(0, length);
        rest_.remove_prefix(front.size());
        return front;
    }

    std::string_view rest_;
};

/// The name at the front of a line of an option file, and what is behind it.
std::pair<std::string, std::string> splitLine(std::string_view line) {
    Scanner scanner(line);
    if (scanner.atEnd()) return {};
    std::string name = scanner.name();
    scanner.skipEquals();
    const auto value = scanner.atEnd() ? std::string() : scanner.value();
    return {std::move(name), value.value_or("")};
}

void take(const SaidSetting& said, const Catalogue& catalogue, Settings& settings) {
    const Catalogue::Entry entry = catalogue.require(said.name, said.source);
    if (entry.row != nullptr) {
        assign(*entry.row, said.value, said.source, settings);
    } else {
        settings.solve.assignments.push_back(
            {assignmentText(entry.name(), said.value), said.source});
    }
    const auto made = std::ranges::find(settings.made, entry.name(), &MadeSetting::name);
    if (made != settings.made.end()) settings.made.erase(made);
    settings.made.push_back({entry.name(), said.value});
}

/// Tells of the link's options in the option file which of them are set, and to what, unless
/// something later set them. Lines that are refused, and pairs, are left to the log.
void addMade(const std::vector<Assignment>& lines, Settings& settings) {
    Options options;
    const std::string folder = systemDirectory(settings.solve.systemDirectory);
    if (lines.empty() || !options.readDefinition(folder + definitionFile)) return;
    for (const Assignment& each : lines) options.set(each.text, each.source);
    for (const OptionDescription& each : options.descriptions()) {
        const bool isNews =
            std::ranges::find(settings.made, each.name, &MadeSetting::name) == settings.made.end();
        if (options.isSet(each.name) && !each.isPairs && isNews)
            settings.made.push_back({each.name, each.value});
    }
}

/// The last option file that is named, or an empty path.
std::string optionFileIn(const std::vector<SaidSetting>& said) {
    std::string path;
    for (const SaidSetting& each : said) {
        const SettingRow* const row = findSetting(each.name);
        if (row != nullptr && std::string_view(row->name) == "option-file") path = each.value;
    }
    return path;
}

}  // namespace

Request readCommandLine(int argc, const char* const* argv, const Catalogue& catalogue) {
    return WordReader(argc, argv, catalogue).read();
}

std::vector<SaidSetting> readVariable(std::string_view text, const std::string& source,
                                      const Catalogue& catalogue) {
    std::vector<SaidSetting> said;
    Scanner scanner(text);
    while (!scanner.atEnd()) {
        SaidSetting setting = {scanner.name(), {}, source};
        const auto entry = catalogue.find(setting.name);
        const bool hasEquals = scanner.skipEquals();
        if (!hasEquals && entry && entry->isFlag()) {
            setting.value = "1";
        } else {
            if (setting.name.empty() || scanner.atEnd())
                throw Failure(ExitCode::badInput,
                              source + ": " + setting.name + ": expected name=value");
            const auto value = scanner.value();
            if (!value)
                throw Failure(ExitCode::badInput,
                              source + ": " + setting.name + ": found a quote without its end");
            setting.value = *value;
        }
        said.push_back(std::move(setting));
    }
    return said;
}

std::vector<SaidSetting> readOptionFile(const std::string& path, std::vector<Assignment>& rest) {
    std::vector<SaidSetting> said;
    const InputText file = InputText::fromFile(path);
    std::string_view text = file.text();
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    for (std::size_t number = 1; !text.empty(); ++number) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        const std::size_t start = line.find_first_not_of(blanks);
        if (start == std::string_view::npos || line[start] == '*' || line[start] == '#') continue;
        const std::string source = path + ":" + std::to_string(number);
        auto [name, value] = splitLine(line);
        const SettingRow* const row = findSetting(name);
        if (row == nullptr) {
            rest.push_back({std::string(line), source});
        } else if (!row->isForFiles) {
            throw Failure(ExitCode::badInput,
                          source + ": " + row->name + " cannot be set in an option file");
        } else {
            said.push_back({std::move(name), std::move(value), source});
        }
    }
    return said;
}

Settings settingsOf(const Request& request, const std::string& variable,
                    const Catalogue& catalogue) {
    Settings settings;
    settings.model = request.file;
    std::vector<SaidSetting> said = readVariable(variable, "norvsolve_options", catalogue);
    said.insert(said.end(), request.said.begin(), request.said.end());
    std::vector<Assignment> rest;
    if (const std::string path = optionFileIn(said); !path.empty()) {
        const std::vector<SaidSetting> inFile = readOptionFile(path, rest);
        for (const SaidSetting& each : inFile) take(each, catalogue, settings);
        settings.solve.ownsOptions = !inFile.empty();
        if (settings.solve.ownsOptions) settings.solve.fileAssignments = rest;
    }
    for (const SaidSetting& each : said) take(each, catalogue, settings);
    addMade(rest, settings);
    return settings;
}

std::string systemDirectory(const std::string& given) {
    if (!given.empty()) return given + '/';
    const std::filesystem::path program = filePath(programDirectory());
    if (std::filesystem::exists(program / definitionFile)) return fileName(program);
    return fileName((program / NORV_DEFINITIONS).lexically_normal() / "");
}

std::string definitionFileFor(int argc, const char* const* argv) {
    std::string given;
    for (int k = 1; k < argc; ++k) {
        const std::string_view word = argv[k];
        const std::size_t equals = word.find('=');
        if (keyOf(word.substr(0, equals)) != "systemdirectory") continue;
        if (equals != std::string_view::npos) {
            given = word.substr(equals + 1);
        } else if (k + 1 < argc) {
            given = argv[k + 1];
        }
    }
    return systemDirectory(given) + definitionFile;
}

}  // namespace norv
