/// The independent witness for .nl files: reads one with the AMPL solver library and evaluates it.
///
///   ampl_values FILE < POINTS
///
/// Standard input holds points, each a number per variable. The output is lines of words:
///   size VARIABLES ROWS LOGICAL OBJECTIVES MAXIMISE
///   variable LOWER UPPER START DISCRETE  one for each; DISCRETE is 0 or 1
///   row LOWER UPPER                    one for each
///   set TYPE VARIABLES...              one for each special ordered set that restricts anything
///   values OBJECTIVE ROWS... LOGICAL...  one for each point; "error" where a value does not exist
///
/// It is a process of its own because that library ends the process on files that it does not like.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "asl.h"

// The library's names are macros that stand for members of `asl`, which must have this name.

namespace {

char sosno[] = "sosno", ref[] = "ref", sos[] = "sos", sosref[] = "sosref";
SufDecl suffixes[] = {{sosno, nullptr, ASL_Sufkind_var | ASL_Sufkind_real, 0},
                      {ref, nullptr, ASL_Sufkind_var | ASL_Sufkind_real, 0},
                      {sos, nullptr, ASL_Sufkind_var, 0},
                      {sos, nullptr, ASL_Sufkind_con, 0},
                      {sosref, nullptr, ASL_Sufkind_var | ASL_Sufkind_real, 0}};

ASL* read(char* path) {
    ASL* asl = ASL_alloc(ASL_read_fg);
    want_xpi0 = 1;
    suf_declare(suffixes, static_cast<int>(sizeof suffixes / sizeof *suffixes));
    FILE* file = jac0dim(path, static_cast<ftnlen>(std::string(path).size()));
    fg_read(file, ASL_allow_CLP);
    return asl;
}

/// Of each kind of variables the last ones are discrete: nonlinear in constraints and objectives,
/// in constraints alone, in objectives alone, linear.
bool isDiscrete(ASL* asl, int j) {
    const int nbNonlinear = nlvo > nlvc ? nlvo : nlvc;
    if (j < nlvb) return j >= nlvb - nlvbi;
    if (j < nlvc) return j >= nlvc - nlvci;
    if (j < nbNonlinear) return j >= nbNonlinear - nlvoi;
    return j >= n_var - nbv - niv;
}

void printBounds(ASL* asl) {
    printf("size %d %d %d %d %d\n", n_var, n_con, n_lcon, n_obj,
           n_obj > 0 ? static_cast<int>(objtype[0]) : 0);
    for (int j = 0; j < n_var; ++j)
        printf("variable %.17g %.17g %.17g %d\n", LUv[2 * j], LUv[2 * j + 1],
               X0 != nullptr ? X0[j] : 0.0, isDiscrete(asl, j) ? 1 : 0);
    for (int i = 0; i < n_con; ++i) printf("row %.17g %.17g\n", LUrhs[2 * i], LUrhs[2 * i + 1]);
}

void printSets(ASL* asl) {
    int nbMembers = 0;
    char* types = nullptr;
    int* starts = nullptr;
    int* members = nullptr;
    double* weights = nullptr;
    const int nbSets =
        suf_sos(0, &nbMembers, &types, nullptr, nullptr, &starts, &members, &weights);
    for (int s = 0; s < nbSets; ++s) {
        printf("set %c", types[s]);
        for (int k = starts[s]; k < starts[s + 1]; ++k) printf(" %d", members[k]);
        printf("\n");
    }
}

void printValue(double value, fint failed) {
    if (failed != 0) {
        printf(" error");
    } else {
        printf(" %.17g", value);
    }
}

void printValues(ASL* asl, std::vector<double>& point) {
    printf("values");
    fint failed = 0;
    const double objective = n_obj > 0 ? objval(0, point.data(), &failed) : 0.0;
    printValue(objective, failed);
    for (int i = 0; i < n_con; ++i) {
        failed = 0;
        const double value = conival(i, point.data(), &failed);
        printValue(value, failed);
    }
    for (int i = 0; i < n_lcon; ++i) {
        failed = 0;
        const int value = lconval(i, point.data(), &failed);
        printValue(value != 0 ? 1.0 : 0.0, failed);
    }
    printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    ASL* asl = read(argv[1]);
    printBounds(asl);
    printSets(asl);
    std::vector<double> point(static_cast<std::size_t>(n_var));
    while (true) {
        for (double& each : point) {
            if (scanf("%lf", &each) != 1) return 0;
        }
        if (point.empty()) return 0;
        printValues(asl, point);
    }
}
