// The traces of the group analysis window: one row per cut trace, row 0 their average, and one
// more row for the last fitted curve. Lives from one Start Display to the next.
#pragma once

#include <cstdint>
#include <vector>

namespace ardel::group {

struct TraceStore {
    // Rows 1..TraceCount are the cut traces in event-table order.
    std::int32_t TraceCount = 0;
    // Points per row; Val(Combo4) * 256 when the store was built.
    std::int32_t TracePoints = 0;
    // (TraceCount + 2) rows of TracePoints samples, row by row: row 0 the average, rows
    // 1..TraceCount the traces, row TraceCount + 1 the last fitted curve.
    std::vector<std::int16_t> Traces;
    // The event number each row came from (0 in episode mode and for rows 0 and TraceCount + 1).
    // 16 bits wide, as the window keeps it.
    std::vector<std::int16_t> TraceEvent;
    // The trace shown in the individual types; 0 after every Start Display.
    std::int32_t CurrentTrace = 0;
    // Rounded mean amplitude of the group's events: the reference of the scaled types.
    std::int32_t MeanAmplitude = 0;

    bool Empty() const { return TraceCount < 1; }
    std::int16_t* Row(std::int32_t trace) {
        return Traces.data() + static_cast<std::size_t>(trace) * static_cast<std::size_t>(TracePoints);
    }
    const std::int16_t* Row(std::int32_t trace) const {
        return Traces.data() + static_cast<std::size_t>(trace) * static_cast<std::size_t>(TracePoints);
    }
    std::int16_t& At(std::int32_t trace, std::int32_t point) { return Row(trace)[point]; }
    std::int16_t At(std::int32_t trace, std::int32_t point) const { return Row(trace)[point]; }
    // Dimensions the store for `count` traces of `points` points, all zero.
    void Dimension(std::int32_t count, std::int32_t points) {
        TraceCount = count;
        TracePoints = points;
        Traces.assign(static_cast<std::size_t>(count + 2) * static_cast<std::size_t>(points), 0);
        TraceEvent.assign(static_cast<std::size_t>(count + 2), 0);
        CurrentTrace = 0;
    }
};

}  // namespace ardel::group
