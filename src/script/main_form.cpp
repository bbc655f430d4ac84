#include "script/main_form.h"

#include <algorithm>
#include <cmath>
#include <cctype>
#include <system_error>

#include "detect/digital_filter.h"
#include "detect/suggested_parameters.h"
#include "view/trace_scene.h"

namespace ardel {

namespace fs = std::filesystem;

namespace {

std::string Lower(std::string_view s) {
    std::string out(s);
    for (char& c : out) c = char(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

// The file list shows data files (*.da?), event files and ABF files, in any case.
bool ShownInFileList(const std::string& name) {
    const std::string n = Lower(name);
    const auto dot = n.rfind('.');
    if (dot == std::string::npos) return false;
    const std::string ext = n.substr(dot + 1);
    return (ext.size() == 3 && ext.compare(0, 2, "da") == 0) || ext == "evt" || ext == "abf";
}

void SortIgnoringCase(std::vector<std::string>& names) {
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        const std::string la = Lower(a), lb = Lower(b);
        return la != lb ? la < lb : a < b;
    });
}

}  // namespace

void ReadControls(Session& s, const MainForm& f) {
    for (std::size_t i = 0; i < kText4Keys.size(); ++i) ApplyAnalysisParam(s, kText4Keys[i], f.Text4[i]);
    s.params.PeakDirection = std::int16_t(f.Combo1 == 1 ? 1 : -1);
    ApplyAnalysisParam(s, "NumberPointsPeak", f.Combo2);
    ProgramOptions& o = s.options;
    o.ComplexPeak = f.ckComplexPeak;
    o.SoundOn = f.ckSoundOn;
    o.DisplayTooltips = f.ckTooltips;
    o.ckLockBase = f.ckLockBase;
    o.cbFraction = f.cbFraction;
    s.display.DisplayTrace = f.ckDisplayTrace;
    o.GroupNavigate = f.cbGpNav;
    o.JumpInterval = f.cbInterval;
    o.FilterOn = f.Check1;
    o.FilterType = f.Combo4;
    o.FilterFreq = f.Combo5;
}

void WriteParameterControls(const Session& s, MainForm& f) {
    const DetectionFrameTexts texts = DetectionTexts(s.params);
    f.Text4 = texts.Text4;
    f.Combo1 = s.params.PeakDirection == 1 ? 1 : 0;
    f.Combo2 = s.options.Combo2;
    f.ckComplexPeak = s.options.ComplexPeak;
}

void WriteOptionControls(const Session& s, MainForm& f) {
    const ProgramOptions& o = s.options;
    f.ckSoundOn = o.SoundOn;
    f.ckTooltips = o.DisplayTooltips;
    f.ckLockBase = o.ckLockBase;
    f.cbFraction = o.cbFraction;
    f.ckDisplayTrace = s.display.DisplayTrace;
    f.cbGpNav = o.GroupNavigate;
    f.cbInterval = o.JumpInterval;
    f.Check1 = o.FilterOn;
    // The list has no entry for another index; the box keeps its choice then.
    if (o.FilterType >= 0 && o.FilterType < int(kFilterTypeCaptions.size())) f.Combo4 = o.FilterType;
    f.Combo5 = o.FilterFreq;
    f.ckComplexPeak = o.ComplexPeak;
}

void ApplySettingsTexts(Session& s, MainForm& f, const MainWindowTexts& t) {
    std::error_code ec;
    if (!s.options.DataDir.empty() && fs::is_directory(s.options.DataDir, ec))
        ShowFolder(s, f, s.options.DataDir);
    f.Text1 = t.Text1;
    f.Text3 = SetBlocksPerScreenText(s, t.Text3);
    f.Combo1 = t.Combo1 == "Positive" ? 1 : 0;
    f.Text4 = t.Text4;
    f.Combo2 = s.options.Combo2;
    WriteOptionControls(s, f);
    ShowDisplayControls(s, f);
}

void LoadStartupSettings(Session& s, MainForm& f, UserDialogs& ui, const fs::path& programDir) {
    try {
        ApplySettingsTexts(s, f, LoadIniSettings(s, ArdelvanIniPath(programDir), programDir));
    } catch (const std::exception& e) {
        // The session is as it was before the load: the defaults.
        s.options.DataDir = programDir.string();
        ApplySettingsTexts(s, f, MainWindowTexts{});
        ui.Message("Ardelvan.ini",
                   std::string(e.what()) + "\n\nThe program starts with the default settings.");
    }
}

void ShowDisplayControls(const Session& s, MainForm& f) {
    // Slider1's travel: two picture heights each way.
    constexpr std::int32_t kOffsetRange = 2 * 65536;
    const Recording& r = s.recording;
    const int channel = std::min<int>(r.ChannelIndex, 15);
    f.Slider1 = std::clamp<std::int32_t>(s.display.DisplayOffset[std::size_t(channel)],
                                         -kOffsetRange, kOffsetRange);
    if (r.FileIsOpen) {
        f.Slider2 = std::int32_t(std::lround(r.ScreenBlock));
        const int channels = std::max(1, r.Channels());
        if (int(f.Combo3Items.size()) != channels) {
            f.Combo3Items.clear();
            for (int c = 0; c < channels; ++c) f.Combo3Items.push_back(std::to_string(c));
        }
        f.Combo3 = std::to_string(int(r.ChannelIndex));
    }
    f.Label11 = s.Label11;
}

void ShowFolder(Session& s, MainForm& f, const fs::path& folder) {
    std::error_code ec;
    const fs::path dir = fs::weakly_canonical(fs::absolute(folder, ec), ec);
    if (dir.empty() || !fs::is_directory(dir, ec)) return;
    s.CurrentFolder = dir;
    s.options.DataDir = dir.string();
    f.DirListBoxFETCH = dir.string();

    std::vector<std::string> folders, files;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        // Hidden entries stay hidden, as the list has always shown them.
        if (name.starts_with('.')) continue;
        std::error_code typeError;
        if (it->is_directory(typeError))
            folders.push_back(name);
        else if (it->is_regular_file(typeError) && ShownInFileList(name))
            files.push_back(name);
    }
    SortIgnoringCase(folders);
    SortIgnoringCase(files);
    f.FListBoxFETCH.clear();
    if (dir.has_parent_path() && dir.parent_path() != dir) f.FListBoxFETCH.push_back("..");
    f.FListBoxFETCH.insert(f.FListBoxFETCH.end(), folders.begin(), folders.end());
    f.FListBoxFETCH.insert(f.FListBoxFETCH.end(), files.begin(), files.end());
}

}  // namespace ardel
