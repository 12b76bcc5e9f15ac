#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>
#include <vector>

#include "hostapi/codes.hpp"
#include "solve/number_text.hpp"
#include "solve/plot/trace_plot.hpp"
#include "solve/report.hpp"
#include "solve/status_text.hpp"

namespace norv {
namespace {

constexpr std::size_t mostRows = 50;  // in a table

const char* const head =
    "<!doctype html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n<style>\n"
    ":root{color-scheme:light dark}\n"
    "body{font:16px/1.5 sans-serif;max-width:56em;margin:2em auto;padding:0 1em}\n"
    "table{border-collapse:collapse;margin:1em 0}\n"
    "td,th{padding:.2em .8em;text-align:left;border-bottom:1px solid #8886}\n"
    "td.n{text-align:right;font-variant-numeric:tabular-nums}\nsvg{max-width:100%;height:auto}\n"
    "</style>\n";

using Cells = std::vector<std::string>;

class Page {
public:
    explicit Page(std::ostream& target) : out_(target) {}

    /// Nothing without lines. @param columns  headings; none for a table of names and values.
    void table(const std::string& title, const Cells& columns, const std::vector<Cells>& lines) {
        if (lines.empty()) return;
        out_ << "<h2>" << escapedText(title) << "</h2>\n<table>\n";
        if (!columns.empty()) {
            out_ << "<tr>";
            for (const std::string& each : columns) out_ << "<th>" << escapedText(each) << "</th>";
            out_ << "</tr>\n";
        }
        for (const Cells& line : lines) {
            out_ << "<tr>";
            for (std::size_t k = 0; k < line.size(); ++k)
                out_ << (k > 0 ? "<td class=\"n\">" : "<td>") << escapedText(line[k]) << "</td>";
            out_ << "</tr>\n";
        }
        out_ << "</table>\n";
    }

private:
    std::ostream& out_;
};

std::vector<Cells> outcomeOf(const RunRecord& run) {
    namespace record = hostapi::head_and_tail;
    std::vector<Cells> lines = {{"status", run.ending.text}};
    if (run.result.check) lines.push_back({"objective", numberText(run.objective(), 10)});
    if (run.bound) lines.push_back({"bound", numberText(*run.bound, 10)});
    if (const auto gap = run.gap()) lines.push_back({"gap", numberText(100.0 * *gap, 3) + " %"});
    lines.push_back({"check", checkText(run.result.check)});
    lines.push_back({"iterations", numberText(run.model().headAndTail(record::iterations))});
    lines.push_back({"reading", numberText(run.times.reading, 3) + " s"});
    lines.push_back({"solving", numberText(run.times.solving, 3) + " s"});
    lines.push_back({"checking", numberText(run.times.checking, 3) + " s"});
    return lines;
}

/// Rows whose side the point touches, those with the largest distance beyond it first.
std::vector<Cells> tightRows(const RunRecord& run) {
    const Model& model = run.model();
    std::vector<std::pair<double, Cells>> found;
    for (std::int32_t i = 0; i < model.nbRows(); ++i) {
        const std::int32_t type = model.rowType(i);
        const Evaluation row = model.evaluateRow(i, model.levels());
        if (type == hostapi::equation_type::free || row.nbErrors != 0) continue;
        const double side = model.rightHandSide(i);
        double beyond = row.value - side;
        if (type == hostapi::equation_type::greater) beyond = -beyond;
        if (type == hostapi::equation_type::equality) beyond = std::fabs(beyond);
        if (beyond < -1e-6 * std::max(1.0, std::fabs(side))) continue;
        found.push_back({beyond,
                         {model.rowName(i), numberText(row.value, 10),
                          std::string(rowTypeText(type)) + ' ' + numberText(side, 10)}});
    }
    std::ranges::stable_sort(found, std::greater(), &std::pair<double, Cells>::first);
    std::vector<Cells> lines;
    for (auto& each : found) {
        if (lines.size() < mostRows) lines.push_back(std::move(each.second));
    }
    return lines;
}

std::vector<Cells> nonZeros(const Model& model) {
    std::vector<Cells> lines;
    for (std::int32_t j = 0; j < model.nbVariables() && lines.size() < mostRows; ++j) {
        const double level = model.levels()[static_cast<std::size_t>(j)];
        if (level != 0.0) lines.push_back({model.variableName(j), numberText(level, 10)});
    }
    return lines;
}

}  // namespace

void writeHtml(std::ostream& out, const RunRecord& run) {
    const std::string title = escapedText(run.settings.model);
    out << head << "<title>" << title << "</title></head><body>\n<h1>" << title << "</h1>\n";
    Page page(out);
    page.table("Outcome", {}, outcomeOf(run));
    writeTracePlot(out, run.trace, "Best value found over time", run.direction());
    if (run.result.check) {
        page.table("Rows at or beyond their sides (50 at most)", {"row", "value", "side"},
                   tightRows(run));
        page.table("Variables that are not 0 (50 at most)", {"variable", "level"},
                   nonZeros(run.model()));
    }
    std::vector<Cells> settings;
    for (const MadeSetting& each : run.allSettings) settings.push_back({each.name, each.value});
    page.table("Settings", {}, settings);
    out << "<p>norvsolve " NORV_VERSION ", " << escapedText(run.linkVersion) << ", "
        << escapedText(run.optimizer) << "</p>\n</body></html>\n";
}

}  // namespace norv
