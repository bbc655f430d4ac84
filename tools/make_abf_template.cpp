// Writes SamplABF.dat, the template from which the program writes new ABF files: a complete
// ABF 1.x header of one gap-free channel and no samples, made with the program's own header
// code so that what it writes opens in the program.
//   ardel-make-abf-template OUT
#include <exception>
#include <iostream>
#include <string_view>

#include "core/abf_build.h"
#include "core/safe_file.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: ardel-make-abf-template OUT\n";
        return 2;
    }
    try {
        ardel::AbfBuildSpec spec;
        spec.sampleIntervalUs = 1000;
        spec.adcRange = 10.24f;
        spec.units = {"ms"};
        spec.scaleFactors = {1.0f};
        // Not the program's own name: that marks its event files, which are no recordings.
        spec.creator = "ABF template";
        const auto bytes = ardel::BuildAbfFile(spec, {});
        ardel::WriteFileSafely(argv[1], std::string_view(reinterpret_cast<const char*>(bytes.data()),
                                                         bytes.size()));
    } catch (const std::exception& e) {
        std::cerr << "error: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
