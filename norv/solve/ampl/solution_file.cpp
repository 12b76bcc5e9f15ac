#include "solve/ampl/solution_file.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#include "solve/number_text.hpp"

namespace norv {
namespace {

/// A suffix of rows (1) with real values (4).
constexpr std::int32_t realRowSuffix = 5;

struct Activity {
    std::int32_t row;
    double value;
};
/// Those that are not 0: what a suffix leaves out is 0.
std::vector<Activity> activitiesOf(const AmplSolution& solution) {
    std::vector<Activity> activities;
    for (std::size_t i = 0; i < solution.activities.size(); ++i) {
        if (solution.activities[i] != 0.0)
            activities.push_back({static_cast<std::int32_t>(i), solution.activities[i]});
    }
    return activities;
}

/// The block that repeats the model's own options and tells the sizes of what follows: a count of
/// options, the options, rows, dual values, variables, levels.
std::vector<std::int32_t> optionBlock(const NlHeader& header, const AmplSolution& solution) {
    // A tolerance counts as two options and stands at the end of the block.
    const std::size_t nbOptions = header.options.size() + (header.boundTolerance ? 2 : 0);
    std::vector<std::int32_t> block = {static_cast<std::int32_t>(nbOptions)};
    block.insert(block.end(), header.options.begin(), header.options.end());
    const auto nbLevels = static_cast<std::int32_t>(solution.levels.size());
    block.insert(block.end(), {header.nbRows, 0, header.nbVariables, nbLevels});
    return block;
}

void writeText(std::ostream& out, const NlHeader& header, const AmplSolution& solution) {
    out << solution.message << "\n\n";
    if (!header.options.empty()) {
        out << "Options\n";
        for (const std::int32_t each : optionBlock(header, solution)) out << each << '\n';
        if (header.boundTolerance) out << numberText(*header.boundTolerance) << '\n';
    }
    for (const double level : solution.levels) out << numberText(level) << '\n';
    out << "objno 0 " << solution.code << '\n';
    const std::vector<Activity> activities = activitiesOf(solution);
    if (activities.empty()) return;
    out << "suffix " << realRowSuffix << ' ' << activities.size() << ' '
        << activitySuffix.size() + 1 << " 0 0\n"
        << activitySuffix << '\n';
    for (const Activity& each : activities)
        out << each.row << ' ' << numberText(each.value) << '\n';
}

/// The records of a binary file: each between two copies of its length.
class Records {
public:
    Records(std::ostream& target, bool isBigEndian)
        : out_(target), swaps_(isBigEndian != (std::endian::native == std::endian::big)) {}

    Records& add(std::string_view text) {
        content_ += text;
        return *this;
    }
    template <class Number>
    Records& add(Number value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        if (swaps_) std::reverse(std::begin(bytes), std::end(bytes));
        content_.append(bytes, sizeof value);
        return *this;
    }
    void finish() { finish(content_.size()); }
    void finish(std::size_t announcedLength) {
        std::string record;
        record.swap(content_);
        add(static_cast<std::int32_t>(announcedLength));
        out_ << content_ << record << content_;
        content_.clear();
    }

private:
    std::ostream& out_;
    bool swaps_;
    std::string content_;
};

void writeBinary(std::ostream& out, const NlHeader& header, const AmplSolution& solution) {
    Records records(out, header.isBigEndian);
    records.add(std::string_view("binary")).finish();
    records.add(std::string_view(solution.message)).finish();
    records.finish();
    if (!header.options.empty()) {
        records.add(std::string_view("Options"));
        const std::vector<std::int32_t> block = optionBlock(header, solution);
        for (const std::int32_t each : block) records.add(each);
        if (header.boundTolerance) records.add(*header.boundTolerance);
        // Readers know about the tolerance; the announced length leaves it out.
        records.finish(std::string_view("Options").size() + block.size() * sizeof(std::int32_t));
    }
    records.finish();  // the dual values
    for (const double level : solution.levels) records.add(level);
    records.finish();
    records.add(std::int32_t{0}).add(solution.code).finish();
    const std::vector<Activity> activities = activitiesOf(solution);
    if (activities.empty()) return;
    records.add(std::string_view("\nSuffix\n")).add(realRowSuffix);
    records.add(static_cast<std::int32_t>(activities.size()));
    records.add(static_cast<std::int32_t>(activitySuffix.size() + 1)).add(std::int32_t{0});
    records.add(activitySuffix).add(std::string_view("\0", 1));
    for (const Activity& each : activities) records.add(each.row).add(each.value);
    records.finish();
}

/// An empty line would end the message; a blank keeps it.
std::string withoutEmptyLines(std::string message) {
    for (std::size_t k = 0; k < message.size(); ++k) {
        const bool isEmptyLine = message[k] == '\n' && (k == 0 || message[k - 1] == '\n');
        if (isEmptyLine) message.insert(k, 1, ' ');
    }
    return message;
}

}  // namespace

void writeAmplSolution(std::ostream& out, const NlHeader& header, const AmplSolution& solution) {
    if (header.isBinary) return writeBinary(out, header, solution);
    AmplSolution readable = solution;
    readable.message = withoutEmptyLines(solution.message);
    writeText(out, header, readable);
}

}  // namespace norv
