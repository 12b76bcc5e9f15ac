#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace engine::testing {

/// A model whose best objective is known, by hand or by another algorithm.
struct KnownOptimum {
    const char* what;
    std::string text;
    double optimum;
    double tolerance;      ///< beside 1e-5 relative
    std::int64_t nbMoves;  ///< that suffice the local search
    bool isProved = true;  ///< by the methods that prove, where the back ends are there
};

/// Costs (i - j)^2-like, and a rotation i -> i + 1 that is the cheapest.
inline std::string assignmentText(int n) {
    const auto x = [](int i, int j) { return "x" + std::to_string(i) + std::to_string(j); };
    std::string text;
    std::string cost = "minimise 0";
    for (int i = 0; i < n; ++i) {
        std::string row = "0";
        std::string column = "0";
        for (int j = 0; j < n; ++j) {
            text += x(i, j) + ": bool;";
            row += " + " + x(i, j);
            column += " + " + x(j, i);
            const int c = j == (i + 1) % n ? 1 : 5 + (i * 7 + j * 3) % 10;
            cost += " + " + std::to_string(c) + ".0*" + x(i, j);
        }
        cost = row + " == 1.0; " + column + " == 1.0; " + cost;
    }
    return text + cost + ";";
}

/// A ring of six pipes with flows of either sign, s f |f| equal to the difference of pressures, fed
/// at one node and drained at three: all that can be chosen is how much pressure to buy. The
/// optimum comes by bisection for the first flow, at which the ring's differences add up to 0.
inline std::string flowNetworkText() {
    const char* const supply[] = {"12.0", "-3.0", "0.0", "-5.0", "-4.0", "0.0"};
    const char* const resistance[] = {"1.0", "2.0", "0.5", "3.0", "1.5", "0.7"};
    std::string text = "p0, p1, p2, p4, p5: real 0 200; p3: real 20 200;";
    std::string rows;
    for (int k = 0; k < 6; ++k) {
        const std::string own = std::to_string(k);
        const std::string next = std::to_string((k + 1) % 6);
        const std::string last = std::to_string((k + 5) % 6);
        text += "b" + own + ": bool; f" + own + ": real -20 20;";
        rows += "f" + own + " <= 20.0*b" + own + "; f" + own + " >= 20.0*b" + own + " - 20.0;";
        rows += "(2.0*b" + own + " + -1.0)*" + resistance[k] + "*f" + own + "*f" + own + " == p" +
                own + " - p" + next + ";";
        rows += "f" + own + " - f" + last + " == " + supply[k] + ";";
    }
    return text + rows + "minimise p0;";
}

inline std::vector<KnownOptimum> knownOptima() {
    const std::string ten = "a, b, c, d, e, f, g, h, i, j: bool;";
    return {
        {"a knapsack",
         ten + "12.0*a + 7.0*b + 11.0*c + 8.0*d + 9.0*e + 6.0*f + 5.0*g + 14.0*h + 3.0*i + 10.0*j "
               "<= 40.0; maximise 24.0*a + 13.0*b + 23.0*c + 15.0*d + 16.0*e + 11.0*f + 9.0*g + "
               "28.0*h + 5.0*i + 19.0*j;",
         80.0, 0.0, 5000},
        {"an assignment", assignmentText(6), 6.0, 0.0, 2000},
        {"a transport problem, all equations",
         "a, b, c, d, e, f: real 0 1e10; a + b + c == 30.0; d + e + f == 50.0; a + d == 20.0;"
         "b + e == 25.0; c + f == 35.0; minimise 4.0*a + 6.0*b + 9.0*c + 5.0*d + 3.0*e + 8.0*f;",
         445.0, 1e-3, 2000},
        {"a projection on a line",
         "x, y: real -1e10 1e10; x + y == 1.0; minimise (x - 2.0)*(x - 2.0) + (y - 3.0)*(y - 3.0);",
         8.0, 1e-3, 2000, false},
        {"a mixed nonlinear problem, compared over all n",
         "x: real 0 10; n: int 0 100; x*n >= 4.0; minimise exp(x) + dist(n, 3.4);",
         std::exp(1.0) + 0.6, 1e-4, 2000, false},
        {"semicontinuous variables: 4 of x and 3 of y",
         "x: real 0 4.5; y: real 0 10; or(x == 0.0, x >= 4.0); or(y == 0.0, y >= 3.0);"
         "x + y >= 5.0; minimise 1.0*x + 2.0*y;",
         10.0, 1e-4, 2000},
        {"positions in an array",
         "k, l, m: int 0 5; a = array(5, 9, 1, 8, 7, 2); k != l; k != m; l != m;"
         "maximise at(a, k) + at(a, l) + at(a, m);",
         24.0, 0.0, 2000},
        {"a curved valley", "x, y: real -5 5; v = y - x^2; minimise (1 - x)^2 + 100*v*v;", 0.0,
         1e-6, 2000, false},
        {"flows that follow pressures", flowNetworkText(), 93.07868503723978, 1e-3, 9000, false},
        {"Hock and Schittkowski, test problem 71",
         "w, x, y, z: real 1 5; w*x*y*z >= 25.0; w^2 + x^2 + y^2 + z^2 == 40.0;"
         "minimise w*z*(w + x + y) + y;",
         17.0140173, 1e-4, 2000, false},
    };
}

}  // namespace engine::testing
