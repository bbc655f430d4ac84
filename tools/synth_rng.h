// Uniform and normal deviates from mt19937 alone, so that a synthetic recording is the same
// with any standard library.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>

namespace ardel::synth {

struct Rng {
    explicit Rng(std::uint32_t seed) : gen(seed) {}
    double Uniform() { return (double(gen()) + 0.5) / 4294967296.0; }
    double Normal() {
        if (haveSpare) {
            haveSpare = false;
            return spare;
        }
        const double u1 = Uniform(), u2 = Uniform();
        const double r = std::sqrt(-2.0 * std::log(u1));
        spare = r * std::sin(2 * M_PI * u2);
        haveSpare = true;
        return r * std::cos(2 * M_PI * u2);
    }
    std::mt19937 gen;
    bool haveSpare = false;
    double spare = 0;
};

}  // namespace ardel::synth
