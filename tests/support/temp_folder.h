#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace test {

/// Between paths as tests write them, which are UTF-8, and those of the standard library.
inline std::filesystem::path systemPath(const std::string& utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}
inline std::string utf8Path(const std::filesystem::path& path) {
    const std::u8string utf8 = path.u8string();
    return {utf8.begin(), utf8.end()};
}

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

    std::string path() const { return utf8Path(d_path); }
    /// The path of a file or folder in here.
    std::string operator/(const std::string& name) const {
        return path() + static_cast<char>(std::filesystem::path::preferred_separator) + name;
    }

    /// What is in here, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(d_path))
            names.push_back(utf8Path(entry.path().filename()));
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path d_path;
};

/// A temporary folder that is the working directory, of child processes, too.
class WorkingFolder : public TempFolder {
public:
    WorkingFolder() { std::filesystem::current_path(systemPath(path())); }
    ~WorkingFolder() { std::filesystem::current_path(d_previous); }

private:
    std::filesystem::path d_previous = std::filesystem::current_path();
};

inline std::string readFile(const std::string& path) {
    std::ifstream in(systemPath(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(systemPath(path), std::ios::binary) << content;
}

} // namespace test
