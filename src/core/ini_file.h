// The settings file form: "[Section]" lines and "Key=value" lines, read and written with the
// behaviour of the two profile routines the program was built on. Reading is a pure function of
// the file's text; writing changes exactly one line (or adds one) and leaves every other byte
// of the file as it was, comments, blank lines and sections we do not know included.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ardel {

class IniDocument {
  public:
    IniDocument() = default;
    // Any bytes are accepted: lines end at "\r\n", "\n" or a lone "\r"; a line that is neither a
    // section header nor "name=value" is carried along untouched.
    static IniDocument Parse(std::string_view text);

    // The value of key in section, or def when either is missing, cut to size - 1 characters.
    // Section and key names match without regard to case; blanks around the name and the value
    // do not count, and a value wrapped in a pair of quotes loses them. Only the first section
    // of a name is looked at, and the first key of a name in it. The default loses its trailing
    // blanks, as it always did.
    std::string Get(std::string_view section, std::string_view key, std::string_view def,
                    std::size_t size) const;
    // Whether the key is present (a line "name=..." in the first section of that name).
    bool Has(std::string_view section, std::string_view key) const;

    // Replaces the key's line by "name=value", or adds "key=value" after the last key of the
    // section, or adds the section with its key at the end of the text. New lines take the line
    // ending that the text already uses ("\r\n" for an empty text).
    void Set(std::string_view section, std::string_view key, std::string_view value);

    std::string Text() const;
    bool Empty() const { return lines_.empty(); }

  private:
    struct Line {
        std::string text;  // without its ending
        std::string eol;   // "\r\n", "\n", "\r", or "" for a last line without one
    };
    // Index range [first, last) of the body of the first section called name, and the index of
    // its header; nullopt when there is none.
    struct SectionSpan {
        std::size_t header, first, last;
    };
    std::optional<SectionSpan> FindSection(std::string_view section) const;
    std::optional<std::size_t> FindKey(const SectionSpan& span, std::string_view key) const;
    void InsertLine(std::size_t at, std::string text);

    std::vector<Line> lines_;
    std::string newline_ = "\r\n";
};

// The two profile routines over a file. A file that is missing or cannot be read reads as
// empty, so every key takes its default. Writing returns false when the file could not be
// written; the file is then left as it was.
std::string GetPrivateProfileString(std::string_view section, std::string_view key,
                                    std::string_view def, std::size_t size,
                                    const std::filesystem::path& file);
bool WritePrivateProfileString(std::string_view section, std::string_view key,
                               std::string_view value, const std::filesystem::path& file);

// The file helpers under them. ReadFileBytes gives nullopt for a missing or unreadable file.
std::optional<std::string> ReadFileBytes(const std::filesystem::path& file);
IniDocument LoadIniDocument(const std::filesystem::path& file);
// Replaces the file's contents safely (see WriteFileSafely): a failed write never leaves half a
// file, an existing file keeps its permissions, a pipe or device is written as it is. Throws
// std::system_error.
void WriteFileReplacing(const std::filesystem::path& file, std::string_view bytes);

}  // namespace ardel
