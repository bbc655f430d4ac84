// The Criteria window ("Criteria Search Events"): marking events with a group number by
// ranges over their columns, at random, or by a repeating time window. The window's controls
// are the CriteriaForm below; the commands read them at the moment of use. The burst tab's
// command is in burst_analysis.h.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

inline constexpr int kCriteriaCount = 16;
inline constexpr std::string_view kNoLowerBound = "Minimum";
inline constexpr std::string_view kNoUpperBound = "Maximum";
inline constexpr std::string_view kStartSelection = "Start Selection";
inline constexpr std::string_view kStopSelection = "Stop";

// The tabs of SSTab1, in order; the menu items open the form on theirs.
enum CriteriaTab : int { kSearchTab = 0, kRandomTab = 1, kEpisodicTab = 2, kBurstTab = 3 };

// The Criteria form's controls, as texts and states, with a freshly loaded form's defaults.
inline std::array<std::string, kCriteriaCount> AllBoundsAt(std::string_view word) {
    std::array<std::string, kCriteriaCount> a;
    a.fill(std::string(word));
    return a;
}

struct CriteriaForm {
    // Search tab: the bounds of the sixteen criteria, the inter-event interval's check box,
    // the group of the matching rows and of the rest.
    std::array<std::string, kCriteriaCount> Combo1 = AllBoundsAt(kNoLowerBound);
    std::array<std::string, kCriteriaCount> Combo2 = AllBoundsAt(kNoUpperBound);
    bool Check5 = false;                             // the inter-event interval is a criterion
    std::string Combo3 = "1";
    bool Check1 = false;  // "Mark the rest as Group #"
    std::string Combo4 = "0";
    // Random tab: how many, the group, unmark first, only ungrouped, mark the rest.
    std::string Text1 = "10";
    std::string Combo5 = "1";
    bool Check3 = false;
    bool Check4 = false;
    bool Check2 = false;
    std::string Combo6 = "0";
    std::string Command2Caption = std::string(kStartSelection);
    // Episodic tab: duration, start and end within an episode, the group, episode number as
    // group, bursting episodes, mark the rest.
    std::string Text2 = "1000";
    std::string Text3 = "0";
    std::string Text4 = "500";
    std::string Combo7 = "1";
    bool Check7 = false;
    bool Check8 = false;
    bool Check6 = false;
    std::string Combo8 = "0";
    // Burst tab: the fewest events of a burst and the longest interval inside one (ms).
    std::string Text7 = "3";
    std::string Text6 = "100";
    int SSTab1 = kSearchTab;  // the tab shown
};

// The label beside criterion k ("Time (ms):" ...); empty outside 0..15.
std::string_view CriteriaLabel(int k);
// Whether criterion k is a time in milliseconds, whose lists offer ".100" to "500.000".
bool CriteriaIsTime(int k);
// The list of Combo1(k) (upper false) or Combo2(k) (upper true): the word meaning no bound,
// then round values of 1, 2 and 5 per decade (100 .. 500000, or .100 .. 500.000 for times).
// They are suggestions; the boxes take any text.
std::vector<std::string> CriteriaBoundList(int k, bool upper);
// The lists of the group combos (Combo3 .. Combo8): "0" .. "255".
std::vector<std::string> GroupNumberList();

// "&Start Search": marks the rows that meet every criterion.
void Criteria_Command1(Session& s, UserDialogs& ui, CriteriaForm& f);
// "Start Selection" / "Stop": random selection. It yields to the window at every draw; a press
// of the same button during the run enters this handler again, which then finds the caption
// back at "Start Selection", skips the drawing and reports; the outer run then stops and
// reports too. Both reports are the program's behaviour.
void Criteria_Command2(Session& s, UserDialogs& ui, CriteriaForm& f);
// "Start": episodic grouping.
void Criteria_Command3(Session& s, UserDialogs& ui, CriteriaForm& f);

// The runtime's generator: a 24-bit linear congruential generator,
// state = (state * 0x43FD43FD + 0xC39EC3) mod 2^24, giving state / 2^24 in [0, 1). It starts
// from Session::RndState's initial value and is never reseeded, so every program start draws
// the same sequence.
float Rnd(Session& s);

}  // namespace ardel
