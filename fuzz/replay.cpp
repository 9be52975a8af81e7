// replay FOLDER ROUNDS: runs a fuzz target without the fuzzer, on the inputs of its corpus and on
// ROUNDS inputs derived from them, the same ones every time. An input that fails is stored in the
// working directory.

#include "fuzz_input.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

constexpr const char* kFailedInput = "failed_input";

std::string input; // of the current run

void run(std::string next) {
    input = std::move(next);
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

void keepInput(int) {
    std::ofstream(kFailedInput, std::ios::binary) << input;
    std::fprintf(stderr, "this input fails: %s\n", kFailedInput);
}

/// The files of the corpus in the order of their names.
std::vector<std::string> readCorpus(const fs::path& folder) {
    const std::set<fs::path> paths{fs::directory_iterator(folder), fs::directory_iterator()};
    std::vector<std::string> files;
    for (const fs::path& path : paths) {
        std::ifstream in(path, std::ios::binary);
        files.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return files;
}

std::vector<std::string> linesOf(const std::vector<std::string>& files) {
    std::vector<std::string> lines;
    for (const std::string& file : files) {
        for (size_t begin = 0; begin < file.size();) {
            const size_t end = std::min(file.find('\n', begin), file.size());
            lines.push_back(file.substr(begin, end - begin));
            begin = end + 1;
        }
    }
    return lines;
}

class Maker {
public:
    explicit Maker(std::vector<std::string> files)
        : d_files(std::move(files)), d_lines(linesOf(d_files)) {}

    std::string next() { return below(2) == 0 ? joinLines() : spoilFile(); }

private:
    size_t below(size_t limit) { return d_random() % limit; }

    std::string joinLines() {
        std::string made;
        for (size_t count = below(12); count > 0; --count)
            made.append(d_lines[below(d_lines.size())]).append(below(2), '\n');
        return made;
    }
    std::string spoilFile() {
        std::string made = d_files[below(d_files.size())];
        for (size_t count = 1 + below(8); count > 0; --count) {
            const size_t at = below(made.size() + 1);
            const size_t length = below(2) == 0 ? 1 : below(9);
            std::string bytes(below(9), '\0');
            for (char& byte : bytes)
                byte = static_cast<char>(below(256));
            made.replace(at, below(2) == 0 ? bytes.size() : length, bytes);
        }
        return made;
    }

    std::vector<std::string> d_files;
    std::vector<std::string> d_lines;
    std::minstd_rand d_random;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    std::signal(SIGABRT, keepInput);
    const std::vector<std::string> files = readCorpus(argv[1]);
    for (const std::string& file : files)
        run(file);
    Maker maker(files);
    for (int rounds = std::stoi(argv[2]); rounds > 0; --rounds)
        run(maker.next());
    return 0;
}
