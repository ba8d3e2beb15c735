// Writes the corpora anew: ribkit-seeds FOLDER, with its subfolders check, engine, decode and encode. Files that
// fuzzing has added stay.
#include "fuzz/seeds.h"

#include <filesystem>
#include <fstream>

using namespace ribkit::fuzz;

static void write(const std::filesystem::path &folder, const std::map<std::string, byte_vector> &seeds) {
    std::filesystem::create_directories(folder);
    for (const auto &[name, input] : seeds) {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char *>(input.data()), static_cast<std::streamsize>(input.size()));
    }
}

int main(int argc, char **argv) {
    if (argc != 2) {
        return 2;
    }
    write(std::filesystem::path(argv[1]) / "check", check_seeds());
    write(std::filesystem::path(argv[1]) / "engine", engine_seeds());
    write(std::filesystem::path(argv[1]) / "decode", decode_seeds());
    write(std::filesystem::path(argv[1]) / "encode", encode_seeds());
    return 0;
}
