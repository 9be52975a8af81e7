#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace test {

/// A new, empty folder that is removed with everything in it.
class TempFolder {
public:
    TempFolder() {
        std::random_device random;
        do {
            d_path =
                std::filesystem::temp_directory_path() / ("orvistrand-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(d_path));
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(d_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string path() const { return d_path.string(); }
    /// The path of a file or folder in here.
    std::string operator/(const std::string& name) const { return (d_path / name).string(); }

private:
    std::filesystem::path d_path;
};

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace test
