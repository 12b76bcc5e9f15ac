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
    /// @param model     outlives this.
    /// @param mustHold  asked on the methods' threads several times a second; true holds them.
    Schedule(const ClosedModel& model, Point start, int seed, std::function<bool()> mustHold);

    /// All methods have ended.
    [[nodiscard]] bool isOver() const { return running_.empty() && next_ == stages_.size(); }
    /// The methods of the next stage are to be chosen before anything else.
    [[nodiscard]] bool isStageDue() const { return running_.empty() && next_ < stages_.size(); }
    /// Asks the methods of the next stage whether they apply, and starts those that do. In a
    /// worker, since that may take a while.
    void openStage();

    [[nodiscard]] std::size_t nbRunning() const { return running_.size(); }
    [[nodiscard]] Method& method(std::size_t k) { return *running_[k].method; }

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
    /// Takes those that have ended from the list, after a turn and a look at what they found.
    void dropEnded();
    /// Has all end with what they have in hand, see PacedThread::conclude.
    void conclude(bool isUrgent);

    /// All methods have been asked, but for those that come when nothing else is left.
    [[nodiscard]] bool hasChosen() const { return next_ + 1 >= stages_.size(); }
    [[nodiscard]] const std::vector<MethodChoice>& choices() const { return choices_; }

private:
    struct Running {
        std::unique_ptr<Method> method;
        std::unique_ptr<PacedThread> thread;
        std::int64_t spent;
        [[nodiscard]] double time() const { return static_cast<double>(spent) / method->weight(); }
    };

    std::function<bool()> mustHold_;
    Ground ground_;
    std::vector<Stage> stages_;
    std::size_t next_ = 0;  ///< stage to be opened
    std::vector<MethodChoice> choices_;
    std::int64_t searchSpent_ = 0;
    std::vector<Running> running_;  ///< last: their threads work on the above
};

}  // namespace engine
