#include "control/schedule.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace engine {

Schedule::Schedule(std::shared_ptr<const ClosedModel> model, const Propagator* root, Point start,
                   int seed, std::function<bool()> mustHold)
    : mustHold_(std::move(mustHold)),
      model_(std::move(model)),
      ground_(std::make_shared<Ground>(*model_, std::move(start), seed, root)),
      stages_(makeStages(*ground_)) {}

void Schedule::openStage() {
    for (std::unique_ptr<Method>& method : stages_[next_++]) {
        choices_.push_back({method->name(), method->reasonAgainst()});
        if (!choices_.back().reasonAgainst.empty()) continue;
        const double weight = method->weight();
        // Who comes later has not been waiting.
        const double spent = std::isinf(weight) ? 0.0 : weight * static_cast<double>(searchSpent_);
        running_.push_back({std::move(method), nullptr, static_cast<std::int64_t>(spent)});
    }
    for (Running& r : running_) {
        // Whatever it works on stays with it, should it be left behind.
        auto job = [method = r.method, ground = ground_, model = model_](Pace& pace) {
            method->run(pace);
        };
        r.thread = std::make_unique<PacedThread>(std::move(job), mustHold_);
    }
}

std::vector<Schedule::Slot> Schedule::nextTurns(std::size_t nbWorkers) const {
    std::vector<std::size_t> order(running_.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) {
        return running_[a].time() < running_[b].time();
    });
    const bool isSearchWelcome =
        std::none_of(running_.begin(), running_.end(),
                     [](const Running& r) { return std::isinf(r.method->weight()); });
    const Slot other{isSearchWelcome ? Turn::OfSearch : Turn::OfNobody, 0};
    std::vector<Slot> slots(nbWorkers, other);
    // A single worker serves all in turn; of several, one at least is left to the search.
    std::size_t nbOfMethods = std::min(order.size(), std::max<std::size_t>(1, nbWorkers - 1));
    if (nbWorkers == 1 && !order.empty() && isSearchWelcome &&
        running_[order.front()].time() > static_cast<double>(searchSpent_)) {
        nbOfMethods = 0;
    }
    for (std::size_t k = 0; k < nbOfMethods; ++k) slots[k] = {Turn::OfMethod, order[k]};
    return slots;
}

std::int64_t Schedule::advance(std::size_t k, std::int64_t work) {
    const std::int64_t spent = running_[k].thread->advance(work);
    running_[k].spent += spent;
    return spent;
}

void Schedule::dropEnded() {
    std::erase_if(running_, [](const Running& r) {
        return r.thread->isLeftBehind() || r.thread->hasEnded();
    });
}

void Schedule::conclude(bool isUrgent) {
    for (Running& r : running_) {
        if (!r.thread->hasEnded()) r.thread->conclude(isUrgent);
    }
}

void Schedule::leaveBehind() {
    for (Running& r : running_) r.thread->leaveBehind();
}

}  // namespace engine
