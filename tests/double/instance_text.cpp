#include "double/instance_text.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "double/exchange.hpp"
#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"

namespace {

const std::map<std::string, std::int32_t> variableTypes = {
    {"cont", hostapi::variable_type::continuous},
    {"bin", hostapi::variable_type::binary},
    {"int", hostapi::variable_type::integer},
    {"semicont", hostapi::variable_type::semiContinuous},
    {"semiint", hostapi::variable_type::semiInteger}};

const std::map<std::string, std::int32_t> relations = {{"=", hostapi::equation_type::equality},
                                                       {">=", hostapi::equation_type::greater},
                                                       {"<=", hostapi::equation_type::less},
                                                       {"=free=", hostapi::equation_type::free},
                                                       {"=logic=", hostapi::equation_type::logic}};

class Reader {
public:
    void readStatement(const std::string& statement) {
        std::istringstream stream(statement);
        words.assign(std::istream_iterator<std::string>(stream), {});
        position = 0;
        if (words.empty()) return;
        const std::string first = next();
        if (const auto type = variableTypes.find(first); type != variableTypes.end())
            declareVariable(type->second);
        else if (first == "min" || first == "max")
            readObjective(first == "max");
        else if (first == "names")
            builder.setWithNames(next() != "off");
        else if (first == "square")
            builder.setModelType(hostapi::model_type::squareSystem);
        else
            readRow(first);
    }

    norv::Model finish(const norv::Environment& environment) { return builder.finish(environment); }

private:
    std::string next() {
        if (position == words.size()) throw std::invalid_argument("a statement ends too early");
        return words[position++];
    }
    double nextNumber() { return doubles::numberOf(next()); }
    bool take(std::string_view word) {
        const bool isNext = position < words.size() && words[position] == word;
        position += isNext ? 1 : 0;
        return isNext;
    }
    [[nodiscard]] bool isAtEndOf(std::string_view what) const {
        return position == words.size() || relations.count(words[position]) != 0 ||
               (what == "term" && (words[position] == "+" || words[position] == "-"));
    }

    std::int32_t variable(const std::string& name) {
        const auto known = variables.find(name);
        if (known != variables.end()) return known->second;
        return addVariable(name, hostapi::variable_type::continuous, -100.0, 100.0);
    }
    std::int32_t addVariable(const std::string& name, std::int32_t type, double lower,
                             double upper) {
        return variables[name] = builder.addVariable(type, lower, upper, 0.0, name);
    }

    void declareVariable(std::int32_t type) {
        const std::string name = next();
        const bool hasBounds = take("in");
        const double lower = hasBounds ? nextNumber() : 0.0;
        const double usualUpper = type == hostapi::variable_type::binary ? 1.0 : 10.0;
        addVariable(name, type, lower, hasBounds ? nextNumber() : usualUpper);
    }

    void readObjective(bool maximise) {
        builder.setSense(maximise ? hostapi::objective_sense::maximise
                                  : hostapi::objective_sense::minimise);
        readFunction(norv::objectiveRow);
    }

    void readRow(const std::string& name) {
        // The row must exist before its entries; its relation stands behind them.
        const auto relation = std::find_if(words.begin(), words.end(), [](const auto& word) {
            return relations.count(word) != 0;
        });
        if (!take(":") || words.end() - relation != 2)
            throw std::invalid_argument("no row: " + name);
        readFunction(
            builder.addRow(relations.at(*relation), doubles::numberOf(words.back()), name));
    }

    void readFunction(std::int32_t row) {
        while (!isAtEndOf("function")) {
            const double sign = take("-") ? -1.0 : 1.0;
            take("+");
            readTerm(row, sign);
        }
    }

    void readTerm(std::int32_t row, double coefficient) {
        std::string word = next();
        if (std::isdigit(static_cast<unsigned char>(word.front())) != 0) {
            coefficient *= doubles::numberOf(word);
            if (isAtEndOf("term") && row == norv::objectiveRow)
                builder.setObjectiveConstant(coefficient);
            if (isAtEndOf("term")) return;
            word = next();
        }
        if (word == "[") {
            addList(row);
        } else if (take("*")) {
            const std::int32_t first = variable(word);
            builder.addQuadratic(row, first, variable(next()), coefficient);
        } else {
            builder.addCoefficient(row, variable(word), coefficient);
        }
    }

    void addList(std::int32_t row) {
        std::vector<std::int32_t> opcodes, fields;
        while (!take("]")) {
            const std::vector<std::string> parts = doubles::split(next(), ":");
            opcodes.push_back(std::stoi(parts[0]));
            fields.push_back(parts.size() > 1 ? fieldOf(opcodes.back(), parts[1]) : 0);
        }
        builder.setInstructions(row, opcodes, fields);
    }

    std::int32_t fieldOf(std::int32_t opcode, const std::string& word) {
        constexpr std::array withVariable = {1, 5, 8, 11, 14, 17};
        constexpr std::array withConstant = {2, 6, 9, 12, 15, 24};
        const auto isOneOf = [opcode](const auto& all) {
            return std::find(all.begin(), all.end(), opcode) != all.end();
        };
        if (isOneOf(withVariable)) return variable(word) + 1;
        if (isOneOf(withConstant)) return builder.addPoolConstant(doubles::numberOf(word));
        return std::stoi(word);
    }

    norv::ModelBuilder builder;
    std::map<std::string, std::int32_t> variables;
    std::vector<std::string> words;
    std::size_t position = 0;
};

}  // namespace

norv::Model readInstance(std::string_view text, const norv::Environment& environment) {
    Reader reader;
    for (const std::string& statement : statementsOf(text)) reader.readStatement(statement);
    return reader.finish(environment);
}

std::vector<std::string> statementsOf(std::string_view text) {
    std::vector<std::string> all;
    for (const std::string& statement : doubles::split(text, ";")) {
        if (!statement.starts_with("for ")) {
            all.push_back(statement);
            continue;
        }
        const std::string repeated = statement.substr(statement.find(' ', 4) + 1);
        for (int k = 1, nb = std::stoi(statement.substr(4)); k <= nb; ++k) {
            const std::string half = doubles::replaced(repeated, "##", std::to_string(k + 1));
            all.push_back(doubles::replaced(half, "#", std::to_string(k)));
        }
    }
    return all;
}
