#include "core/user_dialogs.h"

namespace ardel {

// With nobody to ask, the cautious answer: the declared default, else the one that changes
// nothing (No, Cancel).
Answer SilentDialogs::Ask(std::string_view, std::string_view, Buttons buttons,
                          Answer defaultAnswer) {
    if (defaultAnswer != Answer::None) return defaultAnswer;
    switch (buttons) {
        case Buttons::OK: return Answer::OK;
        case Buttons::OKCancel: return Answer::Cancel;
        case Buttons::YesNo: return Answer::No;
        case Buttons::YesNoCancel: return Answer::Cancel;
        case Buttons::RetryCancel: return Answer::Cancel;
    }
    return Answer::Cancel;
}

}  // namespace ardel
