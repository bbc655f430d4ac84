// The lanes' run itself, compiled once for each vector unit in a file of its own with that
// unit's compiler flags. Everything here has internal linkage and uses built-in types only, so
// no code built for a wider unit can stand in for code the rest of the program calls.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ardel::lanes {

// What a run needs, as plain pointers: the filter's twenty coefficients (b0 b1 b2 a1 a2 of each
// section), the free-response table (chunk x 8), the state-transition matrix (8 x 8,
// row-major), the run's points going in and out, and the work arrays (chunk x lanes each).
struct Args {
    const double* coefficients;
    const double* freeResponse;
    const double* transition;
    std::size_t n;
    std::size_t chunk;
    double margin;
    const std::int16_t* in;
    std::int16_t* out;
    double* values;  // the unrounded output, or null
    double* work;
    std::int16_t* workIn;
};

bool RunAvx512(const Args& a);  // 8 lanes
bool RunAvx2(const Args& a);    // 4 lanes

namespace {

// Adding and taking away 1.5 x 2^52 rounds a double below 2^51 in size to the nearest integer,
// ties to even, in the default rounding mode: the rounding of the one-pass run, in lanes.
constexpr double kRoundMagic = 6755399441055744.0;

// Vectors of K doubles, of K comparison results, of K 32-bit and of K 16-bit integers.
template <int K>
struct Vectors {
    typedef double V __attribute__((vector_size(8 * K)));
    typedef long Mask __attribute__((vector_size(8 * K)));
    typedef std::int32_t VI __attribute__((vector_size(4 * K)));
    typedef std::int16_t VS __attribute__((vector_size(2 * K)));
};

// The run in K lanes: lane c takes the points [c chunk, (c+1) chunk) of the run, the last lane
// padded with zeros. Row j of the work arrays holds point j of every chunk, going in and
// coming out.
template <int K>
bool Run(const Args& a) {
    using V = typename Vectors<K>::V;
    using Mask = typename Vectors<K>::Mask;
    using VI = typename Vectors<K>::VI;
    using VS = typename Vectors<K>::VS;
    // The pointers in locals: the stores through the work arrays could otherwise alias them.
    const std::size_t L = a.chunk;
    const double* freeResponse = a.freeResponse;
    double* const values = a.values;
    double* X = a.work;
    std::int16_t* X16 = a.workIn;
    // Rows in which the last lane holds a point of the run rather than padding.
    const std::size_t fullRows = a.n - (K - 1) * L;

    for (std::size_t j = 0; j < L; ++j) {
        std::int16_t* row = X16 + j * K;
        for (int c = 0; c < K - 1; ++c) row[c] = a.in[std::size_t(c) * L + j];
        row[K - 1] = j < fullRows ? a.in[(K - 1) * L + j] : std::int16_t(0);
    }

    // Every chunk from rest, the sections in turn as in the one-pass run, the sums ordered so that
    // each is two fused multiply-adds.
    V cf[20];
    for (int i = 0; i < 20; ++i) cf[i] = V{} + a.coefficients[i];
    V ends[8] = {};  // two state values a section
    for (std::size_t j = 0; j < L; ++j) {
        VS x16;
        __builtin_memcpy(&x16, X16 + j * K, sizeof x16);
        V x = __builtin_convertvector(__builtin_convertvector(x16, VI), V);
#pragma GCC unroll 4
        for (int k = 0; k < 4; ++k) {
            const V* c = cf + 5 * k;
            const V y = c[0] * x + ends[2 * k];
            ends[2 * k] = ends[2 * k + 1] + c[1] * x - c[3] * y;
            ends[2 * k + 1] = c[2] * x - c[4] * y;
            x = y;
        }
        __builtin_memcpy(X + j * K, &x, sizeof x);
    }

    // The state each chunk really starts from: the first from rest, each next one what the
    // chunk before leaves, its own input's share plus the free run of its start state.
    double start[8][K] = {};
    for (int c = 1; c < K; ++c)
        for (int r = 0; r < 8; ++r) {
            double v = ends[r][c - 1];
            for (int i = 0; i < 8; ++i) v += a.transition[r * 8 + i] * start[i][c - 1];
            start[r][c] = v;
        }
    V st[8];
    for (int i = 0; i < 8; ++i) __builtin_memcpy(&st[i], start[i], sizeof(V));

    const V magic = V{} + kRoundMagic;
    const V edge = V{} + (0.5 - a.margin);
    const V lo = V{} - 32768.0, hi = V{} + 32767.0;
    // The last lane's padding (fewer than K points) is checked with the rest: a refusal there
    // costs only the one-pass run.
    Mask near{};
    for (std::size_t j = 0; j < L; ++j) {
        V y;
        __builtin_memcpy(&y, X + j * K, sizeof y);
        const double* g = freeResponse + j * 8;
        // Two chains of fused multiply-adds, which the rows overlap.
        const V lower = y + g[0] * st[0] + g[1] * st[1] + g[2] * st[2] + g[3] * st[3];
        const V upper = g[4] * st[4] + g[5] * st[5] + g[6] * st[6] + g[7] * st[7];
        y = lower + upper;
        const V r = (y + magic) - magic;
        const V d = y - r;
        // A value beyond 16 bits, which leaves its point as it was, is left to the one-pass
        // run as well: it is rare, and it keeps this loop free of the points going in.
        const Mask close = (d > edge) | (d < -edge) | (r < lo) | (r > hi);
        near |= close;
        const V kept = close ? V{} : r;
        const VS rs = __builtin_convertvector(__builtin_convertvector(kept, VI), VS);
        __builtin_memcpy(X16 + j * K, &rs, sizeof rs);
        if (values) __builtin_memcpy(X + j * K, &y, sizeof y);
    }
    if (values) {
        for (int c = 0; c < K - 1; ++c)
            for (std::size_t j = 0; j < L; ++j) values[std::size_t(c) * L + j] = X[j * K + c];
        for (std::size_t j = 0; j < fullRows; ++j) values[(K - 1) * L + j] = X[j * K + K - 1];
    }
    for (int c = 0; c < K; ++c)
        if (near[c]) return false;

    for (int c = 0; c < K - 1; ++c)
        for (std::size_t j = 0; j < L; ++j) a.out[std::size_t(c) * L + j] = X16[j * K + c];
    for (std::size_t j = 0; j < fullRows; ++j) a.out[(K - 1) * L + j] = X16[j * K + K - 1];
    return true;
}

}  // namespace
}  // namespace ardel::lanes
