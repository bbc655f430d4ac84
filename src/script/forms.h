// Every form's controls as data, one struct per form. A form's controls can be used without
// the form being open, so each struct lives as long as the session.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "arrays/array_statistics.h"
#include "arrays/math_operation.h"
#include "arrays/statistical_tests.h"
#include "events/criteria_search.h"
#include "group/grp_anal_form.h"
#include "hrv/spurious_form.h"
#include "hrv/time_domain.h"
#include "hrv/geometric.h"
#include "hrv/spectral.h"
#include "script/main_form.h"

namespace ardel {

// The file header window (DatInfo): its caption and the rows of its grid, as the last
// "DAT File Info" filled them.
struct DatInfoForm {
    std::string Caption;
    std::vector<std::pair<std::string, std::string>> Grid1;
};

struct Forms {
    MainForm main;
    DatInfoForm datInfo;
    CriteriaForm criteria;
    // Set by the menu items that open the Criteria form; the desktop shows the window then.
    bool criteriaShown = false;
    // The statistics window and the arithmetic form of the Data Arrays; the flags are set by the
    // menu items that show them.
    CStatForm cstat;
    bool cstatShown = false;
    MathOperationForm mathOperation;
    bool mathOperationShown = false;
    // The statistical tests' form; shown by the menu items that choose a test.
    DataAnalysisForm dataAnalysis;
    bool dataAnalysisShown = false;
    // The group analysis window: its controls and its trace store.
    group::GroupWindow grpAnal;
    // The heart rate variability window of the time-domain measures; its menu item shows it and
    // reads its settings the first time.
    hrv::HrvForm hrv;
    bool hrvShown = false;
    bool hrvLoaded = false;
    // The scan for spurious RR intervals.
    hrv::HrvSpuriousForm hrvSpurious;
    bool hrvSpuriousShown = false;
    // The spectral and the geometrical heart rate windows; their menu items set the flags.
    hrv::HrvSpectralForm hrvSpectral;
    bool hrvSpectralShown = false;
    hrv::HrvGeoForm hrvGeo;
    bool hrvGeoShown = false;
};

}  // namespace ardel
