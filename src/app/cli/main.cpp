#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "app/cli/cli_app.h"

int main(int argc, char** argv) {
    std::filesystem::path programDir;
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    programDir = ec ? std::filesystem::current_path(ec) : exe.parent_path();
    try {
        return ardel::cli::RunCli(argc, argv, std::cout, std::cerr, programDir);
    } catch (const std::exception& e) {
        std::cerr << "error: " << e.what() << '\n';
        return 1;
    }
}
