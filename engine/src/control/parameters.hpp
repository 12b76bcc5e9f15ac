#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace engine {

/// Values that a parameter may take, both ends included.
struct ParameterRange {
    const char* name;
    std::int64_t lowest;
    std::int64_t highest;
};

constexpr std::int64_t largestInt = std::numeric_limits<int>::max();
constexpr std::int64_t largestCount = std::numeric_limits<std::int64_t>::max();

constexpr ParameterRange verbosityRange{"verbosity", 0, 1};
constexpr ParameterRange nbThreadsRange{"number of threads", 0, 1024};
constexpr ParameterRange seedRange{"seed", 0, largestInt};
constexpr ParameterRange annealingLevelRange{"annealing level", 0, 9};
constexpr ParameterRange iterationTickRange{"iterations between ticks", 1, largestCount};
constexpr ParameterRange timeTickRange{"seconds between ticks", 1, largestInt};
constexpr ParameterRange timeLimitRange{"time limit", 0, largestInt};
constexpr ParameterRange iterationLimitRange{"iteration limit", 0, largestCount};

/// What the user sets before a solve.
struct Parameters {
    int verbosity = 1;
    int nbThreads = 0;  ///< 0: as many as the machine has processors
    int seed = 0;
    int annealingLevel = 1;
    std::int64_t iterationsBetweenTicks = 10000;
    int secondsBetweenTicks = 1;
    /// By objective position, shorter than the list of objectives when the rest has none.
    std::vector<std::optional<double>> thresholds;
};

/// A part of a solve with limits of its own, counted from its start.
struct Phase {
    int timeLimit = std::numeric_limits<int>::max();  ///< seconds
    std::int64_t iterationLimit = std::numeric_limits<std::int64_t>::max();
};

}  // namespace engine
