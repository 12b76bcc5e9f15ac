#include "solve/plot/trace_plot.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "solve/plot/axis.hpp"

namespace norv {
namespace {

// Of the picture, in pixels.
constexpr double width = 800.0;
constexpr double height = 480.0;
constexpr double topEdge = 72.0;
constexpr double bottomEdge = height - 60.0;
constexpr double rightEdge = width - 30.0;
constexpr double characterWidth = 7.0;  // of a label, at most

/// Classes of the colours below.
const char* const foundColour = "found";
const char* const boundColour = "bound";
const char* const violatedColour = "violated";
const char* const style =
    "<style>.page{fill:#fff}text{fill:#222}.faint{fill:#555}.grid{stroke:#e3e3e3}.axis{stroke:#444}"
    ".found{stroke:#1f5fa8}.point{fill:#1f5fa8}.bound{stroke:#c2571a}.none{fill:#f3e3d6}"
    ".violated{stroke:#8a3f8a}"
    "@media(prefers-color-scheme:dark){.page{fill:#161a1e}text{fill:#ddd}.faint{fill:#aaa}"
    ".grid{stroke:#333a40}.axis{stroke:#999}.found{stroke:#6db3f2}.point{fill:#6db3f2}"
    ".bound{stroke:#f0975a}.none{fill:#3a2a1e}.violated{stroke:#d08fd0}}</style>\n";
const char* const thick = R"( stroke-width="2")";
const char* const dots = R"( stroke-width="2" stroke-dasharray="2 3")";
const char* const thickDashes = R"( stroke-width="2" stroke-dasharray="6 4")";

/// A value that an axis can take: what lies between two of these is neither infinite nor lost.
double drawable(double value) {
    return std::fabs(value) < 1e-280 ? 0.0 : std::clamp(value, -1e300, 1e300);
}

std::string shortText(double value, int nbDigits = 10) {
    char text[32];
    const auto [end, error] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, nbDigits);
    return error == std::errc() ? std::string(text, end) : std::string();
}

/// A coordinate, to the hundredth of a pixel.
std::string pixels(double value) {
    return shortText(std::round(value * 100.0) / 100.0);
}

/// The time axis has the unit in which its numbers stay small.
struct TimeUnit {
    const char* name;
    double seconds;
    double upTo;  ///< seconds
};
constexpr TimeUnit timeUnits[] = {{"s", 1.0, 180.0}, {"min", 60.0, 10800.0}, {"h", 3600.0, 1e300}};

const TimeUnit& unitFor(double seconds) {
    return *std::find_if(std::begin(timeUnits), std::end(timeUnits) - 1,
                         [seconds](const TimeUnit& unit) { return seconds <= unit.upTo; });
}

/// One of the two series of a trace, from its first value on.
struct Series {
    std::vector<double> seconds;
    std::vector<double> values;
};

Series seriesOf(const TraceFile& trace, std::optional<double> TraceRecord::*member) {
    Series series;
    for (const TraceRecord& record : trace.records) {
        if (!(record.*member)) continue;
        series.seconds.push_back(record.seconds);
        series.values.push_back(*(record.*member));
    }
    return series;
}

class Picture {
public:
    Picture(std::ostream& target, const TraceFile& trace)
        : out_(target),
          found_(seriesOf(trace, &TraceRecord::bestFound)),
          bound_(seriesOf(trace, &TraceRecord::bestBound)),
          infeasible_(trace.infeasible),
          duration_(trace.records.empty() ? 0.0 : drawable(trace.records.back().seconds)),
          unit_(unitFor(duration_)),
          times_(Axis::between(0.0, (duration_ > 0.0 ? duration_ : 1.0) / unit_.seconds)),
          values_(Axis::around(allValues())),
          leftEdge_(labelMargin()) {}

    void draw(const std::string& title, const std::string& direction) {
        open();
        text(leftEdge_, 28.0, R"(font-size="17" font-weight="bold")", title);
        text(leftEdge_, 50.0, R"(class="faint")",
             (direction.empty() ? "" : direction + ", ") + summary());
        drawSearchForPoint();
        drawAxes();
        drawViolated();
        if (!bound_.values.empty()) drawSteps(bound_, boundColour, thickDashes);
        drawSteps(found_, foundColour, thick);
        drawPoints();
        drawLegend();
        out_ << "</svg>\n";
    }

private:
    [[nodiscard]] std::vector<double> allValues() const {
        // The last value found comes last: it tells the axis what matters.
        std::vector<double> all = bound_.values;
        all.insert(all.end(), found_.values.begin(), found_.values.end());
        std::transform(all.begin(), all.end(), all.begin(), drawable);
        return all.empty() ? std::vector<double>{0.0} : all;
    }
    [[nodiscard]] double labelMargin() const {
        std::size_t longest = 0;
        for (const Tick& tick : values_.ticks()) longest = std::max(longest, tick.label.size());
        return 44.0 + characterWidth * static_cast<double>(longest);
    }
    [[nodiscard]] double x(double seconds) const {
        return leftEdge_ + (rightEdge - leftEdge_) * times_.position(seconds / unit_.seconds);
    }
    [[nodiscard]] double y(double value) const {
        return bottomEdge - (bottomEdge - topEdge) * values_.position(drawable(value));
    }
    [[nodiscard]] std::string timeText(double seconds) const {
        return shortText(seconds / unit_.seconds, 4) + ' ' + unit_.name;
    }

    [[nodiscard]] std::string summary() const {
        if (found_.values.empty()) return "no feasible point in " + timeText(duration_);
        std::size_t k = found_.values.size() - 1;
        while (k > 0 && found_.values[k - 1] == found_.values.back()) --k;
        return "best found " + shortText(found_.values.back()) + " after " +
               timeText(found_.seconds[k]) + ", end after " + timeText(duration_);
    }

    void open() {
        out_ << R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" << pixels(width)
             << R"(" height=")" << pixels(height) << R"(" viewBox="0 0 )" << pixels(width) << ' '
             << pixels(height) << R"(" font-family="sans-serif" font-size="12">)" << '\n'
             << style << R"(<rect width="100%" height="100%" class="page"/>)" << '\n';
    }
    void text(double atX, double atY, const std::string& attributes, const std::string& content) {
        out_ << "<text x=\"" << pixels(atX) << "\" y=\"" << pixels(atY) << "\" " << attributes
             << '>' << escapedText(content) << "</text>\n";
    }
    void line(double fromX, double fromY, double toX, double toY, const char* colour,
              const char* attributes = "") {
        out_ << "<line x1=\"" << pixels(fromX) << "\" y1=\"" << pixels(fromY) << "\" x2=\""
             << pixels(toX) << "\" y2=\"" << pixels(toY) << "\" class=\"" << colour << '"'
             << attributes << "/>\n";
    }

    /// As long as there is no point, there is nothing to draw but that.
    void drawSearchForPoint() {
        const double end = found_.values.empty() ? duration_ : found_.seconds.front();
        const double extent = x(end) - leftEdge_;
        if (extent < 1.0) return;
        out_ << "<rect class=\"none\" x=\"" << pixels(leftEdge_) << "\" y=\"" << pixels(topEdge)
             << "\" width=\"" << pixels(extent) << "\" height=\"" << pixels(bottomEdge - topEdge)
             << "\"/>\n";
        constexpr double roomForWords = 150.0;
        if (extent > roomForWords)
            text(leftEdge_ + 8.0, topEdge + 18.0, R"(class="faint")", "no feasible point yet");
    }

    /// On a scale of its own: 0 is the bottom, where the line ends when there is a point.
    void drawViolated() {
        if (infeasible_.empty()) return;
        const double end = found_.values.empty() ? duration_ : found_.seconds.front();
        double most = 1.0;
        for (const Infeasibility& each : infeasible_) most = std::max(most, each.nbViolated);
        const auto level = [&](const Infeasibility& each) {
            return pixels(bottomEdge - 0.8 * (bottomEdge - topEdge) * each.nbViolated / most);
        };
        const auto place = [&](double seconds) { return pixels(x(std::min(seconds, end))); };
        out_ << "<path fill=\"none\" class=\"" << violatedColour << '"' << dots << " d=\"M"
             << place(infeasible_.front().seconds) << ' ' << level(infeasible_.front());
        for (std::size_t k = 1; k < infeasible_.size(); ++k) {
            if (infeasible_[k].nbViolated == infeasible_[k - 1].nbViolated) continue;
            out_ << 'H' << place(infeasible_[k].seconds) << 'V' << level(infeasible_[k]);
        }
        out_ << 'H' << place(end);
        if (!found_.values.empty()) out_ << 'V' << pixels(bottomEdge);
        out_ << "\"/>\n";
        constexpr double roomForWords = 250.0;
        if (x(end) - leftEdge_ < roomForWords) return;
        text(leftEdge_ + 8.0, topEdge + 36.0, R"(class="faint")",
             shortText(infeasible_.front().nbViolated) + " of " +
                 shortText(infeasible_.front().nbConstraints) + " constraints violated, then " +
                 shortText(infeasible_.back().nbViolated));
    }

    void drawAxes() {
        const bool hasValues = !found_.values.empty() || !bound_.values.empty();
        for (const Tick& tick : values_.ticks()) {
            if (!hasValues) break;
            line(leftEdge_, y(tick.value), rightEdge, y(tick.value), "grid");
            text(leftEdge_ - 8.0, y(tick.value) + 4.0, R"(text-anchor="end")", tick.label);
        }
        for (const Tick& tick : times_.ticks()) {
            const double at = x(tick.value * unit_.seconds);
            line(at, bottomEdge, at, bottomEdge + 5.0, "axis");
            text(at, bottomEdge + 20.0, R"(text-anchor="middle")", tick.label);
        }
        line(leftEdge_, bottomEdge, rightEdge, bottomEdge, "axis");
        line(leftEdge_, topEdge, leftEdge_, bottomEdge, "axis");
        text((leftEdge_ + rightEdge) / 2.0, bottomEdge + 44.0, R"(text-anchor="middle")",
             std::string("time (") + unit_.name + ")");
        const double middle = (topEdge + bottomEdge) / 2.0;
        text(18.0, middle,
             R"(text-anchor="middle" transform="rotate(-90 18 )" + pixels(middle) + ")\"",
             values_.isLogarithmic() ? "objective (logarithmic)" : "objective");
    }

    /// A value holds until the next one replaces it, the last one to the end.
    void drawSteps(const Series& series, const char* colour, const char* attributes) {
        if (series.values.empty()) return;
        out_ << "<path fill=\"none\" class=\"" << colour << '"' << attributes << " d=\"M"
             << pixels(x(series.seconds.front())) << ' ' << pixels(y(series.values.front()));
        for (std::size_t k = 1; k < series.values.size(); ++k) {
            if (series.values[k] == series.values[k - 1]) continue;
            out_ << 'H' << pixels(x(series.seconds[k])) << 'V' << pixels(y(series.values[k]));
        }
        out_ << 'H' << pixels(x(duration_)) << "\"/>\n";
    }
    void drawPoints() {
        for (std::size_t k = 0; k < found_.values.size(); ++k) {
            if (k > 0 && found_.values[k] == found_.values[k - 1]) continue;
            out_ << "<circle cx=\"" << pixels(x(found_.seconds[k])) << "\" cy=\""
                 << pixels(y(found_.values[k])) << "\" r=\"3.5\" class=\"point\"/>\n";
        }
    }
    void drawLegend() {
        const auto entry = [this](double atY, const char* colour, const char* attributes,
                                  const char* name) {
            line(rightEdge - 104.0, atY - 4.0, rightEdge - 76.0, atY - 4.0, colour, attributes);
            text(rightEdge - 70.0, atY, "", name);
        };
        if (!bound_.values.empty() && !found_.values.empty())
            entry(28.0, foundColour, thick, "best found");
        if (!bound_.values.empty()) entry(46.0, boundColour, thickDashes, "best bound");
        if (!infeasible_.empty()) entry(64.0, violatedColour, dots, "violated");
    }

    std::ostream& out_;
    Series found_;
    Series bound_;
    const std::vector<Infeasibility>& infeasible_;
    double duration_;  ///< seconds
    const TimeUnit& unit_;
    Axis times_;  ///< in `unit`
    Axis values_;
    double leftEdge_;
};

}  // namespace

std::string escapedText(const std::string& text) {
    std::string result;
    for (const char each : text) {
        switch (each) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += each >= 0 && each < ' ' ? ' ' : each;
        }
    }
    return result;
}

void writeTracePlot(std::ostream& out, const TraceFile& trace, const std::string& title,
                    const std::string& direction) {
    Picture(out, trace).draw(title, direction);
}

}  // namespace norv
