#pragma once

#include <cstdint>
#include <limits>

#include "evaluate/pace.hpp"

namespace engine {

/// A pace that counts what is spent, and ends before the whole does when its own part is used up.
class PartOfPace final : public Pace {
public:
    /// @param whole  outlives it.
    explicit PartOfPace(Pace& whole,
                        std::int64_t mostSteps = std::numeric_limits<std::int64_t>::max())
        : whole_(whole), mostSteps_(mostSteps) {}

    bool spend(std::int64_t steps) override {
        spent_ += steps;
        return whole_.spend(steps) && spent_ < mostSteps_;
    }
    [[nodiscard]] bool mustEnd() override { return spent_ >= mostSteps_ || whole_.mustEnd(); }
    [[nodiscard]] std::int64_t spent() const { return spent_; }

private:
    Pace& whole_;
    std::int64_t mostSteps_;
    std::int64_t spent_ = 0;
};

}  // namespace engine
