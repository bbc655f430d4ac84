// What the fuzz targets share: a folder of their own per process (removed at exit), files
// written into it, a small real recording to open event and settings files against, and
// dialogs that answer every file question with one path.
#pragma once

#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "core/abf_build.h"
#include "core/user_dialogs.h"

namespace fuzzing {

namespace fs = std::filesystem;

// The folder's name is kept in a plain buffer, which outlives every static object.
inline char folderName[4096];

inline const fs::path& Folder(const char* target) {
    static const fs::path dir = [target] {
        fs::path d = fs::temp_directory_path() /
                     ("ardel-fuzz-" + std::string(target) + "-" + std::to_string(::getpid()));
        fs::create_directories(d);
        std::snprintf(folderName, sizeof folderName, "%s", d.c_str());
        std::atexit([] {
            std::error_code ec;
            fs::remove_all(folderName, ec);
        });
        return d;
    }();
    return dir;
}

inline void WriteFile(const fs::path& file, const void* data, std::size_t size) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(static_cast<const char*>(data), std::streamsize(size));
}

// Two seconds of one channel at 10 kHz: a slow wave with negative events on it, enough for a
// few screens of detection.
inline std::vector<std::uint8_t> SmallRecording() {
    std::vector<std::int16_t> samples(20000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        double v = 200 * std::sin(double(i) / 700.0);
        const std::size_t since = i % 1500;
        if (since < 400) v -= 900 * std::exp(-double(since) / 60.0) * (1 - std::exp(-double(since) / 4.0));
        samples[i] = std::int16_t(v + double((i * 7919) % 23) - 11);
    }
    ardel::AbfBuildSpec spec;
    spec.sampleIntervalUs = 100;
    return ardel::BuildAbfFile(spec, samples);
}

// Every file question is answered with `answer`; every other question as SilentDialogs does.
class PathDialogs : public ardel::SilentDialogs {
public:
    explicit PathDialogs(fs::path answer) : answer_(std::move(answer)) {}
    std::optional<fs::path> SaveFileName(const ardel::FileDialogSpec&) override { return answer_; }
    std::optional<fs::path> OpenFileName(const ardel::FileDialogSpec&) override { return answer_; }

private:
    fs::path answer_;
};

}  // namespace fuzzing
