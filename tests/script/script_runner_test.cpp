#include "script/script_runner.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/synthetic.h"

namespace ardel {
namespace {

using testing::TempDir;
using testing::TestDataDir;

// A runner on a scratch program folder; Run returns the exit code, out and err the streams.
struct Rig {
    TempDir dir;
    std::ostringstream out, err;
    ScriptRunner runner{out, dir.path()};

    int Run(const std::string& script) {
        std::istringstream in(script);
        return runner.Run(in, "t.script", err);
    }
};

TEST(ScriptRunner, SelectKeepsTheOrderGivenAndEachRowOnce) {
    Rig r;
    ASSERT_EQ(r.Run("select 9 3 7-9 3 120\n"), 0) << r.err.str();
    // Rows beyond the table are kept: the commands meet them as they would from the grid.
    EXPECT_EQ(r.runner.session().HighlightedRows, (std::vector<std::int32_t>{9, 3, 7, 8, 120}));
    ASSERT_EQ(r.Run("select\n"), 0);
    EXPECT_TRUE(r.runner.session().HighlightedRows.empty());
}

TEST(ScriptRunner, MalformedLinesStopWithTheirLineNumber) {
    const std::pair<const char*, const char*> cases[] = {
        {"select 0", "t.script:3: \"0\" is no row number (1 or more)\n"},
        {"select 9-2", "t.script:3: the range 9-2 runs backwards\n"},
        {"select 2-x", "t.script:3: \"x\" is no row number (1 or more)\n"},
        {"current", "t.script:3: current needs one row number\n"},
        {"current 1 2", "t.script:3: current needs one row number\n"},
        {"set Text1", "t.script:3: set needs a control and a value\n"},
        {"set Label11 x", "t.script:3: Label11 is a label; it shows only what the program puts "
                          "there\n"},
        {"set Combo1 Upward", "t.script:3: Combo1: \"Upward\" is not an entry of the list\n"},
        {"set Combo3 0", "t.script:3: Combo3: \"0\" is not an entry of the list\n"},
        {"do", "t.script:3: do needs a handler\n"},
        {"do menu_Navigates(5)", "t.script:3: unknown handler menu_Navigates(5)\n"},
        {"key F4", "t.script:3: the key \"F4\" has no command\n"},
        {"show Nothing", "t.script:3: unknown control Nothing\n"},
        {"answer", "t.script:3: answer needs a value\n"},
        {"clipboard-from no/such/file", "t.script:3: cannot open no/such/file\n"},
        {"open \"demo.abf", "t.script:3: open: the path's quote is not closed\n"},
    };
    for (const auto& [line, error] : cases) {
        Rig r;
        // Comments and blank lines count as lines.
        EXPECT_EQ(r.Run(std::string("# first\n\n") + line + "\ndo Command4\n"), 2) << line;
        EXPECT_EQ(r.err.str(), error) << line;
    }
}

TEST(ScriptRunner, ValuesLoseOneBlankAndTheirQuotesAndKeepATrailingHash) {
    Rig r;
    ASSERT_EQ(r.Run("set Text4(0)  7\n"
                    "set Text4(1) \"\"\n"
                    "set Text4(2) 6000 # not a comment\n"
                    "  # a comment after blanks\n"
                    "set ckSoundOn true\n"
                    "set ckLockBase 1\n"
                    "set ckTooltips FALSE\n"
                    "set Combo4 HiPass Elliptic\n"),
              0)
        << r.err.str();
    const MainForm& f = r.runner.forms().main;
    EXPECT_EQ(f.Text4[0], " 7");
    EXPECT_EQ(f.Text4[1], "");
    EXPECT_EQ(f.Text4[2], "6000 # not a comment");
    EXPECT_TRUE(f.ckSoundOn);
    EXPECT_TRUE(f.ckLockBase);
    EXPECT_FALSE(f.ckTooltips);
    EXPECT_EQ(f.Combo4, 7);
}

TEST(ScriptRunner, AnAnswerLeftOverIsReportedAtTheLineThatQueuedIt) {
    Rig r;
    EXPECT_EQ(r.Run("do menu_FilterHelp\nanswer Yes\nanswer No\n"), 2);
    EXPECT_EQ(r.err.str(), "t.script:2: an answer was left unused at the end of the script\n");
}

TEST(ScriptRunner, TheChannelOfAnOpenLineAnswersOnlyTheChannelQuestion) {
    Rig r;
    const auto file = TestDataDir() / "multichannelAbf1WithTags.abf";
    ASSERT_EQ(r.Run("open " + file.string() + " 1\nshow Combo3\n"), 0) << r.err.str();
    EXPECT_EQ(r.runner.session().recording.ChannelIndex, 1);
    EXPECT_NE(r.out.str().find("QUESTION Enter Channel Number|There are 2 input channels"),
              std::string::npos);
    EXPECT_TRUE(r.out.str().ends_with("|1\n1\n")) << r.out.str();
    EXPECT_EQ(r.runner.forms().main.Combo3Items, (std::vector<std::string>{"0", "1"}));

    // Without a channel the question takes the queue's next answer, and wants one.
    Rig q;
    EXPECT_EQ(q.Run("open " + file.string() + "\n"), 2);
    EXPECT_NE(q.err.str().find("t.script:1: no answer queued for the question \"Enter Channel "
                               "Number|"),
              std::string::npos);
}

TEST(ScriptRunner, ExitWithNothingUnsavedEndsTheScript) {
    Rig r;
    ASSERT_EQ(r.Run("do menu_Exit\nset Text1 no such control follows\ndo nothing\n"), 0)
        << r.err.str();
    EXPECT_EQ(r.out.str(), "");
}

TEST(ScriptRunner, ShowWritesWholeFilesAndAScriptErrorLeavesThemSo) {
    TempDir dir;
    const auto grid = dir / "grid.txt";
    const auto list = dir / "files.txt";
    std::ofstream(dir / "b.abf") << "x";
    std::ofstream(dir / "A.DAT") << "x";
    std::ofstream(dir / "notes.txt") << "x";
    std::ofstream(dir / ".hidden.abf") << "x";
    std::filesystem::create_directory(dir / "sub");
    std::ostringstream out, err;
    ScriptRunner runner(out, dir.path());
    std::istringstream in("show TDBGrid1 " + grid.string() + "\nshow FListBoxFETCH \"" +
                          list.string() + "\"\ndo Nothing\n");
    EXPECT_EQ(runner.Run(in, "t.script", err), 2);
    EXPECT_EQ(err.str(), "t.script:3: unknown handler Nothing\n");
    std::ifstream gridIn(grid);
    std::string first;
    std::getline(gridIn, first);
    EXPECT_TRUE(first.starts_with("0\tTime (ms)\tAmplitude")) << first;
    // The start showed the program's folder: "..", folders, then data files in any case.
    std::stringstream files;
    files << std::ifstream(list).rdbuf();
    EXPECT_EQ(files.str(), "..\nsub\nA.DAT\nb.abf\n");
}

}  // namespace
}  // namespace ardel
