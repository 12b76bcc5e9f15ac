/// The independent witness: reads an .mps file with CoinUtils and knows nothing of this project.
///
///   coin_reader print FILE          the model, for tests that compare readers
///   coin_reader check FILE RESULT   the point in a JSON result against the model
///
/// It is a process of its own because that library ends the process, or worse, on files that it
/// does not like. What it cannot read is handled here, in plain code, before it sees the file:
///   SC, SI bounds   SI is unknown to it; both become UP or PL, the columns are remembered
///   OBJSENSE        ignored by it; nothing here depends on the sense
///   QUADOBJ ...     not read by it; the objective is then not compared
///   blanks in names it leaves them out; names are compared without, and found by position
///   numbers         it rounds some in the last digit; they are printed with 14 digits
/// Exit status: 0 fine or no point claimed, 1 the point is refuted, 2 usage, 3 not read.
#include <algorithm>
#include <cmath>
#include <coin/CoinMpsIO.hpp>
#include <coin/CoinPackedMatrix.hpp>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Model {
    CoinMpsIO reader;
    CoinSet** sets = nullptr;  ///< [nbSets] made by the reader for its caller
    int nbSets = 0;
    std::map<std::string, bool> semi;  ///< semi-continuous columns; true: semi-integer
    bool isQuadratic = false;

    Model() = default;
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
    ~Model() {
        for (int s = 0; s < nbSets; ++s) delete sets[s];
        delete[] sets;
    }
};

/// The bound line with SC or SI replaced, for a file whose names have no blanks.
std::string withoutSemi(const std::string& line, Model& model) {
    std::istringstream words(line);
    std::vector<std::string> fields;
    for (std::string word; words >> word;) fields.push_back(word);
    if (line[0] != ' ' || fields.size() < 3 || (fields[0] != "SC" && fields[0] != "SI"))
        return line;
    model.semi[fields[2]] = fields[0] == "SI";
    const std::string start = " " + std::string(fields.size() > 3 ? "UP" : "PL") + " " + fields[1];
    std::string result = start + std::string(14 - std::min<std::size_t>(14, start.size()), ' ');
    result += fields[2];
    if (fields.size() > 3)
        result += std::string(24 - std::min<std::size_t>(24, result.size()), ' ') + fields[3];
    return result;
}

bool read(const std::string& path, Model& model) {
    const std::string copy = path.substr(path.find_last_of('/') + 1) + "." +
                             std::to_string(std::hash<std::string>()(path)) + ".coin";
    {
        std::ifstream in(path);
        std::ofstream out(copy);
        std::string section;
        for (std::string line; std::getline(in, line);) {
            if (!line.empty() && line[0] != ' ' && line[0] != '*') section = line.substr(0, 6);
            model.isQuadratic = model.isQuadratic || section.substr(0, 4) == "QUAD" ||
                                section.substr(0, 4) == "QMAT" || section.substr(0, 4) == "QSEC";
            out << (section == "BOUNDS" ? withoutSemi(line, model) : line) << '\n';
        }
    }
    model.reader.messageHandler()->setLogLevel(0);
    const int nbErrors = model.reader.readMps(copy.c_str(), "", model.nbSets, model.sets);
    std::remove(copy.c_str());
    return nbErrors == 0;
}

std::string withoutBlanks(std::string name) {
    std::erase(name, ' ');
    return name;
}

double orInfinite(double bound) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return std::fabs(bound) >= 1e30 ? std::copysign(infinity, bound) : bound;
}

void print(const Model& model) {
    const CoinMpsIO& reader = model.reader;
    std::printf("objective\t%s\t%.14g\n", reader.getObjectiveName(),
                0.0 - reader.objectiveOffset());
    for (int i = 0; i < reader.getNumRows(); ++i) {
        std::printf("row\t%s\t%.14g\t%.14g\n", reader.rowName(i),
                    orInfinite(reader.getRowLower()[i]), orInfinite(reader.getRowUpper()[i]));
    }
    for (int j = 0; j < reader.getNumCols(); ++j) {
        std::printf("column\t%s\t%.14g\t%.14g\t%d\t%.14g\n", reader.columnName(j),
                    orInfinite(reader.getColLower()[j]), orInfinite(reader.getColUpper()[j]),
                    reader.isInteger(j) ? 1 : 0, reader.getObjCoefficients()[j]);
    }
    for (int s = 0; s < model.nbSets; ++s) {
        const CoinSet& set = *model.sets[s];
        std::printf("set\t%d", set.setType());
        for (int k = 0; k < set.numberEntries(); ++k)
            std::printf("\t%s", reader.columnName(set.which()[k]));
        std::printf("\n");
    }
    const CoinPackedMatrix& matrix = *reader.getMatrixByCol();
    for (int j = 0; j < matrix.getNumCols(); ++j) {
        const auto begin = matrix.getVectorStarts()[j];
        for (auto k = begin; k < begin + matrix.getVectorLengths()[j]; ++k) {
            std::printf("entry\t%d\t%d\t%.14g\n", matrix.getIndices()[k], j,
                        matrix.getElements()[k]);
        }
    }
}

/// Says what is wrong; the tolerance is absolute, and relative to the larger of the two sides.
class Verdict {
public:
    void require(bool holds, const std::string& what) {
        if (!holds && nbFaults_++ < 10) std::cout << "refuted: " << what << '\n';
    }
    void atLeast(double value, double bound, const std::string& what) {
        const double size =
            std::max({1.0, std::fabs(value), std::isinf(bound) ? 1.0 : std::fabs(bound)});
        require(value >= bound - tolerance * size,
                what + ": " + std::to_string(value) + " against " + std::to_string(bound));
    }
    void between(double value, double lower, double upper, const std::string& what) {
        atLeast(value, orInfinite(lower), what);
        atLeast(-value, -orInfinite(upper), what);
    }
    [[nodiscard]] int exitStatus() const { return nbFaults_ == 0 ? 0 : 1; }

    static constexpr double tolerance = 1e-6;

private:
    int nbFaults_ = 0;
};

void checkColumn(const Model& model, int j, double level, Verdict& verdict) {
    const std::string name = model.reader.columnName(j);
    const auto semi = model.semi.find(name);
    const bool isInteger = model.reader.isInteger(j) || (semi != model.semi.end() && semi->second);
    if (isInteger) {
        verdict.require(std::fabs(level - std::round(level)) <= Verdict::tolerance,
                        "integrality of " + name);
    }
    if (semi != model.semi.end() && std::fabs(level) <= Verdict::tolerance) return;
    verdict.between(level, model.reader.getColLower()[j], model.reader.getColUpper()[j], name);
}

int check(const Model& model, const nlohmann::json& result) {
    const int status = result["modelStatus"]["code"];
    constexpr int claims[] = {1, 2, 7, 8, 16};
    if (std::find(std::begin(claims), std::end(claims), status) == std::end(claims)) {
        std::cout << "no point claimed\n";
        return 0;
    }
    Verdict verdict;
    verdict.require(
        result["variables"].size() == static_cast<std::size_t>(model.reader.getNumCols()),
        "the number of columns");
    if (verdict.exitStatus() != 0) return verdict.exitStatus();
    const CoinMpsIO& reader = model.reader;
    std::vector<double> point(static_cast<std::size_t>(reader.getNumCols()));
    double objective = 0.0 - reader.objectiveOffset();
    for (int j = 0; j < reader.getNumCols(); ++j) {
        const auto& variable = result["variables"][static_cast<std::size_t>(j)];
        verdict.require(withoutBlanks(variable["name"]) == reader.columnName(j),
                        "the name of column " + std::string(reader.columnName(j)));
        const double level = variable["level"].is_null() ? NAN : variable["level"].get<double>();
        point[static_cast<std::size_t>(j)] = level;
        checkColumn(model, j, level, verdict);
        objective += reader.getObjCoefficients()[j] * level;
    }
    std::vector<double> activity(static_cast<std::size_t>(reader.getNumRows()));
    reader.getMatrixByCol()->times(point.data(), activity.data());
    for (int i = 0; i < reader.getNumRows(); ++i) {
        verdict.between(activity[static_cast<std::size_t>(i)], reader.getRowLower()[i],
                        reader.getRowUpper()[i], reader.rowName(i));
    }
    if (!model.isQuadratic)
        verdict.between(result["objective"], objective, objective, "the objective");
    if (verdict.exitStatus() == 0) std::cout << "feasible\n";
    return verdict.exitStatus();
}

}  // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (!(mode == "print" && argc == 3) && !(mode == "check" && argc == 4)) return 2;
    Model model;
    if (!read(argv[2], model)) return 3;
    if (mode == "check") return check(model, nlohmann::json::parse(std::ifstream(argv[3])));
    print(model);
    return 0;
}
