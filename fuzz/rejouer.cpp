// A target's inputs replayed without libFuzzer, for the ordinary (and sanitized)
// builds: each argument is an input file or a folder of them. A crash, a sanitizer's
// report or a leak ends the process as it would end the fuzzer.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t taille);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::vector<fs::path> entrees;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_directory(argv[i])) {
            for (const auto& f : fs::recursive_directory_iterator(argv[i])) {
                if (f.is_regular_file() && f.path().filename().string()[0] != '.') {
                    entrees.push_back(f.path());
                }
            }
        } else {
            entrees.emplace_back(argv[i]);
        }
    }
    for (const fs::path& p : entrees) {
        std::ifstream f(p, std::ios::binary);
        if (!f) {
            std::cerr << "unreadable input " << p << "\n";
            return 2;
        }
        const std::vector<char> octets{std::istreambuf_iterator<char>(f), {}};
        std::cerr << "input " << p << "\n";
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(octets.data()), octets.size());
    }
    std::cout << entrees.size() << " input(s) replayed\n";
    return 0;
}
