#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "control/method_choice.hpp"
#include "control/paced_thread.hpp"
#include "methods/method_list.hpp"

namespace engine {

/// The methods of one solve: which apply, and whose turn it is.
///
/// The stages of the list follow one another. The methods of a stage, and the local search beside
/// them, take turns: the next one goes to who has spent least for its weight. Spent is work, which
/// is counted, so that the same model and seed give the same turns.
///
/// On the solve thread while the workers rest, but openStage() and advance().
class Schedule {
public:
    /// @param mustHold  asked on the methods' threads several times a second; true holds them.
    /// @param root      propagated already, without conflict; or null.
    Schedule(std::shared_ptr<const ClosedModel> model, const Propagator* root, Point start,
             int seed, std::function<bool()> mustHold);

    /// All methods have ended.
    [[nodiscard]] bool isOver() const { return running_.empty() && next_ == stages_.size(); }
    /// The methods of the next stage are to be chosen before anything else.
    [[nodiscard]] bool isStageDue() const { return running_.empty() && next_ < stages_.size(); }
    /// Asks the methods of the next stage whether they apply, and starts those that do. In a
    /// worker, since that may take a while.
    void openStage();

    [[nodiscard]] std::size_t nbRunning() const { return running_.size(); }
    [[nodiscard]] Method& method(std::size_t k) { return *running_[k].method; }
    /// What it found is its own: nobody else may look.
    [[nodiscard]] bool isLeftBehind(std::size_t k) const {
        return running_[k].thread->isLeftBehind();
    }

    enum class Turn { OfMethod, OfSearch, OfNobody };
    struct Slot {
        Turn turn;
        std::size_t method;  ///< OfMethod: which of those running
    };
    /// Whose turn it is on each of `nbWorkers` workers at once.
    [[nodiscard]] std::vector<Slot> nextTurns(std::size_t nbWorkers) const;
    /// Lets a running method spend `work`. In a worker. @return what it has spent.
    std::int64_t advance(std::size_t k, std::int64_t work);
    void chargeSearch(std::int64_t work) { searchSpent_ += work; }
    /// Takes those that have ended or are left behind from the list, after a turn and a look at
    /// what the former found.
    void dropEnded();
    /// Has all end with what they have in hand, see PacedThread::conclude. Those that are left
    /// behind are no longer among those running.
    void conclude(bool isUrgent);
    /// Leaves those behind that have a turn; who waits for them returns.
    void leaveBehind();

    /// All methods have been asked, but for those that come when nothing else is left.
    [[nodiscard]] bool hasChosen() const { return next_ + 1 >= stages_.size(); }
    [[nodiscard]] const std::vector<MethodChoice>& choices() const { return choices_; }

private:
    struct Running {
        std::shared_ptr<Method> method;  ///< shared with its thread, as is the ground
        std::unique_ptr<PacedThread> thread;
        std::int64_t spent;
        [[nodiscard]] double time() const { return static_cast<double>(spent) / method->weight(); }
    };

    std::function<bool()> mustHold_;
    std::shared_ptr<const ClosedModel> model_;
    std::shared_ptr<Ground> ground_;
    std::vector<Stage> stages_;
    std::size_t next_ = 0;  ///< stage to be opened
    std::vector<MethodChoice> choices_;
    std::int64_t searchSpent_ = 0;
    std::vector<Running> running_;  ///< last: their threads work on the above
};

}  // namespace engine
