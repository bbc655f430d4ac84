// The desktop's own preferences: the recordings opened last and the folder used last. They live
// in the user's preferences (QSettings), never in Ardelvan.ini, whose keys keep their rules.
#pragma once

#include <QString>
#include <QStringList>

namespace ardel {

class RecentFiles {
  public:
    static constexpr int kMaxFiles = 8;

    // Most recent first; files that no longer exist are left out.
    static QStringList List();
    // Puts a file first in the list.
    static void Add(const QString& file);
    static QString LastFolder();
    static void SetLastFolder(const QString& folder);
};

}  // namespace ardel
