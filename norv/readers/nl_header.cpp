#include "readers/nl_header.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <string>

namespace norv {

namespace {

/// One line of the header: numbers, then perhaps a comment.
class Line {
public:
    explicit Line(NlInput& source) : input_(source), offset_(source.offset()) {
        const bool isMissing = input_.nbBytesLeft() == 0;
        const std::string_view line = input_.restOfLine();
        if (isMissing) refuse("the end of the file", "ten lines of header");
        const char* cursor = line.data();
        const char* const end = line.data() + line.size();
        while (nbNumbers_ < numbers_.size()) {
            while (cursor != end && (*cursor == ' ' || *cursor == '\t')) ++cursor;
            if (cursor == end || *cursor == '#') break;
            const auto [stop, error] = std::from_chars(cursor, end, numbers_[nbNumbers_]);
            if (error != std::errc() || numbers_[nbNumbers_] < 0) {
                offset_ += static_cast<std::size_t>(cursor - line.data());
                refuse("no count", "a number from 0");
            }
            ++nbNumbers_;
            cursor = stop;
        }
    }

    void require(std::size_t least, const char* what) const {
        if (nbNumbers_ < least)
            refuse(std::to_string(nbNumbers_) + " numbers", std::to_string(least) + ": " + what);
    }
    /// 0 when the line is shorter.
    std::int32_t operator[](std::size_t k) const { return numbers_[k]; }

    [[noreturn]] void refuse(const std::string& found, const std::string& expected) const {
        input_.refuseAt(offset_, found, expected);
    }

private:
    NlInput& input_;
    std::size_t offset_;
    std::array<std::int32_t, 6> numbers_{};
    std::size_t nbNumbers_ = 0;
};

/// Takes a number off the front of `line`. @return whether there was one.
template <class Number>
bool takeNumber(std::string_view& line, Number& value) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), value);
    if (error != std::errc()) return false;
    line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    return true;
}

/// "3 0 1 0": a count, as many numbers, perhaps one more. They are for the client that wrote them,
/// so nothing is wrong with fewer.
void readOptions(std::string_view line, NlHeader& header) {
    constexpr std::int32_t most = 9;
    std::int32_t nbOptions = 0;
    if (!takeNumber(line, nbOptions) || nbOptions > most) return;
    for (std::int32_t option = 0; nbOptions > 0 && takeNumber(line, option); --nbOptions)
        header.options.push_back(option);
    if (header.options.size() < 2 || header.options[1] != 3) return;
    double tolerance = 0.0;
    takeNumber(line, tolerance);
    header.boundTolerance = tolerance;
}

void readForm(NlInput& input, NlHeader& header) {
    if (input.nbBytesLeft() == 0) input.refuse("\"g\" or \"b\", the form of the file");
    const std::size_t place = input.offset();
    const std::string_view line = input.restOfLine();
    if (!line.starts_with('g') && !line.starts_with('b')) {
        input.refuseAt(place, "a file of another kind",
                       "\"g\" or \"b\" as the first character of an .nl file");
    }
    header.isBinary = line.starts_with('b');
    readOptions(line.substr(1), header);
}

void readNonlinearCounts(NlInput& input, NlHeader& header) {
    const Line rows(input);
    rows.require(2, "nonlinear rows and objectives");
    header.nbNonlinearRows = rows[0];
    header.nbNonlinearObjectives = rows[1];
    if (rows[2] > 0 || rows[3] > 0)
        rows.refuse("complementarity conditions", "rows of other kinds: these are not supported");
    const Line networks(input);
    networks.require(2, "nonlinear and linear network rows");
    const Line variables(input);
    variables.require(2, "nonlinear variables in rows, in objectives, in both");
    header.nbNonlinearInRows = variables[0];
    header.nbNonlinearInObjectives = variables[1];
    header.nbNonlinearInBoth = variables[2];
    if (header.nbNonlinear() > header.nbVariables || variables[2] > variables[0] ||
        variables[2] > variables[1]) {
        variables.refuse(
            "more variables than there are",
            "at most " + std::to_string(header.nbVariables) + ", no more in both than in one");
    }
}

void readArithmetic(NlInput& input, NlHeader& header, NlInput::Form& form) {
    const Line line(input);
    line.require(2, "arcs and imported functions");
    header.nbArcs = line[0];
    header.nbFunctions = line[1];
    if (!header.isBinary) return;
    // 1: the lowest byte of a number first; 2: the highest.
    if (line[2] != 1 && line[2] != 2)
        line.refuse("arithmetic of kind " + std::to_string(line[2]), "1 or 2 in a binary file");
    header.isBigEndian = line[2] == 2;
    form = line[2] == 1 ? NlInput::Form::littleEndian : NlInput::Form::bigEndian;
}

void readDiscreteCounts(NlInput& input, NlHeader& header) {
    const Line line(input);
    line.require(2, "binary and integer variables");
    header.nbBinary = line[0];
    header.nbInteger = line[1];
    header.nbIntegerInBoth = line[2];
    header.nbIntegerInRows = line[3];
    header.nbIntegerInObjectives = line[4];
    const std::int64_t nbLinear = std::int64_t{line[0]} + line[1] + header.nbArcs;
    const std::int32_t inRowsAlone = header.nbNonlinearInRows - header.nbNonlinearInBoth;
    const std::int32_t inObjectivesAlone = header.nbNonlinear() - header.nbNonlinearInRows;
    if (nbLinear > header.nbVariables - header.nbNonlinear() ||
        line[2] > header.nbNonlinearInBoth || line[3] > inRowsAlone ||
        line[4] > inObjectivesAlone) {
        line.refuse("more discrete variables than there are", "as many as the lines above allow");
    }
}

void checkRoom(const NlHeader& header, const Line& sizes, std::size_t nbBytesLeft) {
    for (const std::int32_t each :
         {header.nbVariables, header.nbRows, header.nbObjectives, header.nbLogicalRows,
          header.nbFunctions, header.nbDefinedVariables}) {
        if (static_cast<std::size_t>(each) > nbBytesLeft)
            sizes.refuse(std::to_string(each) + " items", "no more than the file has room for");
    }
}

}  // namespace

bool NlHeader::isInteger(std::int32_t j) const noexcept {
    const auto inTail = [j](std::int32_t groupEnd, std::int32_t nbOfTail) {
        return j >= groupEnd - nbOfTail;
    };
    if (j < nbNonlinearInBoth) return inTail(nbNonlinearInBoth, nbIntegerInBoth);
    if (j < nbNonlinearInRows) return inTail(nbNonlinearInRows, nbIntegerInRows);
    if (j < nbNonlinear()) return inTail(nbNonlinear(), nbIntegerInObjectives);
    return inTail(nbVariables, nbBinary + nbInteger);
}

NlHeader readNlHeader(NlInput& input) {
    NlHeader header;
    NlInput::Form form = NlInput::Form::text;
    readForm(input, header);
    const Line sizes(input);
    sizes.require(3, "variables, rows, objectives");
    header.nbVariables = sizes[0];
    header.nbRows = sizes[1];
    header.nbObjectives = sizes[2];
    header.nbRanges = sizes[3];
    header.nbEqualities = sizes[4];
    header.nbLogicalRows = sizes[5];
    readNonlinearCounts(input, header);
    readArithmetic(input, header, form);
    readDiscreteCounts(input, header);
    const Line entries(input);
    entries.require(2, "entries of the Jacobian and of the gradients");
    header.nbJacobianEntries = entries[0];
    header.nbGradientEntries = entries[1];
    const Line nameLengths(input);
    nameLengths.require(2, "lengths of the longest names");
    const Line defined(input);
    defined.require(5, "common expressions");
    std::int64_t nbDefined = 0;
    for (std::size_t k = 0; k < 5; ++k) nbDefined += defined[k];
    if (nbDefined > static_cast<std::int64_t>(input.nbBytesLeft()))
        defined.refuse(std::to_string(nbDefined) + " common expressions",
                       "no more than the file has room for");
    header.nbDefinedVariables = static_cast<std::int32_t>(nbDefined);
    checkRoom(header, sizes, input.nbBytesLeft());
    input.setForm(form);
    return header;
}

}  // namespace norv
