#include "double/instance_text.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "double/exchange.hpp"
#include "hostapi/codes.hpp"
#include "norv/model_builder.hpp"

namespace {

const std::map<std::string, std::int32_t, std::less<>> variableTypes = {
    {"cont", hostapi::variable_type::continuous},
    {"bin", hostapi::variable_type::binary},
    {"int", hostapi::variable_type::integer},
    {"semicont", hostapi::variable_type::semiContinuous},
    {"semiint", hostapi::variable_type::semiInteger},
    {"sos1", hostapi::variable_type::specialOrdered1},
    {"sos2", hostapi::variable_type::specialOrdered2}};

const std::map<std::string, std::int32_t, std::less<>> relations = {
    {"=", hostapi::equation_type::equality},     {">=", hostapi::equation_type::greater},
    {"<=", hostapi::equation_type::less},        {"=free=", hostapi::equation_type::free},
    {"=ext=", hostapi::equation_type::external}, {"=cone=", hostapi::equation_type::cone},
    {"=logic=", hostapi::equation_type::logic}};

class Reader {
public:
    void readStatement(const std::string& statement) {
        std::istringstream stream(statement);
        words.clear();
        for (std::string word; stream >> word;) words.push_back(word);
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
        else if (first == "chain")
            addChain(static_cast<std::int32_t>(number(next())));
        else
            readRow(first);
    }

    norv::Model finish(const norv::Environment& environment) { return builder.finish(environment); }

private:
    std::string next() {
        if (position == words.size()) throw std::invalid_argument("a statement ends too early");
        return words[position++];
    }
    [[nodiscard]] bool isNext(std::string_view word) const {
        return position < words.size() && words[position] == word;
    }

    static double number(const std::string& word) { return doubles::numberOf(word); }

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
        double lower = 0.0;
        double upper = type == hostapi::variable_type::binary ? 1.0 : 10.0;
        if (isNext("in")) {
            next();
            lower = number(next());
            upper = number(next());
        }
        addVariable(name, type, lower, upper);
    }

    void readObjective(bool maximise) {
        builder.setSense(maximise ? hostapi::objective_sense::maximise
                                  : hostapi::objective_sense::minimise);
        readFunction(norv::objectiveRow);
    }

    void readRow(const std::string& name) {
        if (next() != ":") throw std::invalid_argument("no ':' after " + name);
        // The row must exist before its entries; its relation stands behind them.
        for (std::size_t k = position; k < words.size(); ++k) {
            const auto relation = relations.find(words[k]);
            if (relation == relations.end()) continue;
            readFunction(builder.addRow(relation->second, number(words.at(k + 1)), name));
            return;
        }
        throw std::invalid_argument("no relation in row " + name);
    }

    void readFunction(std::int32_t row) {
        while (position < words.size() && relations.count(words[position]) == 0) {
            double sign = 1.0;
            if (isNext("+") || isNext("-")) sign = next() == "-" ? -1.0 : 1.0;
            readTerm(row, sign);
        }
    }

    void readTerm(std::int32_t row, double coefficient) {
        std::string word = next();
        if (std::isdigit(static_cast<unsigned char>(word.front())) != 0) {
            coefficient *= number(word);
            if (position == words.size() || isNext("+") || isNext("-") ||
                relations.count(words[position]) != 0) {
                if (row == norv::objectiveRow) builder.setObjectiveConstant(coefficient);
                return;
            }
            word = next();
        }
        if (word == "[") {
            addList(row);
        } else if (isNext("*")) {
            next();
            const std::int32_t first = variable(word);
            builder.addQuadratic(row, first, variable(next()), coefficient);
        } else {
            builder.addCoefficient(row, variable(word), coefficient);
        }
    }

    void addChain(std::int32_t length) {
        const auto link = [this](std::int32_t k) { return variable("x" + std::to_string(k)); };
        for (std::int32_t k = 1; k <= length; ++k) {
            const std::int32_t row = builder.addRow(0, 1.0, "e" + std::to_string(k));
            builder.addCoefficient(row, link(k), 1.0);
            builder.addCoefficient(row, link(k + 1), -1.0);
        }
    }

    void addList(std::int32_t row) {
        std::vector<std::int32_t> opcodes;
        std::vector<std::int32_t> fields;
        for (std::string word = next(); word != "]"; word = next()) {
            const std::size_t colon = std::min(word.find(':'), word.size());
            opcodes.push_back(static_cast<std::int32_t>(number(word.substr(0, colon))));
            fields.push_back(colon < word.size() ? fieldOf(opcodes.back(), word.substr(colon + 1))
                                                 : 0);
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
        if (isOneOf(withConstant)) return builder.addPoolConstant(number(word));
        return static_cast<std::int32_t>(number(word));
    }

    norv::ModelBuilder builder;
    std::map<std::string, std::int32_t> variables;
    std::vector<std::string> words;
    std::size_t position = 0;
};

}  // namespace

norv::Model readInstance(std::string_view text, const norv::Environment& environment) {
    Reader reader;
    std::istringstream stream{std::string(text)};
    for (std::string statement; std::getline(stream, statement, ';');)
        reader.readStatement(statement);
    return reader.finish(environment);
}
