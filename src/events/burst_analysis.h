// The Criteria window's burst tab ("Burst Analysis and Reports"): runs of closely spaced
// events become bursts, marked with the burst group and numbered, one row per burst in the two
// Data Arrays, a graph of events per burst against time, and a report for the clipboard and,
// if wanted, a text file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "events/criteria_search.h"

namespace ardel {

// One burst: its rows in the (time-sorted) table, first..last inclusive.
struct Burst {
    std::int32_t first = 0;
    std::int32_t last = 0;
    std::int32_t Count() const { return last - first + 1; }
};

// The interval from each row to the next, one Single per row (index 1..N, element 0 unused).
// The last row has no next row; its value is NaN, which no limit admits.
std::vector<float> InterEventIntervals(const EventTable& t);

// The bursts among rows whose intervals are given: a run starts at a row whose interval to the
// next is at most maxInterval (inclusive) and takes every following row while the interval
// holds, plus the row behind the last qualifying interval. A run of at least minEvents rows is
// a burst.
std::vector<Burst> FindBursts(const std::vector<float>& intervals, double maxInterval,
                              double minEvents);

// The report as the clipboard gets it: three head lines, the column titles, then one line per
// event of every burst; tabs between columns, CR LF line ends.
std::string BurstReportText(const Session& s, const CriteriaForm& f,
                            const std::vector<Burst>& bursts, const std::vector<float>& intervals);

// "Start" of the burst tab (Criteria.Command4).
void Criteria_Command4(Session& s, UserDialogs& ui, CriteriaForm& f);

}  // namespace ardel
