// Writing and reading the "Array Data" text.
#include "arrays/array_text.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "arrays/data_arrays.h"
#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/safe_file.h"
#include "core/text_save.h"

namespace ardel {

namespace {

struct Line {
    std::string_view text;
    std::size_t offset = 0;
};

// Every line of the text. A terminator at the very end opens no further line.
std::vector<Line> SplitLines(std::string_view bytes) {
    std::vector<Line> lines;
    std::size_t pos = 0;
    while (pos < bytes.size()) {
        const std::size_t end = bytes.find_first_of("\r\n", pos);
        if (end == std::string_view::npos) {
            lines.push_back({bytes.substr(pos), pos});
            break;
        }
        lines.push_back({bytes.substr(pos, end - pos), pos});
        pos = end + 1;
        if (bytes[end] == '\r' && pos < bytes.size() && bytes[pos] == '\n') ++pos;
    }
    return lines;
}

// InStr: 1-based position of part in text, 0 when it is not there.
std::size_t InStr(std::string_view text, std::string_view part) {
    const std::size_t p = text.find(part);
    return p == std::string_view::npos ? 0 : p + 1;
}

// Mid(text, start) with a 1-based start; empty beyond the end.
std::string_view Mid(std::string_view text, std::size_t start) {
    return start - 1 < text.size() ? text.substr(start - 1) : std::string_view();
}

// The number twelve characters behind the start of the key, where it stands behind
// "MaxArray1 : " in a file the program wrote. A line without the key reads from its twelfth
// character on, as it always has.
std::optional<std::int32_t> ReadLength(std::string_view line, std::string_view key) {
    const auto length = ToInt32(Val(Mid(line, InStr(line, key) + 12)));
    if (!length || *length < 0 || *length > kMaxArrayLength) return std::nullopt;
    return length;
}

std::string Quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

}  // namespace

std::string EncodeArrayText(const Session& s) {
    const DataArray& a1 = s.dataArray1;
    const DataArray& a2 = s.dataArray2;
    if (a1.IsEmpty() && a2.IsEmpty()) return {};
    std::string text = "ATF\t1.0\r\n3\t2\r\n";
    text += Quoted("Array Data : " + s.recording.DataFilePath.string()) + "\r\n";
    text += Quoted("MaxArray1 : " + Str(a1.UpperBound())) + "\r\n";
    text += Quoted("MaxArray2 : " + Str(a2.UpperBound())) + "\r\n";
    text += Quoted("Array #1") + "\t" + Quoted("Array #2") + "\r\n";
    const std::int32_t rows = std::max(a1.UpperBound(), a2.UpperBound());
    text.reserve(text.size() + std::size_t(rows) * 26);
    for (std::int32_t i = 1; i <= rows; ++i) {
        text += i <= a1.UpperBound() ? Str(a1(i)) : " ";
        text += '\t';
        text += i <= a2.UpperBound() ? Str(a2(i)) : " ";
        text += "\r\n";
    }
    return text;
}

std::variant<ArrayTextData, ArrayTextError> ParseArrayText(std::string_view bytes) {
    using Kind = ArrayTextError::Kind;
    const std::vector<Line> lines = SplitLines(bytes);
    if (lines.size() < 5) {
        return ArrayTextError{Kind::Truncated, bytes.size(),
                              "the text ends after " + std::to_string(lines.size()) +
                                  " lines, before the lengths of the arrays"};
    }
    // Both positions are 1 in a proper file. The And of the two is what has always been
    // tested, so a file whose "ATF" stands third still passes.
    const std::size_t atf = InStr(lines[0].text, "ATF");
    const std::size_t columns = InStr(lines[1].text, "3\t2");
    if (InStr(lines[2].text, "Array Data") != 2 || (atf & columns) == 0) {
        return ArrayTextError{Kind::NotThisFormat, 0,
                              "the first three lines are not the heading of array data"};
    }
    const auto length1 = ReadLength(lines[3].text, "MaxArray1 :");
    const auto length2 = ReadLength(lines[4].text, "MaxArray2 :");
    if (!length1 || !length2) {
        const Line& bad = length1 ? lines[4] : lines[3];
        return ArrayTextError{Kind::InconsistentHeader, bad.offset,
                              "the length of an array is negative or beyond " +
                                  std::to_string(kMaxArrayLength)};
    }
    ArrayTextData data;
    data.values1.assign(std::size_t(*length1) + 1, 0.0f);
    data.values2.assign(std::size_t(*length2) + 1, 0.0f);
    const std::size_t rows = std::size_t(std::max(*length1, *length2));
    // Line 6 holds the column titles.
    for (std::size_t k = 6; k < lines.size() && k - 5 <= rows; ++k) {
        const std::size_t i = k - 5;
        const std::string_view line = lines[k].text;
        const std::size_t tab = InStr(line, "\t");
        // The first column is read up to one character behind the tab: the blank of a positive
        // second value, or its sign. Val skips the tab, so a digit there joins the first number.
        if (i < data.values1.size()) data.values1[i] = float(Val(line.substr(0, tab + 1)));
        if (i < data.values2.size()) data.values2[i] = float(Val(Mid(line, tab + 1)));
    }
    return data;
}

void menu_ArrayAscii(Session& s, UserDialogs& ui) {
    const std::string text = EncodeArrayText(s);
    if (text.empty()) return;
    FileDialogSpec spec;
    spec.defaultExtension = "txt";
    spec.filter = "Text File (*.txt)";
    spec.fileName = s.Label11.substr(0, s.Label11.find('.'));
    spec.initialDirectory = s.CurrentFolder;
    SaveTextThroughDialog(ui, spec, text, ExistingFile::AskToReplace);
}

void menu_importAscii(Session& s, UserDialogs& ui) {
    FileDialogSpec spec;
    spec.fileName = "*.txt";
    spec.defaultExtension = "txt";
    spec.filter = "Text File (*.txt)";
    spec.initialDirectory = s.CurrentFolder;
    const auto chosen = ui.OpenFileName(spec);
    if (!chosen || chosen->empty()) return;
    if (const auto why = NotARegularFile(*chosen)) {
        ui.RuntimeError(chosen->string() + " cannot be opened: " + *why);
        return;
    }
    const auto bytes = ReadFileBytes(*chosen);
    if (!bytes) {
        ui.RuntimeError("File not found");
        return;
    }
    auto parsed = ParseArrayText(*bytes);
    if (auto* data = std::get_if<ArrayTextData>(&parsed)) {
        s.dataArray1.values = std::move(data->values1);
        s.dataArray2.values = std::move(data->values2);
        return;
    }
    ui.Message("Not a Valid Data Array",
               "This file does not contain valid array data.  Please check the file and try "
               "again.");
}

}  // namespace ardel
