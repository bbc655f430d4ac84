// Writes the recordings of the wave analysis scripts and prints what they contain.
//   ardel-make-wave-data FOLDER   (writes FOLDER/openings.abf and FOLDER/multipeak.abf)
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>

#include "tools/wave_synth.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: ardel-make-wave-data FOLDER\n";
        return 2;
    }
    try {
        const std::filesystem::path folder = argv[1];
        std::filesystem::create_directories(folder);
        using namespace ardel::synth;
        const SweepLayout layout;
        const ChannelSpec channels;
        const double peak = WriteChannelOpenings(folder / "openings.abf", layout, channels);
        std::printf("openings.abf: %d sweeps, i = %g pA, N = %d, Popen = %g, mean peak %g pA\n",
                    layout.sweeps, channels.unitaryPa, channels.channels, channels.pOpen, peak);
        SweepLayout quiet = layout;
        quiet.sweeps = 10;
        for (const auto& p : WriteMultiPeak(folder / "multipeak.abf", quiet, MultiPeakSpec{}))
            std::printf("multipeak.abf: %s at %.3f ms after the artefact, %.3f pA\n",
                        p.peak ? "maximum" : "minimum", p.ms, p.pA);
    } catch (const std::exception& e) {
        std::cerr << "error: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
