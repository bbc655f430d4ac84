#include "core/ini_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace ardel {
namespace {

namespace fs = std::filesystem;

TEST(IniDocument, GetTakesDefaultsTrimsAndCutsToBufferSize) {
    const IniDocument doc =
        IniDocument::Parse("[Analysis]\r\nThresholdAmplitude!=  1.23456789012  \r\nDataDir=\r\n");
    EXPECT_EQ(doc.Get("Analysis", "ThresholdAmplitude!", "5", 10), "1.2345678");
    EXPECT_EQ(doc.Get("Analysis", "ThresholdAmplitude!", "5", 100), "1.23456789012");
    EXPECT_EQ(doc.Get("Analysis", "DataDir", "c:\\", 100), "");  // present but empty
    EXPECT_EQ(doc.Get("Analysis", "Missing", "5", 10), "5");
    EXPECT_EQ(doc.Get("Display", "ThresholdAmplitude!", "def", 10), "def");
    // The default is cut like a value and loses its trailing blanks.
    EXPECT_EQ(doc.Get("Display", "X", "1234567890123  ", 10), "123456789");
    EXPECT_EQ(doc.Get("Display", "X", "ab  ", 100), "ab");
    EXPECT_EQ(doc.Get("Analysis", "ThresholdAmplitude!", "5", 1), "");
    EXPECT_EQ(doc.Get("Analysis", "ThresholdAmplitude!", "5", 0), "");
    EXPECT_EQ(IniDocument().Get("A", "B", "default", 100), "default");
}

TEST(IniDocument, NamesMatchWithoutCaseAndFirstOccurrenceWins) {
    const IniDocument doc = IniDocument::Parse(
        "  [analysis]  \n"
        "  peakdirection%  =  1 \n"
        "PeakDirection%=-1\n"
        "[ANALYSIS]\n"
        "ComplexPeak=True\n");
    EXPECT_EQ(doc.Get("Analysis", "PeakDirection%", "0", 10), "1");
    EXPECT_EQ(doc.Get(" Analysis ", " PEAKDIRECTION% ", "0", 10), "1");
    // Only the first section of a name is looked at.
    EXPECT_EQ(doc.Get("Analysis", "ComplexPeak", "False", 10), "False");
    EXPECT_FALSE(doc.Has("Analysis", "ComplexPeak"));
    EXPECT_TRUE(doc.Has("analysis", "PeakDirection%"));
}

TEST(IniDocument, LinesThatAreNoKeysNeverMatch) {
    const IniDocument doc = IniDocument::Parse(
        "Key=before any section\n"
        "[S]\n"
        ";Key=commented\n"
        "Key\n"
        "[Broken\n"
        "Other=\"quoted value \"\n"
        "Half='open\n"
        "Eq=a=b\n");
    EXPECT_EQ(doc.Get("S", "Key", "d", 100), "d");
    EXPECT_EQ(doc.Get("S", ";Key", "d", 100), "commented");
    // "[Broken" has no closing bracket, so it is no header and S goes on.
    EXPECT_EQ(doc.Get("S", "Other", "d", 100), "quoted value ");
    EXPECT_EQ(doc.Get("S", "Half", "d", 100), "'open");
    EXPECT_EQ(doc.Get("S", "Eq", "d", 100), "a=b");
}

TEST(IniDocument, ReplacingAValueLeavesEveryOtherByteAlone) {
    const std::string before =
        "; settings\r\n"
        "\r\n"
        "[Unknown]\r\n"
        "  odd line without equals  \r\n"
        "[display]\r\n"
        "LOCKBASE = True\r\n"
        "DisplayGain= 2.5\n"
        "\r\n"
        "[Analysis]\r\n"
        "NumberPointsPeak=3";
    IniDocument doc = IniDocument::Parse(before);
    ASSERT_EQ(doc.Text(), before);
    doc.Set("Display", "LockBase", "False");
    doc.Set("ANALYSIS", "numberpointspeak", "5");
    EXPECT_EQ(doc.Text(),
              "; settings\r\n"
              "\r\n"
              "[Unknown]\r\n"
              "  odd line without equals  \r\n"
              "[display]\r\n"
              "LOCKBASE=False\r\n"
              "DisplayGain= 2.5\n"
              "\r\n"
              "[Analysis]\r\n"
              "NumberPointsPeak=5");
}

TEST(IniDocument, AddsKeysAfterTheSectionsLastKeyAndSectionsAtTheEnd) {
    IniDocument doc = IniDocument::Parse(
        "[Program]\n"
        "DataDir=/data\n"
        "\n"
        "; display follows\n"
        "[Display]\n"
        "LockBase=False");
    doc.Set("Program", "SoundOn", "True");
    doc.Set("Display", "DisplayGain", " 1");
    doc.Set("Analysis", "PeakDirection%", "-1");
    EXPECT_EQ(doc.Text(),
              "[Program]\n"
              "DataDir=/data\n"
              "SoundOn=True\n"
              "\n"
              "; display follows\n"
              "[Display]\n"
              "LockBase=False\n"
              "DisplayGain= 1\n"
              "[Analysis]\n"
              "PeakDirection%=-1\n");

    IniDocument fresh;
    fresh.Set("HRV", "RRUBound", "100");
    fresh.Set("HRV", "RRLBound", "10");
    EXPECT_EQ(fresh.Text(), "[HRV]\r\nRRUBound=100\r\nRRLBound=10\r\n");

    IniDocument headerOnly = IniDocument::Parse("[HRV]\r\n\r\n[Other]\r\n");
    headerOnly.Set("hrv", "Windowing", "Blackman");
    EXPECT_EQ(headerOnly.Text(), "[HRV]\r\nWindowing=Blackman\r\n\r\n[Other]\r\n");
}

TEST(IniDocument, AnyBytesParseAndRoundTrip) {
    std::mt19937 rng(12345);
    const char raw[] = "[]=; \t\r\n\"'aAbB\0\xff";
    const std::string alphabet(raw, sizeof raw - 1);
    for (int round = 0; round < 300; ++round) {
        std::string text;
        const int n = int(rng() % 200);
        for (int i = 0; i < n; ++i)
            text.push_back(round % 2 ? char(rng()) : alphabet[rng() % alphabet.size()]);
        IniDocument doc = IniDocument::Parse(text);
        ASSERT_EQ(doc.Text(), text);
        (void)doc.Get("a", "b", "x", 10);
        doc.Set("a", "b", "value");
        EXPECT_EQ(IniDocument::Parse(doc.Text()).Get("A", "B", "x", 100), "value") << round;
    }
    const std::string huge =
        "[S]\nK=" + std::string(1 << 20, 'v') + "\n" + std::string(1 << 20, 'x');
    IniDocument doc = IniDocument::Parse(huge);
    EXPECT_EQ(doc.Get("S", "K", "", 10), "vvvvvvvvv");
    EXPECT_EQ(doc.Text(), huge);
}

class IniFileOnDisk : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_ = fs::temp_directory_path() /
               ("ardel_ini_" + std::to_string(std::random_device{}()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }
    fs::path dir_;
};

TEST_F(IniFileOnDisk, WritesCreateAndReplaceTheFileWithoutLeftovers) {
    const fs::path ini = dir_ / "Ardelvan.ini";
    EXPECT_EQ(GetPrivateProfileString("Display", "DisplayGain", "1", 10, ini), "1");
    ASSERT_TRUE(WritePrivateProfileString("Display", "DisplayGain", " 2", ini));
    ASSERT_TRUE(WritePrivateProfileString("Display", "LockBase", "True", ini));
    ASSERT_TRUE(WritePrivateProfileString("display", "displaygain", " 3", ini));
    EXPECT_EQ(ReadFileBytes(ini).value(), "[Display]\r\nDisplayGain= 3\r\nLockBase=True\r\n");
    EXPECT_EQ(GetPrivateProfileString("Display", "DisplayGain", "1", 10, ini), "3");
    int files = 0;
    for ([[maybe_unused]] const auto& e : fs::directory_iterator(dir_)) ++files;
    EXPECT_EQ(files, 1);  // no temporary file left behind
}

TEST_F(IniFileOnDisk, UnwritableOrUnreadablePlacesFailWithoutHarm) {
    EXPECT_FALSE(WritePrivateProfileString("A", "B", "C", dir_ / "missing" / "Ardelvan.ini"));
    const fs::path asDirectory = dir_ / "Ardelvan.ini";
    fs::create_directory(asDirectory);
    EXPECT_EQ(GetPrivateProfileString("A", "B", "default", 100, asDirectory), "default");
    EXPECT_FALSE(WritePrivateProfileString("A", "B", "C", asDirectory));
    EXPECT_TRUE(fs::is_directory(asDirectory));
}

}  // namespace
}  // namespace ardel
