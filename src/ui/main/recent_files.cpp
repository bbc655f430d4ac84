#include "ui/main/recent_files.h"

#include <QFileInfo>
#include <QSettings>

namespace ardel {

namespace {

// An ini file in the user's configuration folder, apart from the program's Ardelvan.ini.
QSettings Preferences() {
    return QSettings(QSettings::IniFormat, QSettings::UserScope, "Ardelvantine",
                     "ardelvantine-desktop");
}

}  // namespace

QStringList RecentFiles::List() {
    QStringList files = Preferences().value("RecentFiles").toStringList();
    files.removeIf([](const QString& f) { return !QFileInfo(f).isFile(); });
    return files.mid(0, kMaxFiles);
}

void RecentFiles::Add(const QString& file) {
    const QString full = QFileInfo(file).absoluteFilePath();
    QStringList files = Preferences().value("RecentFiles").toStringList();
    files.removeAll(full);
    files.prepend(full);
    Preferences().setValue("RecentFiles", files.mid(0, kMaxFiles));
}

QString RecentFiles::LastFolder() {
    return Preferences().value("LastFolder").toString();
}

void RecentFiles::SetLastFolder(const QString& folder) {
    Preferences().setValue("LastFolder", folder);
}

}  // namespace ardel
