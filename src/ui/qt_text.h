// The engine's texts are UTF-8 std::strings; Qt's are QStrings. One pair of conversions for
// every window.
#pragma once

#include <string>
#include <string_view>

#include <QString>

namespace ardel {

inline QString Q(std::string_view s) {
    return QString::fromUtf8(s.data(), qsizetype(s.size()));
}

inline std::string S(const QString& s) {
    return s.toStdString();
}

}  // namespace ardel
