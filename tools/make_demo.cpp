// Writes the demo recording and the list of the events it contains.
//   ardel-make-demo OUT.abf [OUT_events.csv]
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>

#include "tools/demo_synth.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: ardel-make-demo OUT.abf [EVENTS.csv]\n";
        return 2;
    }
    try {
        ardel::synth::RecordingSpec spec;
        auto events = ardel::synth::WriteRecording(argv[1], spec);
        if (argc > 2) {
            std::ofstream out(argv[2]);
            out << "peak_ms,amplitude_pA,tau_ms\n";
            char line[96];
            for (const auto& e : events) {
                std::snprintf(line, sizeof line, "%.1f,%.3f,%.3f\n", e.peakMs, -e.amplitude, e.tauMs);
                out << line;
            }
        }
        std::cerr << "wrote " << argv[1] << " with " << events.size() << " events\n";
    } catch (const std::exception& e) {
        std::cerr << "error: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
