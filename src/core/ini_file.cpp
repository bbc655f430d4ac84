#include "core/ini_file.h"

#include <fstream>
#include <iterator>
#include <system_error>

#include "core/safe_file.h"

namespace ardel {

namespace fs = std::filesystem;

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r' || c == '\n';
}

std::string_view TrimBlanks(std::string_view s) {
    while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
    while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
    return s;
}

char LowerAscii(char c) {
    return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}

bool SameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
    return true;
}

struct LineParts {
    enum class Kind { Other, Section, Key } kind = Kind::Other;
    std::string_view name;
    std::string_view value;
};

// A header is "[" ... "]" after the blanks are gone, the name running to the last "]"; a "["
// line without a closing bracket is no header. A key line is anything else holding "=".
LineParts Classify(std::string_view line) {
    const std::string_view t = TrimBlanks(line);
    if (t.empty()) return {};
    if (t.front() == '[') {
        const std::size_t close = t.rfind(']');
        if (close != std::string_view::npos && close > 0)
            return {LineParts::Kind::Section, t.substr(1, close - 1), {}};
    }
    const std::size_t eq = t.find('=');
    if (eq == std::string_view::npos) return {};
    return {LineParts::Kind::Key, TrimBlanks(t.substr(0, eq)), TrimBlanks(t.substr(eq + 1))};
}

std::string_view StripQuotes(std::string_view v) {
    if (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') && v.back() == v.front())
        return v.substr(1, v.size() - 2);
    return v;
}

}  // namespace

IniDocument IniDocument::Parse(std::string_view text) {
    IniDocument doc;
    bool newlineSeen = false;
    std::size_t i = 0;
    const std::size_t n = text.size();
    while (i < n) {
        std::size_t j = i;
        while (j < n && text[j] != '\n' && text[j] != '\r') ++j;
        Line line{std::string(text.substr(i, j - i)), {}};
        if (j < n) {
            if (text[j] == '\r' && j + 1 < n && text[j + 1] == '\n') {
                line.eol = "\r\n";
                j += 2;
            } else {
                line.eol = std::string(1, text[j]);
                ++j;
            }
            if (!newlineSeen) {
                doc.newline_ = line.eol;
                newlineSeen = true;
            }
        }
        doc.lines_.push_back(std::move(line));
        i = j;
    }
    return doc;
}

std::string IniDocument::Text() const {
    std::size_t total = 0;
    for (const Line& l : lines_) total += l.text.size() + l.eol.size();
    std::string out;
    out.reserve(total);
    for (const Line& l : lines_) {
        out += l.text;
        out += l.eol;
    }
    return out;
}

std::optional<IniDocument::SectionSpan> IniDocument::FindSection(std::string_view section) const {
    const std::string_view wanted = TrimBlanks(section);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const LineParts p = Classify(lines_[i].text);
        if (p.kind != LineParts::Kind::Section || !SameName(p.name, wanted)) continue;
        std::size_t end = i + 1;
        while (end < lines_.size() && Classify(lines_[end].text).kind != LineParts::Kind::Section)
            ++end;
        return SectionSpan{i, i + 1, end};
    }
    return std::nullopt;
}

std::optional<std::size_t> IniDocument::FindKey(const SectionSpan& span,
                                                std::string_view key) const {
    const std::string_view wanted = TrimBlanks(key);
    for (std::size_t i = span.first; i < span.last; ++i) {
        const LineParts p = Classify(lines_[i].text);
        if (p.kind == LineParts::Kind::Key && SameName(p.name, wanted)) return i;
    }
    return std::nullopt;
}

std::string IniDocument::Get(std::string_view section, std::string_view key, std::string_view def,
                             std::size_t size) const {
    std::string out;
    bool found = false;
    if (const auto span = FindSection(section)) {
        if (const auto k = FindKey(*span, key)) {
            out = std::string(StripQuotes(Classify(lines_[*k].text).value));
            found = true;
        }
    }
    if (!found) {
        while (!def.empty() && IsBlank(def.back())) def.remove_suffix(1);
        out = std::string(def);
    }
    if (size == 0) return {};
    if (out.size() > size - 1) out.resize(size - 1);
    return out;
}

bool IniDocument::Has(std::string_view section, std::string_view key) const {
    const auto span = FindSection(section);
    return span && FindKey(*span, key).has_value();
}

void IniDocument::InsertLine(std::size_t at, std::string text) {
    // The line before may be the last of a text that did not end with a line break.
    if (at > 0 && lines_[at - 1].eol.empty()) lines_[at - 1].eol = newline_;
    lines_.insert(lines_.begin() + std::ptrdiff_t(at), Line{std::move(text), newline_});
}

void IniDocument::Set(std::string_view section, std::string_view key, std::string_view value) {
    const std::string_view sectionName = TrimBlanks(section);
    const std::string_view keyName = TrimBlanks(key);
    const auto span = FindSection(sectionName);
    if (!span) {
        InsertLine(lines_.size(), "[" + std::string(sectionName) + "]");
        InsertLine(lines_.size(), std::string(keyName) + "=" + std::string(value));
        return;
    }
    if (const auto k = FindKey(*span, keyName)) {
        // The name keeps the spelling the file gave it.
        std::string name(Classify(lines_[*k].text).name);
        lines_[*k].text = name + "=" + std::string(value);
        return;
    }
    std::size_t at = span->header + 1;
    for (std::size_t i = span->first; i < span->last; ++i)
        if (Classify(lines_[i].text).kind == LineParts::Kind::Key) at = i + 1;
    InsertLine(at, std::string(keyName) + "=" + std::string(value));
}

std::optional<std::string> ReadFileBytes(const fs::path& file) {
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    if (!in) return std::nullopt;
    std::string data{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) return std::nullopt;
    return data;
}

IniDocument LoadIniDocument(const fs::path& file) {
    const auto bytes = ReadFileBytes(file);
    return bytes ? IniDocument::Parse(*bytes) : IniDocument();
}

void WriteFileReplacing(const fs::path& file, std::string_view bytes) {
    WriteFileSafely(file, bytes, WriteMode::Replace);
}

std::string GetPrivateProfileString(std::string_view section, std::string_view key,
                                    std::string_view def, std::size_t size, const fs::path& file) {
    return LoadIniDocument(file).Get(section, key, def, size);
}

bool WritePrivateProfileString(std::string_view section, std::string_view key,
                               std::string_view value, const fs::path& file) {
    try {
        const auto bytes = ReadFileBytes(file);
        std::error_code ec;
        // A file that is there but cannot be read must not be replaced by one key.
        if (!bytes && fs::exists(file, ec)) return false;
        IniDocument doc = IniDocument::Parse(bytes ? std::string_view(*bytes) : std::string_view());
        doc.Set(section, key, value);
        WriteFileReplacing(file, doc.Text());
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace ardel
