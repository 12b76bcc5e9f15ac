#pragma once

#include <algorithm>
#include <bit>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace norv::test {

enum class NlForm { text, littleEndian, bigEndian };

/// A small model from which .nl files are made. Expressions are items in the file's prefix order,
/// "o0 v0 n2.5": o, n, v, l, s, f and h as in the file, bare integers for counts.
struct NlSketch {
    std::vector<std::string> rows;
    std::vector<std::string> logicalRows;
    std::vector<std::string> objectives = {"n0"};
    std::vector<std::string> definitions;  ///< of common expressions, after the variables
    int nbVariables = 3;
    bool withLinearTerms = false;  ///< (1 + variable) * variable in every row and objective
};

/// Writes an .nl file item by item in one of the three forms.
class NlWriter {
public:
    explicit NlWriter(NlForm kind) : form(kind) {}

    std::string write(const NlSketch& sketch);

private:
    template <class Number>
    void fixed(Number number) {
        char bytes[sizeof number];
        std::memcpy(bytes, &number, sizeof number);
        const bool isNative =
            (form == NlForm::bigEndian) == (std::endian::native == std::endian::big);
        if (!isNative) std::reverse(bytes, bytes + sizeof number);
        out.append(bytes, sizeof number);
    }
    void letter(char c) { out += c; }
    void integer(int number) {
        if (form == NlForm::text) {
            out += std::to_string(number) + ' ';
        } else {
            fixed(number);
        }
    }
    void number(const std::string& text) {
        if (form == NlForm::text) {
            out += text + ' ';
        } else {
            fixed(std::stod(text));
        }
    }
    void endLine() {
        if (form == NlForm::text) out += '\n';
    }
    void expression(const std::string& items);
    void item(const std::string& token);
    void header(const NlSketch& sketch);
    void linearTerms(const NlSketch& sketch);
    void segment(char kind, std::initializer_list<int> numbers) {
        letter(kind);
        for (const int each : numbers) integer(each);
        endLine();
    }

    NlForm form;
    std::string out;
};

inline void NlWriter::item(const std::string& token) {
    const char kind = token[0];
    const std::string rest = token.substr(1);
    if ((kind >= '0' && kind <= '9') || kind == '-') {
        integer(std::stoi(token));
    } else if (kind == 'n') {
        letter(kind);
        number(rest);
    } else if (kind == 'h') {
        letter(kind);
        if (form == NlForm::text) {
            out += std::to_string(rest.size()) + ':' + rest;
        } else {
            integer(static_cast<int>(rest.size()));
            out += rest;
        }
    } else if (kind == 's' && form != NlForm::text) {
        letter(kind);
        fixed(static_cast<std::int16_t>(std::stoi(rest)));
    } else {
        letter(kind);
        integer(std::stoi(rest));
    }
    endLine();
}

inline void NlWriter::expression(const std::string& items) {
    std::istringstream words(items);
    for (std::string token; words >> token;) item(token);
}

inline void NlWriter::header(const NlSketch& sketch) {
    const auto count = [](const auto& list) { return std::to_string(list.size()); };
    const std::string n = std::to_string(sketch.nbVariables);
    const std::string nbEntries = std::to_string(
        sketch.withLinearTerms ? sketch.rows.size() * static_cast<std::size_t>(sketch.nbVariables)
                               : 0);
    const std::string arithmetic = form == NlForm::text           ? "0"
                                   : form == NlForm::littleEndian ? "1"
                                                                  : "2";
    out = std::string(form == NlForm::text ? "g" : "b") + "3 1 1 0\n";
    out += n + ' ' + count(sketch.rows) + ' ' + count(sketch.objectives) + " 0 0 " +
           count(sketch.logicalRows) + "\t# sizes\n";
    out += count(sketch.rows) + ' ' + count(sketch.objectives) + "\n0 0\n";
    out += n + ' ' + n + ' ' + n + "\n0 0 " + arithmetic + " 0\n0 0 0 0 0\n";
    out += nbEntries + " 0\n0 0\n" + count(sketch.definitions) + " 0 0 0 0\n";
}

inline std::string NlWriter::write(const NlSketch& sketch) {
    header(sketch);
    const auto each = [this](char kind, const std::vector<std::string>& expressions, bool isGoal) {
        for (std::size_t k = 0; k < expressions.size(); ++k) {
            letter(kind);
            integer(static_cast<int>(k));
            if (isGoal) integer(0);
            endLine();
            expression(expressions[k]);
        }
    };
    for (std::size_t k = 0; k < sketch.definitions.size(); ++k) {
        segment('V', {sketch.nbVariables + static_cast<int>(k), 1, 0});
        integer(0);
        number("2");
        endLine();
        expression(sketch.definitions[k]);
    }
    each('C', sketch.rows, /*isGoal=*/false);
    each('L', sketch.logicalRows, /*isGoal=*/false);
    each('O', sketch.objectives, /*isGoal=*/true);
    segment('r', {});
    for (std::size_t k = 0; k < sketch.rows.size(); ++k) {
        letter('2');
        if (form == NlForm::text) out += ' ';
        number("0");
        endLine();
    }
    segment('b', {});
    for (int k = 0; k < sketch.nbVariables; ++k) segment('3', {});
    if (!sketch.withLinearTerms) return out;
    segment('k', {sketch.nbVariables - 1});
    for (int j = 1; j < sketch.nbVariables; ++j) {
        integer(j * static_cast<int>(sketch.rows.size()));
        endLine();
    }
    for (std::size_t k = 0; k < sketch.rows.size(); ++k) {
        segment('J', {static_cast<int>(k), sketch.nbVariables});
        linearTerms(sketch);
    }
    return out;
}

inline void NlWriter::linearTerms(const NlSketch& sketch) {
    for (int j = 0; j < sketch.nbVariables; ++j) {
        integer(j);
        number(std::to_string(j + 1));
        endLine();
    }
}

}  // namespace norv::test
