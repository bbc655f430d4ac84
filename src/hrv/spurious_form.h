// The form that scans for spurious RR intervals. Its option buttons are shown and kept but the
// scan uses none of them: "Scan and Select" always rejects the intervals that are too short.
#pragma once

namespace ardel::hrv {

struct HrvSpuriousForm {
    static constexpr const char* kCaption = "Heart Rate Variability: Select Spurious RR Intervals";
    // "By Range" (0), "By Percentage" (1), Option3 (2).
    int Option1 = 0;
    // Under "Results": "Mark as group #" (0), "Reject (mark as group #255)" (1), "Delete" (2).
    int Option2 = 1;
};

}  // namespace ardel::hrv
