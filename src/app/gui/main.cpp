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
//
//   ardelvantine --run SCRIPT [--program-dir DIR]
// runs a script as "ardelvantine-cli run" does, without a window, and draws the pictures of
// graphs that the script saves.
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

#include "script/script_runner.h"
#include "ui/main_window.h"
#include "ui/plot/graph_window.h"

namespace {

// screenshot: after the run, the graph frame with every graph, tiled, saved as a PNG.
int RunScript(const QString& script, const QString& programDir, const QString& screenshot) {
    const std::filesystem::path dir =
        programDir.isEmpty() ? std::filesystem::path(QCoreApplication::applicationDirPath().toStdString())
                             : std::filesystem::path(programDir.toStdString());
    std::error_code ec;
    if (!std::filesystem::is_directory(dir, ec)) {
        std::cerr << "error: the program folder " << dir.string() << " is not a folder\n";
        return 2;
    }
    ardel::ScriptRunner runner(std::cout, dir);
    ardel::OffscreenGraphSink pictures;
    runner.session().graphSink = &pictures;
    std::unique_ptr<ardel::GraphFrame> frame;
    if (!screenshot.isEmpty()) {
        // The picture shows the windows only; their menus are not used.
        frame = std::make_unique<ardel::GraphFrame>(runner.session(), [](const std::string&) {});
        frame->resize(1280, 820);
    }
    const std::string name = script.toStdString();
    int code = 0;
    if (name == "-") {
        code = runner.Run(std::cin, "-", std::cerr);
    } else {
        std::ifstream in(name, std::ios::binary);
        if (!in || std::filesystem::is_directory(name, ec)) {
            std::cerr << name << ":0: cannot open the script\n";
            return 2;
        }
        code = runner.Run(in, name, std::cerr);
    }
    if (frame) {
        frame->show();
        frame->Arrange(2);
        QApplication::processEvents();
        if (!frame->grab().toImage().save(screenshot)) code = 1;
    }
    return code;
}

}  // namespace

int main(int argc, char* argv[]) {
    // A script run draws its pictures without a screen unless one is there.
    const bool screen = qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--run") == 0 && !screen &&
            qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
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
    const QCommandLineOption run("run", "Run a script without a window (see the README); graph "
                                        "pictures are saved too.", "script");
    const QCommandLineOption programDirOption(
        "program-dir", "With --run: the folder of Ardelvan.ini (default: the program's folder).",
        "dir");
    parser.addOption(analyse);
    parser.addOption(screenshot);
    parser.addOption(run);
    parser.addOption(programDirOption);
    parser.process(app);
    if (parser.isSet(run))
        return RunScript(parser.value(run), parser.value(programDirOption), parser.value(screenshot));

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
