/// The independent witness for .sol files, with the AMPL solver library:
///
///   ampl_solution STUB CODE MESSAGE < LEVELS    writes STUB.sol as the library does, with the
///   values
///                                               of the rows as the suffix "activity"
///   ampl_solution STUB                          reads STUB.sol and prints code, message, levels
///
/// Standard input holds a number per variable, or nothing for a solution without levels. The
/// library reads levels from text files with options only, and codes only where there are levels.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "asl.h"
#include "getstub.h"

// The library's names are macros that stand for members of `asl`, which must have this name.

namespace {

void write(ASL* asl, int code, char* message) {
    std::vector<double> levels;
    for (double level = 0.0; scanf("%lf", &level) == 1;) levels.push_back(level);
    solve_result_num = code;
    SufDecl activity{const_cast<char*>("activity"), nullptr, ASL_Sufkind_con | ASL_Sufkind_outonly,
                     0};
    suf_declare(&activity, 1);
    std::vector<double> activities(static_cast<std::size_t>(n_con));
    if (!levels.empty() && n_con > 0) {
        fint nbErrors = 0;
        conval(levels.data(), activities.data(), &nbErrors);
        suf_rput("activity", ASL_Sufkind_con, activities.data());
    }
    Option_Info info{};
    info.wantsol = 9;  // the file, nothing printed
    write_sol(message, levels.empty() ? nullptr : levels.data(), nullptr, &info);
}

struct Free {
    void operator()(void* memory) const { std::free(memory); }  // NOLINT(*-no-malloc)
};

int read(ASL* asl) {
    double* values = nullptr;
    double* duals = nullptr;
    const std::unique_ptr<char, Free> message(read_soln(&values, &duals));
    const std::unique_ptr<double, Free> levels(values);
    if (!message || !levels) return 1;
    printf("%d %s", solve_result_num, message.get());
    for (int j = 0; j < n_var; ++j) printf("%.17g\n", values[j]);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 4) return 2;
    ASL* asl = ASL_alloc(ASL_read_fg);
    FILE* file = jac0dim(argv[1], static_cast<ftnlen>(std::string(argv[1]).size()));
    want_xpi0 = 1;
    fg_read(file, ASL_allow_CLP);
    if (argc == 2) return read(asl);
    write(asl, std::atoi(argv[2]), argv[3]);
    return 0;
}
