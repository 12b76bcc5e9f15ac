// The nonlinear back end over Ipopt, with MUMPS for its linear systems.
#include <algorithm>
#include <cmath>
#include <exception>
#include <mutex>
#include <string>

#include <IpoptConfig.h>
#include <IpIpoptApplication.hpp>
#include <IpTNLP.hpp>

#include "back_ends/nonlinear_back_end.hpp"

namespace engine {
namespace {

using Ipopt::Index;
using Ipopt::Number;
using Status = NonlinearAnswer::Status;

/// Ipopt's own sign for "no bound".
constexpr double ipoptInfinity = 1e20;

/// The linear solver keeps some of its state in the process, so that no two threads may be inside.
/// Whoever waits elsewhere lets others in meanwhile.
std::mutex& libraryLock() {
    static std::mutex lock;
    return lock;
}

std::size_t at(Index i) {
    return static_cast<std::size_t>(i);
}

/// The problem in the library's terms, and what the library tells on its way.
class IpoptProblem final : public Ipopt::TNLP {
public:
    IpoptProblem(LocalProblem& problem, const NonlinearSettings& settings,
                 std::unique_lock<std::mutex>& lock)
        : problem_(problem), settings_(settings), lock_(lock) {}

    bool get_nlp_info(Index& n, Index& m, Index& nnz_jac_g, Index& nnz_h_lag,
                      IndexStyleEnum& index_style) override {
        n = static_cast<Index>(problem_.nbColumns());
        m = static_cast<Index>(problem_.nbRows());
        nnz_jac_g = static_cast<Index>(problem_.jacobianRow().size());
        nnz_h_lag = static_cast<Index>(problem_.hessianRow().size());
        index_style = C_STYLE;
        return true;
    }

    bool get_bounds_info(Index n, Number* x_l, Number* x_u, Index m, Number* g_l,
                         Number* g_u) override {
        // More equations than decisions are refused by the library: as narrow ranges they are not.
        const double width = problem_.nbEquations() > problem_.nbColumns() ? equationWidth : 0.0;
        for (std::size_t j = 0; j < at(n); ++j) {
            x_l[j] = std::max(problem_.lower()[j], -ipoptInfinity);
            x_u[j] = std::min(problem_.upper()[j], ipoptInfinity);
        }
        for (std::size_t i = 0; i < at(m); ++i) {
            const bool isEquation = problem_.rowLower()[i] == problem_.rowUpper()[i];
            const double slack = isEquation ? width : 0.0;
            g_l[i] = std::max(problem_.rowLower()[i] - slack, -ipoptInfinity);
            g_u[i] = std::min(problem_.rowUpper()[i] + slack, ipoptInfinity);
        }
        return true;
    }

    bool get_starting_point(Index /*n*/, bool init_x, Number* x, bool /*init_z*/, Number* /*z_L*/,
                            Number* /*z_U*/, Index /*m*/, bool /*init_lambda*/,
                            Number* /*lambda*/) override {
        if (init_x) std::ranges::copy(problem_.start(), x);
        return true;
    }

    bool eval_f(Index n, const Number* x, bool new_x, Number& obj_value) override {
        go(n, x, new_x);
        obj_value = problem_.cost();
        return std::isfinite(obj_value);
    }

    bool eval_grad_f(Index n, const Number* x, bool new_x, Number* grad_f) override {
        go(n, x, new_x);
        problem_.gradient({grad_f, at(n)});
        return true;
    }

    bool eval_g(Index n, const Number* x, bool new_x, Index m, Number* g) override {
        go(n, x, new_x);
        return problem_.rows({g, at(m)});
    }

    bool eval_jac_g(Index n, const Number* x, bool new_x, Index /*m*/, Index nele_jac, Index* iRow,
                    Index* jCol, Number* values) override {
        if (values == nullptr) {
            std::ranges::copy(problem_.jacobianRow(), iRow);
            std::ranges::copy(problem_.jacobianColumn(), jCol);
            return true;
        }
        go(n, x, new_x);
        problem_.jacobian({values, at(nele_jac)});
        return true;
    }

    bool eval_h(Index n, const Number* x, bool new_x, Number obj_factor, Index m,
                const Number* lambda, bool /*new_lambda*/, Index nele_hess, Index* iRow,
                Index* jCol, Number* values) override {
        if (values == nullptr) {
            std::ranges::copy(problem_.hessianRow(), iRow);
            std::ranges::copy(problem_.hessianColumn(), jCol);
            return true;
        }
        go(n, x, new_x);
        problem_.hessian(obj_factor, {lambda, at(m)}, {values, at(nele_hess)});
        return true;
    }

    bool intermediate_callback(Ipopt::AlgorithmMode /*mode*/, Index iter, Number /*obj_value*/,
                               Number /*inf_pr*/, Number /*inf_du*/, Number /*mu*/,
                               Number /*d_norm*/, Number /*regularization_size*/,
                               Number /*alpha_du*/, Number /*alpha_pr*/, Index /*ls_trials*/,
                               const Ipopt::IpoptData* /*ip_data*/,
                               Ipopt::IpoptCalculatedQuantities* /*ip_cq*/) override {
        answer_.iterations = iter;
        lock_.unlock();
        bool goesOn = false;
        try {
            goesOn = settings_.pace.spend(problem_.workPerIteration()) && !settings_.pace.mustEnd();
        } catch (...) {
            exception_ = std::current_exception();
        }
        lock_.lock();
        return goesOn;
    }

    void finalize_solution(Ipopt::SolverReturn status, Index n, const Number* x,
                           const Number* /*z_L*/, const Number* /*z_U*/, Index m,
                           const Number* /*g*/, const Number* lambda, Number /*obj_value*/,
                           const Ipopt::IpoptData* /*ip_data*/,
                           Ipopt::IpoptCalculatedQuantities* /*ip_cq*/) override {
        const std::span<const double> levels(x, at(n));
        if (!std::ranges::all_of(levels, [](double v) { return std::isfinite(v); })) return;
        answer_.levels = problem_.levels(levels);
        answer_.multipliers = problem_.multipliers({lambda, at(m)});
        problem_.moveTo(levels);
        answer_.violation = problem_.violation();
        if (status == Ipopt::SUCCESS) {
            answer_.status = Status::Optimal;
        } else if (answer_.violation <= 10.0 * settings_.tolerance) {
            answer_.status = Status::Feasible;
        } else if (status == Ipopt::LOCAL_INFEASIBILITY) {
            answer_.status = Status::Infeasible;
        }
    }

    /// Throws what the pace has thrown.
    NonlinearAnswer takeAnswer() {
        if (exception_) std::rethrow_exception(exception_);
        return std::move(answer_);
    }

private:
    static constexpr double equationWidth = 1e-9;

    void go(Index n, const Number* x, bool isNew) {
        if (isNew) problem_.moveTo({x, at(n)});
    }

    LocalProblem& problem_;
    const NonlinearSettings& settings_;
    std::unique_lock<std::mutex>& lock_;
    NonlinearAnswer answer_;
    std::exception_ptr exception_;
};

void setOptions(Ipopt::OptionsList& options, const LocalProblem& problem,
                const NonlinearSettings& settings) {
    options.SetStringValue("sb", "yes");
    options.SetIntegerValue("print_level", 0);
    options.SetStringValue("linear_solver", "mumps");
    options.SetIntegerValue("max_iter", settings.mostIterations);
    options.SetNumericValue("tol", settings.tolerance);
    options.SetNumericValue("constr_viol_tol", settings.tolerance);
    options.SetNumericValue("acceptable_constr_viol_tol", 10.0 * settings.tolerance);
    options.SetNumericValue("nlp_lower_bound_inf", -0.9 * ipoptInfinity);
    options.SetNumericValue("nlp_upper_bound_inf", 0.9 * ipoptInfinity);
    // Points outside by a hair would have to be moved back, away from steep equations.
    options.SetNumericValue("bound_relax_factor", 0.0);
    if (!problem.hasHessian()) options.SetStringValue("hessian_approximation", "limited-memory");
    if (settings.isBarrierAdaptive) options.SetStringValue("mu_strategy", "adaptive");
    if (settings.isStartGood) {
        constexpr double push = 1e-6;
        for (const char* option :
             {"bound_push", "bound_frac", "slack_bound_push", "slack_bound_frac"}) {
            options.SetNumericValue(option, push);
        }
        options.SetNumericValue("mu_init", 1e-4);
    }
}

}  // namespace

std::string_view nonlinearBackEndName() {
    return "Ipopt " IPOPT_VERSION;
}

NonlinearAnswer solveByBackEnd(LocalProblem& problem, const NonlinearSettings& settings) {
    std::unique_lock lock(libraryLock());
    Ipopt::SmartPtr<Ipopt::IpoptApplication> application =
        new Ipopt::IpoptApplication(/*create_console_out=*/false);
    application->RethrowNonIpoptException(false);
    setOptions(*application->Options(), problem, settings);
    // An empty name: no options from files in the current folder.
    if (application->Initialize("") != Ipopt::Solve_Succeeded) return {};
    Ipopt::SmartPtr<IpoptProblem> task = new IpoptProblem(problem, settings, lock);
    application->OptimizeTNLP(Ipopt::GetRawPtr(task));
    return task->takeAnswer();
}

}  // namespace engine
