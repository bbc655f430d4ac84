// Auto- and cross-correlograms of the event times in the Data Arrays (ms): counts of the pair
// differences per bin, drawn as a line graph. They live beside the histograms because they
// open graphs; the arrays themselves are the session's.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// Counters 0..upperBin of the differences |v(j) - v(i)| over all pairs i < j that lie in
// 0..upperBin x binSize (both ends inclusive); a difference d goes to Int(d / binSize). The
// differences are Singles, as the values. NaN values take part in no pair's count. Equal to
// counting every pair; the values are sorted first so that only pairs inside the range are
// visited.
std::vector<std::int64_t> AutoCorrelogramCounts(std::span<const float> values, float binSize,
                                                std::int32_t upperBin);

// Counters -upperBin..upperBin (index k + upperBin) of d = to(j) - from(i) over every i and j,
// for d in -upperBin x binSize .. upperBin x binSize inclusive; d goes to Int(d / binSize), Int
// being the floor, so a d just below 0 counts in bin -1.
std::vector<std::int64_t> CrossCorrelogramCounts(std::span<const float> from,
                                                 std::span<const float> to, float binSize,
                                                 std::int32_t upperBin);

// menu_AutoCorrelogram(Index): 1 for Array #1, 2 for Array #2.
void menu_AutoCorrelogram(Session& s, UserDialogs& ui, int index);
// menu_CrossCorrelogram(Index): 1 for Array #1 against Array #2, 2 the other way.
void menu_CrossCorrelogram(Session& s, UserDialogs& ui, int index);

}  // namespace ardel
