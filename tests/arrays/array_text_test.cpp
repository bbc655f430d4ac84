// The "Array Data" text: its exact lines, the round trip, the quirks of the import kept from the
// first version, bad input that must never crash or allocate without bound, and the commands'
// dialogs and files.
#include "arrays/array_text.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "arrays/data_arrays.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel::testing {
namespace {

const std::string kHead = "ATF\t1.0\r\n3\t2\r\n\"Array Data : x.abf\"\r\n";

std::string Heading(const std::string& length1, const std::string& length2) {
    return kHead + "\"MaxArray1 : " + length1 + "\"\r\n\"MaxArray2 : " + length2 +
           "\"\r\n\"Array #1\"\t\"Array #2\"\r\n";
}

ArrayTextData Parsed(std::string_view text) {
    auto r = ParseArrayText(text);
    if (auto* e = std::get_if<ArrayTextError>(&r)) {
        ADD_FAILURE() << e->sentence;
        return {};
    }
    return std::get<ArrayTextData>(r);
}

ArrayTextError::Kind Refused(std::string_view text) {
    auto r = ParseArrayText(text);
    auto* e = std::get_if<ArrayTextError>(&r);
    if (!e) {
        ADD_FAILURE() << "accepted";
        return ArrayTextError::Kind::NotThisFormat;
    }
    return e->kind;
}

TEST(ArrayText, ExactLinesAndRoundTripOfUnequalArrays) {
    Session s;
    s.recording.DataFilePath = "/data/cell 1.abf";
    s.dataArray1.values = {0, 1.5f, -2, 1234567.8f, 0.00001f, 5};
    s.dataArray2.values = {0, 7, 8, -9};
    const std::string text = EncodeArrayText(s);
    EXPECT_EQ(text,
              "ATF\t1.0\r\n3\t2\r\n\"Array Data : /data/cell 1.abf\"\r\n\"MaxArray1 :  5\"\r\n"
              "\"MaxArray2 :  3\"\r\n\"Array #1\"\t\"Array #2\"\r\n"
              " 1.5\t 7\r\n-2\t 8\r\n 1234568\t-9\r\n 1E-05\t \r\n 5\t \r\n");
    const ArrayTextData d = Parsed(text);
    EXPECT_EQ(d.values1, (std::vector<float>{0, 1.5f, -2, 1234568, 0.00001f, 5}));
    EXPECT_EQ(d.values2, (std::vector<float>{0, 7, 8, -9}));
    // Both empty: nothing to write.
    EXPECT_EQ(EncodeArrayText(Session{}), "");
}

TEST(ArrayText, ImportQuirksKeptFromTheFirstVersion) {
    // A second value without its blank joins the first number; a line without a tab gives
    // its first character to array 1 and the whole line to array 2.
    ArrayTextData d = Parsed(Heading(" 3", " 3") + "5\t7\r\n12\r\n");
    EXPECT_EQ(d.values1, (std::vector<float>{0, 57, 1, 0}));
    EXPECT_EQ(d.values2, (std::vector<float>{0, 7, 12, 0}));  // the missing row stays 0
    // Length 0 still gives element 0; rows beyond the lengths are ignored.
    d = Parsed(Heading(" 0", " 1") + " 4\t 4\r\n 5\t 5\r\n");
    EXPECT_EQ(d.values1, (std::vector<float>{0}));
    EXPECT_EQ(d.values2, (std::vector<float>{0, 4}));
    // LF-only line ends and a fractional length (rounded half to even).
    d = Parsed("ATF\t1.0\n3\t2\n\"Array Data : \"\n\"MaxArray1 : 2.5\"\n\"MaxArray2 : 0\"\n"
               "titles\n 1\t \n 2\t \n 3\t \n");
    EXPECT_EQ(d.values1, (std::vector<float>{0, 1, 2}));
    // "ATF" at position 3 passes the And with 1; at position 2 it fails.
    EXPECT_EQ(Parsed("x ATF\r\n" + Heading(" 1", " 1").substr(9)).values1.size(), 2u);
    EXPECT_EQ(Refused(" ATF\r\n" + Heading(" 1", " 1").substr(9)),
              ArrayTextError::Kind::NotThisFormat);
    // The third line must start with a quote: "Array Data" at position 2.
    EXPECT_EQ(Refused("ATF\t1.0\r\n3\t2\r\nArray Data : x\r\n\"MaxArray1 :  1\"\r\n"
                      "\"MaxArray2 :  1\"\r\n"),
              ArrayTextError::Kind::NotThisFormat);
    // A length line without its key reads from its twelfth character.
    d = Parsed(kHead + "abcdefghijk 4\r\n\"MaxArray2 :  0\"\r\n");
    EXPECT_EQ(d.values1.size(), 5u);
}

TEST(ArrayText, BadInputIsRefusedWithoutAllocatingTheAnnouncedLength) {
    using Kind = ArrayTextError::Kind;
    EXPECT_EQ(Refused(""), Kind::Truncated);
    EXPECT_EQ(Refused(kHead + "\"MaxArray1 :  5\""), Kind::Truncated);
    EXPECT_EQ(Refused(Heading(" 2000000000", " 1")), Kind::InconsistentHeader);
    EXPECT_EQ(Refused(Heading(" 1", "-3")), Kind::InconsistentHeader);
    EXPECT_EQ(Refused(Heading(" 1E+30", " 1")), Kind::InconsistentHeader);
    EXPECT_EQ(Refused(Heading(" 16777217", " 1")), Kind::InconsistentHeader);
    // Binary bytes in the data lines read as far as Val reads them.
    std::string binary = Heading(" 3", " 3");
    binary += std::string("\0\xff\t\x01", 4) + "\r\n 7\t\x80\r\n";
    const ArrayTextData d = Parsed(binary);
    EXPECT_EQ(d.values1, (std::vector<float>{0, 0, 7, 0}));
}

std::string ReadFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

TEST(ArrayTextCommands, SaveAsksBeforeReplacingAndImportReplacesBothArrays) {
    TempDir dir;
    Session s;
    s.Label11 = "cell.2.abf";
    s.dataArray1.values = {0, 1, 2};
    ScriptedDialogs ui;
    ui.ExpectSaveFile(dir / "out");
    menu_ArrayAscii(s, ui);
    ASSERT_EQ(ui.fileDialogs.back().fileName, "cell");
    EXPECT_EQ(ui.fileDialogs.back().filter, "Text File (*.txt)");
    const std::string first = ReadFile(dir / "out.txt");
    EXPECT_NE(first.find("\"MaxArray2 :  1\"\r\n"), std::string::npos);

    s.dataArray1.values = {0, 9, 9, 9};
    ui.ExpectSaveFile(dir / "out.txt")
        .ExpectAsk("Replace File", "File already exist.  Do you want to replace this file?",
                   Answer::No);
    menu_ArrayAscii(s, ui);
    EXPECT_EQ(ReadFile(dir / "out.txt"), first);

    ui.ExpectOpenFile(dir / "out.txt");
    menu_importAscii(s, ui);
    EXPECT_EQ(s.dataArray1.values, (std::vector<float>{0, 1, 2}));
    EXPECT_EQ(s.dataArray2.values, (std::vector<float>{0, 0}));

    // A file that is not array data leaves the arrays as they are.
    std::ofstream(dir / "bad.txt") << "hello\r\n";
    ui.ExpectOpenFile(dir / "bad.txt")
        .ExpectMessage("Not a Valid Data Array",
                       "This file does not contain valid array data.  Please check the file and "
                       "try again.");
    menu_importAscii(s, ui);
    EXPECT_EQ(s.dataArray1.values, (std::vector<float>{0, 1, 2}));

    // A folder that cannot be written: the runtime's message, no file left behind.
    std::filesystem::create_directory(dir / "ro");
    std::filesystem::permissions(dir / "ro", std::filesystem::perms::owner_read |
                                                 std::filesystem::perms::owner_exec);
    if (!std::ofstream(dir / "ro" / "probe")) {  // root can write anyway
        ui.ExpectSaveFile(dir / "ro" / "a.txt").ExpectMessage(std::string(kProgramName));
        menu_ArrayAscii(s, ui);
        EXPECT_TRUE(std::filesystem::is_empty(dir / "ro"));
    }
    std::filesystem::permissions(dir / "ro", std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace ardel::testing
