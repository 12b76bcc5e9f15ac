#pragma once

#include <cassert>
#include <cstdint>

namespace engine {

/// The search's own generator, the same numbers on every platform: xoshiro256++ (Blackman and
/// Vigna, "Scrambled linear pseudorandom number generators", 2021), seeded through splitmix64.
class Random {
public:
    explicit Random(std::uint64_t seed) {
        for (std::uint64_t& word : state_) {
            seed += 0x9e3779b97f4a7c15U;
            std::uint64_t z = seed;
            z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
            z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
            word = z ^ (z >> 31);
        }
    }

    std::uint64_t bits() {
        const std::uint64_t result = rotate(state_[0] + state_[3], 23) + state_[0];
        const std::uint64_t shifted = state_[1] << 17;
        state_[2] ^= state_[0];
        state_[3] ^= state_[1];
        state_[1] ^= state_[2];
        state_[0] ^= state_[3];
        state_[2] ^= shifted;
        state_[3] = rotate(state_[3], 45);
        return result;
    }
    /// Uniform in [0, 1).
    double unit() { return static_cast<double>(bits() >> 11) * 0x1.0p-53; }
    /// Uniform in 0 .. bound - 1 up to a bias of 2^-32; bound > 0.
    std::size_t below(std::size_t bound) {
        assert(bound > 0 && bound <= UINT32_MAX);
        return static_cast<std::size_t>(((bits() >> 32) * bound) >> 32);
    }
    bool chance(double probability) { return unit() < probability; }

private:
    static std::uint64_t rotate(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }

    std::uint64_t state_[4];
};

}  // namespace engine
