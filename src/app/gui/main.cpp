// The desktop program. "ardelvantine FILE" opens FILE as a click in the file list would.
//
// For the documentation's picture:
//   QT_QPA_PLATFORM=offscreen ardelvantine --analyse --screenshot docs/main_window.png
//       examples/demo.abf
// (one command line)
// opens the file with the default detection settings and a display fit for a picture (two
// seconds a screen, gain and offset fitted by Auto Scale), analyses the first screen as F9
// does, saves the window as a PNG and quits. Started without a file, the file list shows the
// folder used last.
#include <filesystem>
#include <fstream>
#include <string>

#include <QApplication>
#include <QCommandLineParser>
#include <QImage>
#include <QLineEdit>
#include <QTemporaryDir>

#include "ui/main_window.h"

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("Ardelvantine");

    QCommandLineParser parser;
    parser.setApplicationDescription("Detection and analysis of events in ABF recordings.");
    parser.addHelpOption();
    parser.addPositionalArgument("file", "A data file (.abf, .dat) or event file (.EVT) to open.",
                                 "[file]");
    const QCommandLineOption analyse("analyse", "Analyse the first screen after opening (F9).");
    const QCommandLineOption screenshot(
        "screenshot", "Save a picture of the window to <png> and quit; uses the default settings.",
        "png");
    parser.addOption(analyse);
    parser.addOption(screenshot);
    parser.process(app);

    // Ardelvan.ini lies beside the program. A picture for the documentation must not depend
    // on anyone's settings, so it is taken with a fresh folder.
    QTemporaryDir scratch;
    const bool takePicture = parser.isSet(screenshot);
    const std::filesystem::path programDir =
        takePicture ? std::filesystem::path(scratch.path().toStdString())
                    : std::filesystem::path(QCoreApplication::applicationDirPath().toStdString());

    if (takePicture) {
        std::ofstream ini(programDir / "Ardelvan.ini");
        ini << "[Display]\nDisplayTotalNumberBlockPerScreen=80\n";
    }

    ardel::Ardelvantine window(programDir);
    // The picture has the window's usual size, whatever screen it is taken on.
    if (takePicture) window.resize(1280, 820);
    window.show();

    const QStringList files = parser.positionalArguments();
    if (!files.isEmpty())
        window.OpenFileAsClick(std::filesystem::path(files.first().toStdString()));
    else if (!takePicture)
        window.ShowLastFolder();
    if (takePicture) window.menu_AutoScale_Click();
    if (parser.isSet(analyse)) window.Command1_Click();

    if (takePicture) {
        // The picture shows the folder as it was named, not where it lies on this machine.
        if (!files.isEmpty()) {
            const std::filesystem::path named(files.first().toStdString());
            const std::string folder = named.is_absolute() ? named.parent_path().filename().string()
                                                           : named.parent_path().string();
            if (auto* box = window.findChild<QLineEdit*>("DirListBoxFETCH"))
                box->setText(QString::fromStdString(folder));
        }
        QApplication::processEvents();
        const QImage picture = window.grab().toImage();
        return picture.save(parser.value(screenshot)) ? 0 : 1;
    }
    return app.exec();
}
