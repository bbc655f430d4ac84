#include "script/control_registry.h"

#include <algorithm>
#include <cctype>

#include "core/event_table.h"
#include "core/number_text.h"
#include "detect/digital_filter.h"

namespace ardel {

namespace {

std::string Lower(std::string_view s) {
    std::string out(s);
    for (char& c : out) c = char(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string Lines(const std::vector<std::string>& items) {
    std::string text;
    for (const std::string& item : items) text += item + '\n';
    return text;
}

template <std::size_t N>
std::vector<std::string> Items(const std::array<const char*, N>& list) {
    return {list.begin(), list.end()};
}

}  // namespace

std::string_view ControlKindName(ControlKind kind) {
    switch (kind) {
        case ControlKind::TextBox: return "text box";
        case ControlKind::CheckBox: return "check box";
        case ControlKind::OptionButton: return "option button";
        case ControlKind::ComboBox: return "combo box";
        case ControlKind::Label: return "label";
        case ControlKind::List: return "list";
        case ControlKind::Grid: return "grid";
        case ControlKind::Slider: return "slider";
    }
    return "control";
}

bool CheckValue(std::string_view text) {
    const std::string t = Lower(Trim(text));
    if (t == "true" || t == "1") return true;
    if (t == "false" || t == "0") return false;
    throw ControlValueError("a check box takes True, False, 1 or 0, not \"" + std::string(text) +
                            "\"");
}

void ControlRegistry::Add(std::string name, Control control) {
    controls_[std::move(name)] = std::move(control);
}

const Control* ControlRegistry::Find(std::string_view name) const {
    const auto it = controls_.find(name);
    return it == controls_.end() ? nullptr : &it->second;
}

std::vector<std::string> ControlRegistry::Names() const {
    std::vector<std::string> names;
    for (const auto& [name, control] : controls_) names.push_back(name);
    return names;
}

void ControlRegistry::AddText(std::string name, std::string& field) {
    Add(std::move(name), {ControlKind::TextBox, [&field] { return field; },
                          [&field](std::string_view v) { field = std::string(v); }});
}

void ControlRegistry::AddCheck(std::string name, bool& field, ControlKind kind) {
    Add(std::move(name), {kind, [&field] { return std::string(FlagText(field)); },
                          [&field](std::string_view v) { field = CheckValue(v); }});
}

void ControlRegistry::AddCombo(std::string name, std::string& field) {
    Add(std::move(name), {ControlKind::ComboBox, [&field] { return field; },
                          [&field](std::string_view v) { field = std::string(v); }});
}

void ControlRegistry::AddComboIndex(std::string name, int& field, std::vector<std::string> items) {
    auto get = [&field, items] {
        return field >= 0 && field < int(items.size()) ? items[std::size_t(field)] : std::string();
    };
    auto set = [&field, items](std::string_view v) {
        const auto it = std::find(items.begin(), items.end(), v);
        if (it == items.end())
            throw ControlValueError("\"" + std::string(v) + "\" is not an entry of the list");
        field = int(it - items.begin());
    };
    Add(std::move(name), {ControlKind::ComboBox, get, set});
}

void ControlRegistry::AddLabel(std::string name, const std::string& field) {
    Add(std::move(name), {ControlKind::Label, [&field] { return field; }, {}});
}

void ControlRegistry::AddList(std::string name, const std::vector<std::string>& field) {
    Add(std::move(name), {ControlKind::List, [&field] { return Lines(field); }, {}});
}

void ControlRegistry::AddSlider(std::string name, std::int32_t& field) {
    Add(std::move(name),
        {ControlKind::Slider, [&field] { return std::to_string(field); },
         [&field](std::string_view v) { field = ToInt32Clamped(Val(v)); }});
}

void RegisterMainFormControls(ControlRegistry& r, Forms& forms, const Session& s) {
    MainForm& f = forms.main;
    r.AddText("DirListBoxFETCH", f.DirListBoxFETCH);
    r.AddList("FListBoxFETCH", f.FListBoxFETCH);
    r.AddLabel("Label11", f.Label11);
    r.AddLabel("Label4", f.Label4);
    r.AddCheck("ckCursors", f.ckCursors);
    r.AddLabel("lbCursor", f.lbCursor);
    r.AddText("Text1", f.Text1);
    r.AddText("Text3", f.Text3);
    r.AddSlider("Slider1", f.Slider1);
    r.AddSlider("Slider2", f.Slider2);
    // The channel list is filled when a file opens; only its entries can be shown.
    r.Add("Combo3", {ControlKind::ComboBox, [&f] { return f.Combo3; },
                     [&f](std::string_view v) {
                         if (std::find(f.Combo3Items.begin(), f.Combo3Items.end(), v) ==
                             f.Combo3Items.end())
                             throw ControlValueError("\"" + std::string(v) +
                                                     "\" is not an entry of the list");
                         f.Combo3 = std::string(v);
                     }});
    for (std::size_t i = 0; i < f.Text4.size(); ++i)
        r.AddText("Text4(" + std::to_string(i) + ")", f.Text4[i]);
    r.AddComboIndex("Combo1", f.Combo1, Items(kCombo1Items));
    r.AddCombo("Combo2", f.Combo2);
    r.AddCheck("ckComplexPeak", f.ckComplexPeak);
    r.AddCheck("ckSoundOn", f.ckSoundOn);
    r.AddCheck("ckTooltips", f.ckTooltips);
    r.AddCheck("ckLockBase", f.ckLockBase);
    r.AddCombo("cbFraction", f.cbFraction);
    r.AddCheck("ckDisplayTrace", f.ckDisplayTrace);
    r.AddCombo("cbGpNav", f.cbGpNav);
    r.AddCombo("cbInterval", f.cbInterval);
    r.AddCheck("Check1", f.Check1);
    r.AddComboIndex("Combo4", f.Combo4, Items(kFilterTypeCaptions));
    r.AddCombo("Combo5", f.Combo5);
    r.AddComboIndex("SSTab1", f.SSTab1, {"Analysis", "Options"});
    r.AddLabel("StatusText", f.StatusText);
    r.Add("TDBGrid1", {ControlKind::Grid, [&s] { return GridText(s.events, s.recording); }, {}});

    DatInfoForm& d = forms.datInfo;
    r.Add("DatInfo.Grid1", {ControlKind::Grid,
                            [&d] {
                                std::string text = "Parameter\tValue\n";
                                for (const auto& [label, value] : d.Grid1)
                                    text += label + '\t' + value + '\n';
                                return text;
                            },
                            {}});
    r.AddLabel("DatInfo.Caption", d.Caption);
}

}  // namespace ardel
