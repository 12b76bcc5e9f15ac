#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/library_loading.hpp"
#include "host/slot.hpp"
#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "norv/options.hpp"
#include "translate/nlocalsolver.hpp"

/// A link object on an instance, with everything that the host would bring: one owner per test.
///
/// The built-in host stands behind the link's slots, the recording double behind `ls_*`.
class LinkFixture {
public:
    /// Binds the host's libraries on first use; reads the instance, `settings` are option lines.
    explicit LinkFixture(std::string_view instance, const std::vector<std::string>& settings = {});

    /// What preparing an instance does: a fresh solver, then model setup on emptied arrays. The
    /// defined variables of `define` are filled in between.
    /// @throws what `setupModel` throws.
    void setUp();

    /// A fresh solver in the modelling state and no variables made, for the construction helpers.
    void startModel();

    /// Makes `variable` defined by `row` in later setups.
    void define(std::int32_t variable, std::int32_t row);

    /// The text of the model as it stands.
    [[nodiscard]] std::string dump() const;

    /// One expression in full; variables by name whether they are named or not, doubles with a
    /// point or an exponent, integers without.
    [[nodiscard]] std::string typedText(localsolver::LSExpression expression) const;
    /// Its operands alone, which for a decision are its bounds.
    [[nodiscard]] std::string typedOperands(localsolver::LSExpression expression) const;

    norv::Environment environment;
    std::string log;  ///< log and status lines alike, once
    norv::Model model;
    norv::Options options;
    vex::NorvLocalSolver link;

private:
    void startSolver();

    std::vector<std::pair<std::int32_t, std::int32_t>> definitions;
};

/// Binds the link's slots to the built-in host; whoever has a fixture need not.
void bindHost();

/// The function that the built-in host exports as `symbol`, or null.
vex::AnyFunction hostFunction(const char* symbol);

/// The host's operation `slot`, exported as `symbol`, answers by `replacement` for the scope's
/// time.
template <class Function>
class SlotOverride {
public:
    SlotOverride(vex::Slot<Function>& slot, const char* symbol, Function* replacement)
        : slot_(slot), original_(hostFunction(symbol)) {
        if (original_ == nullptr) throw std::runtime_error(symbol);
        slot_.bind(reinterpret_cast<vex::AnyFunction>(replacement));
    }
    ~SlotOverride() { slot_.bind(original_); }
    SlotOverride(const SlotOverride&) = delete;
    SlotOverride& operator=(const SlotOverride&) = delete;

private:
    vex::Slot<Function>& slot_;
    vex::AnyFunction original_;
};
