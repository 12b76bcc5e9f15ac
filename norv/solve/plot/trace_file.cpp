#include "solve/plot/trace_file.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "readers/read_error.hpp"

namespace norv {
namespace {

constexpr std::string_view opening = "* solvetrace file ";

/// The fields of one record line: "lineNum, seriesID, node, seconds, bestFound, bestBound".
class Fields {
public:
    Fields(const std::string& filePath, std::size_t lineNumber, std::string_view line)
        : path_(filePath), number_(lineNumber), length_(line.size()), rest_(line) {}

    std::string_view next(const char* expected) {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size()));
        place_ = {number_, length_ - rest_.size() + 1};
        const std::string_view field = rest_.substr(0, rest_.find(','));
        rest_.remove_prefix(std::min(field.size() + 1, rest_.size()));
        if (field.empty()) refuse("the end of the line", expected);
        return field;
    }
    double nextNumber(const char* expected) {
        const std::string_view field = next(expected);
        double value = 0.0;
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
        const bool isNumber = error == std::errc() && end == field.data() + field.size();
        if (!isNumber || !std::isfinite(value)) refuse(quoted(field), expected);
        return value;
    }
    std::optional<double> nextValue(const char* expected) {
        const Fields before = *this;
        if (next(expected) == "na") return std::nullopt;
        rest_ = before.rest_;
        return nextNumber(expected);
    }
    [[noreturn]] void refuse(const std::string& found, const char* expected) const {
        throw ReadError(complaint(path_, place_, "found " + found + ", expected " + expected));
    }

private:
    const std::string& path_;
    std::size_t number_;
    std::size_t length_;
    std::string_view rest_;
    Place place_{};
};

TraceRecord readRecord(Fields fields, const TraceFile& trace) {
    fields.nextNumber("the number of a record");
    fields.next("the letter of a series");
    fields.nextNumber("a count of nodes");
    TraceRecord record;
    record.seconds = fields.nextNumber("the time in seconds");
    const double before = trace.records.empty() ? 0.0 : trace.records.back().seconds;
    if (record.seconds < before) fields.refuse("an earlier time", "times in order");
    record.bestFound = fields.nextValue("the best value found, or na");
    record.bestBound = fields.nextValue("the best bound, or na");
    return record;
}

std::string instanceOf(std::string_view firstLine) {
    constexpr std::string_view mark = " Instance = ";
    const std::size_t place = firstLine.rfind(mark);
    return place == std::string_view::npos ? ""
                                           : std::string(firstLine.substr(place + mark.size()));
}

}  // namespace

bool looksLikeTrace(std::string_view content) noexcept {
    return content.starts_with(opening);
}

TraceFile readTrace(const InputText& file) {
    TraceFile trace;
    std::string_view rest = file.text();
    for (std::size_t number = 1; !rest.empty(); ++number) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (number == 1) trace.instance = instanceOf(line);
        if (line.empty() || line.starts_with('*')) continue;
        trace.records.push_back(readRecord({file.path(), number, line}, trace));
    }
    return trace;
}

}  // namespace norv
