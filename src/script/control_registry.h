// Every control of every form by the name a script writes: main form controls bare
// ("Text4(0)"), the others with their form ("DatInfo.Grid1"). Each knows its kind and reads
// and writes what it shows as text.
#pragma once

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "script/forms.h"

namespace ardel {

enum class ControlKind { TextBox, CheckBox, OptionButton, ComboBox, Label, List, Grid, Slider };
std::string_view ControlKindName(ControlKind kind);

// A value a control cannot take: a check box given "maybe", an entry that a fixed list does
// not have, a grid or label written to.
class ControlValueError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Control {
    ControlKind kind = ControlKind::TextBox;
    // What the control shows: a text box's or label's text, "True"/"False", a combo box's
    // text; a list's items and a grid's rows one a line (a grid's cells tab-separated,
    // captions first).
    std::function<std::string()> get;
    // Empty for controls that show only what the program puts there (labels, grids).
    std::function<void(std::string_view)> set;
};

class ControlRegistry {
  public:
    void Add(std::string name, Control control);
    const Control* Find(std::string_view name) const;
    // Every name, sorted.
    std::vector<std::string> Names() const;

    // Typed helpers bound to a field of a form struct, which must outlive the registry.
    void AddText(std::string name, std::string& field);
    void AddCheck(std::string name, bool& field, ControlKind kind = ControlKind::CheckBox);
    // A combo box in which any text may be typed.
    void AddCombo(std::string name, std::string& field);
    // A combo box that shows only entries of its list; field is the list index.
    void AddComboIndex(std::string name, int& field, std::vector<std::string> items);
    void AddLabel(std::string name, const std::string& field);
    void AddList(std::string name, const std::vector<std::string>& field);
    void AddSlider(std::string name, std::int32_t& field);

  private:
    std::map<std::string, Control, std::less<>> controls_;
};

// "True"/"False" or "1"/"0" (any case); anything else is a ControlValueError.
bool CheckValue(std::string_view text);


// The main form's controls and the header window's grid.
void RegisterMainFormControls(ControlRegistry& r, Forms& forms, const Session& s);

}  // namespace ardel
