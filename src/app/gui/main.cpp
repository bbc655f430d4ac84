// The desktop program. "ardelvantine FILE" opens FILE as a click in the file list would.
//
// "ardelvantine --run SCRIPT" runs a script as "ardelvantine-cli run SCRIPT" does, with the same
// output and exit code, offscreen: no window shows.
//
// For the documentation's picture:
//   QT_QPA_PLATFORM=offscreen ardelvantine --analyse --screenshot docs/main_window.png
//       examples/demo.abf
// (one command line)
// opens the file with the default detection settings and a display fit for a picture (two
// seconds a screen, gain and offset fitted by Auto Scale), analyses the first screen as F9
// does, saves the window as a PNG and quits. Started without a file, the file list shows the
// folder used last.
//
//   ardelvantine --run SCRIPT [--program-dir DIR] [--screenshot PNG]
// runs a script as "ardelvantine-cli run" does, without a window; the pictures of graphs that
// the script saves are drawn, and --screenshot saves the graph frame with every graph tiled.
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include <QApplication>
#include <QCommandLineParser>
#include <QImage>
#include <QLineEdit>
#include <QTemporaryDir>

#include "app/cli/cli_run.h"
#include "script/script_runner.h"
#include "ui/criteria/criteria_window.h"
#include "ui/main_window.h"
#include "ui/plot/graph_window.h"

namespace {

bool RunRequested(int argc, char* argv[]) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--run") == 0 || std::strncmp(argv[i], "--run=", 6) == 0)
            return true;
    return false;
}

}  // namespace

int main(int argc, char* argv[]) {
    // A script run needs no screen; the platform is chosen before the application starts. Its
    // standard error carries the script's errors only, as the command line's does, so Qt's
    // notes about the environment stay out of it.
    if (RunRequested(argc, argv)) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            if (type == QtCriticalMsg || type == QtFatalMsg)
                std::cerr << text.toStdString() << '\n';
        });
    }
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
    const QCommandLineOption run(
        "run",
        "Run a script of the desktop's commands (as ardelvantine-cli run) offscreen and quit; "
        "- reads standard input.",
        "script");
    const QCommandLineOption programDirOption(
        "program-dir", "With --run: the folder of Ardelvan.ini (default: the program's folder).",
        "folder");
    const QCommandLineOption criteria(
        "criteria", "Open the Criteria window; with --screenshot the picture is of that window.");
    parser.addOption(analyse);
    parser.addOption(screenshot);
    parser.addOption(criteria);
    parser.addOption(run);
    parser.addOption(programDirOption);
    parser.process(app);

    if (parser.isSet(run)) {
        ardel::cli::RunOptions options;
        options.script = parser.value(run).toStdString();
        options.programDir = parser.value(programDirOption).toStdString();
        // Graph pictures are drawn without a window; the frame is built only for a picture.
        ardel::OffscreenGraphSink pictures;
        std::unique_ptr<ardel::GraphFrame> frame;
        const QString framePicture = parser.value(screenshot);
        options.prepare = [&](ardel::ScriptRunner& runner) {
            runner.session().graphSink = &pictures;
            if (framePicture.isEmpty()) return;
            frame = std::make_unique<ardel::GraphFrame>(runner.session(),
                                                         [](const std::string&) {});
            frame->resize(1280, 820);
        };
        int code = ardel::cli::RunScriptCommand(
            options, std::filesystem::path(QCoreApplication::applicationDirPath().toStdString()),
            std::cout, std::cerr);
        if (frame) {
            frame->show();
            frame->Arrange(2);
            QApplication::processEvents();
            if (!frame->grab().toImage().save(framePicture) && code == 0) code = 1;
        }
        return code;
    }

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
    if (takePicture) window.RunHandler("menu_AutoScale");
    if (parser.isSet(analyse)) window.RunHandler("Command1");
    if (parser.isSet(criteria)) window.RunHandler("menu_CriteriaSearch");

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
        QWidget* shown = &window;
        if (parser.isSet(criteria) && window.criteriaWindow()) shown = window.criteriaWindow();
        const QImage picture = shown->grab().toImage();
        return picture.save(parser.value(screenshot)) ? 0 : 1;
    }
    return app.exec();
}
