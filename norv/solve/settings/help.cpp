#include "solve/settings/help.hpp"

#include <algorithm>
#include <sstream>
#include <string_view>

#include "solve/failure.hpp"

namespace norv {
namespace {

using Entry = Catalogue::Entry;

constexpr const char* purpose =
    "Reads a model (.mps, .lp or .nl, plain or gzipped), has the link solve it, and checks the "
    "point.";

constexpr const char* protocolText =
    "norvsolve STUB -AMPL [name=value ...] is how AMPL and other clients of its protocol call it: "
    "the model is in STUB.nl, the result goes to STUB.sol. -s does the same without a client, "
    "-oSTUB names another .sol file, -e does not repeat the settings, -= lists them, -=TEXT those "
    "about TEXT, -! the names alone, -v tells the version, name=? a value and its meaning.";

struct ExitRow {
    ExitCode code;
    const char* meaning;
};
constexpr ExitRow exitRows[] = {
    {ExitCode::solved, "a solution, optimal or feasible; with -AMPL: the .sol file was written"},
    {ExitCode::badInput, "wrong usage or input"},
    {ExitCode::infeasible, "proved infeasible"},
    {ExitCode::noneFound, "no feasible point found within the limits"},
    {ExitCode::failed, "the link or the optimizer failed"},
    {ExitCode::unsupported, "the model uses something that is not supported"},
    {ExitCode::failedCheck, "the point found fails the check"},
    {ExitCode::outputFailed, "a result could not be written"},
    {ExitCode::unbounded, "unbounded"},
    {ExitCode::interrupted, "a second Ctrl+C"},
};

/// "-t, --time-limit"
std::string writtenNames(const Entry& entry) {
    std::string names;
    std::string others;
    if (entry.row != nullptr) {
        std::istringstream aliases(entry.row->aliases);
        for (std::string alias; aliases >> alias;) {
            if (alias.size() == 1) {
                names += '-' + alias + ", ";
            } else {
                others += ", " + alias;
            }
        }
    }
    return names + "--" + entry.name() + others;
}

/// "0 or more, default 60"
std::string valuesAndDefault(const Entry& entry) {
    if (entry.isFlag()) return {};
    const bool isPairs = entry.option != nullptr && entry.option->isPairs;
    if (isPairs) return entry.values() + "; in an option file";
    return entry.values() + ", default " + (entry.initial().empty() ? "none" : entry.initial());
}

std::string meaningOf(const Entry& entry) {
    const std::string values = valuesAndDefault(entry);
    return entry.meaning() + (values.empty() ? "" : " (" + values + ")");
}

/// Prints words in lines of at most 96 characters, all but the first of them indented.
void printWrapped(std::ostream& out, const std::string& text, std::size_t column,
                  std::size_t indent) {
    constexpr std::size_t width = 96;
    std::istringstream words(text);
    bool isFirst = true;
    for (std::string word; words >> word;) {
        if (!isFirst && column + word.size() + 1 > width) {
            out << '\n' << std::string(indent, ' ');
            column = indent;
            isFirst = true;
        }
        out << (isFirst ? "" : " ") << word;
        column += word.size() + (isFirst ? 0 : 1);
        isFirst = false;
    }
    out << '\n';
}

void printEntry(std::ostream& out, const std::string& names, const std::string& meaning) {
    constexpr std::size_t indent = 30;
    const std::string front = "  " + names;
    out << front;
    if (front.size() + 2 > indent) {
        out << '\n' << std::string(indent, ' ');
    } else {
        out << std::string(indent - front.size(), ' ');
    }
    printWrapped(out, meaning, indent, indent);
}

bool contains(const std::string& text, const std::string& part) {
    return keyOf(text).find(keyOf(part)) != std::string::npos;
}

/// Text as man takes it: hyphens and backslashes, and lines that begin with a dot, mean themselves.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char each : text) {
        if (each == '-' || each == '\\') result += '\\';
        if (result.empty() && (each == '.' || each == '\'')) result += "\\&";
        result += each;
    }
    return result;
}

}  // namespace

void printHelp(std::ostream& out, const Catalogue& catalogue) {
    out << "Usage: norvsolve FILE [--name value | --name=value | name=value ...]\n";
    printWrapped(out, purpose, 0, 0);
    out << "FILE may be - for the standard input. Names are the same with - and _, in any case.\n"
           "Settings come from the option file, then from the variable norvsolve_options, then "
           "from\nthe command line; later ones win.\n";
    std::string group;
    for (const Entry& entry : catalogue.entries()) {
        if (entry.group() != group) out << '\n' << (group = entry.group()) << ":\n";
        printEntry(out, writtenNames(entry), meaningOf(entry));
    }
    out << "\nExit codes:\n";
    for (const ExitRow& row : exitRows)
        printEntry(out, std::to_string(static_cast<int>(row.code)), row.meaning);
    out << "\nAMPL:\n  ";
    printWrapped(out, protocolText, 2, 2);
}

void listSettings(std::ostream& out, const Catalogue& catalogue, const std::string& searched) {
    std::vector<Entry> entries = catalogue.entries();
    std::ranges::sort(entries, {}, &Entry::name);
    for (const Entry& entry : entries) {
        const std::string meaning = meaningOf(entry);
        if (!contains(entry.name() + ' ' + meaning, searched)) continue;
        constexpr std::size_t width = 18;
        out << entry.name() << std::string(width - std::min(width - 1, entry.name().size()), ' ')
            << meaning << '\n';
    }
}

void listNames(std::ostream& out, const Catalogue& catalogue) {
    for (const Entry& entry : catalogue.entries()) {
        const std::string aliases = entry.row != nullptr ? entry.row->aliases : "";
        out << entry.name() << (aliases.empty() ? "" : ' ' + aliases) << '\n';
    }
}

void answer(std::ostream& out, const Catalogue& catalogue, const std::string& name,
            const Settings& settings) {
    const Entry entry = catalogue.require(name, "command line");
    const std::vector<MadeSetting> values = catalogue.valuesIn(settings);
    const std::string& value = std::ranges::find(values, entry.name(), &MadeSetting::name)->value;
    out << entry.name() << " = " << value << "\n  " << meaningOf(entry) << '\n';
}

void printManual(std::ostream& out, const Catalogue& catalogue) {
    out << ".TH NORVSOLVE 1 \"\" \"norvsolve " NORV_VERSION
           "\"\n.SH NAME\nnorvsolve \\- solves a "
           "model file through a solver link\n.SH SYNOPSIS\n.B norvsolve\n.I FILE\n"
           "[\\-\\-name value | name=value ...]\n.br\n.B norvsolve\n.I STUB\n\\-AMPL "
           "[name=value ...]\n.SH DESCRIPTION\n"
        << escaped(purpose) << '\n';
    std::string group;
    for (const Entry& entry : catalogue.entries()) {
        if (entry.group() != group) out << ".SH " << (group = entry.group()) << '\n';
        out << ".TP\n.B " << escaped(writtenNames(entry)) << '\n'
            << escaped(meaningOf(entry)) << '\n';
    }
    out << ".SH EXIT STATUS\n";
    for (const ExitRow& row : exitRows)
        out << ".TP\n" << static_cast<int>(row.code) << '\n' << escaped(row.meaning) << '\n';
    out << ".SH AMPL\n" << escaped(protocolText) << '\n';
}

void printCompletion(std::ostream& out, const Catalogue& catalogue, const std::string& shell) {
    if (shell != "bash")
        throw Failure(ExitCode::badInput, "completion: found \"" + shell + "\", expected bash");
    std::string names;
    std::string choices;
    for (const Entry& entry : catalogue.entries()) {
        names += " --" + entry.name();
        if (entry.row != nullptr && entry.row->kind == SettingRow::Kind::choice)
            choices += "        --" + entry.name() + ") words=\"" + entry.row->values + "\" ;;\n";
    }
    out << "# Completions of norvsolve for bash: source this file.\n"
           "_norvsolve() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} "
           "words=\"\"\n"
           "    case $before in\n"
        << choices << "    esac\n    [[ -z $words && $word == -* ]] && words=\"" << names.substr(1)
        << "\"\n"
           "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
           "    [[ -z $words ]] && COMPREPLY=($(compgen -f -- \"$word\"))\n"
           "}\n"
           "complete -o filenames -F _norvsolve norvsolve\n";
}

}  // namespace norv
